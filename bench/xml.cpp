// Reading and writing a library of 100,000 photos in memory, from and to UTF-8.

#include "LibraryTags.h"
#include "Pair.h"
#include "QVXmlDecoder.h"
#include "SampleLibrary.h"
#include "SampleLibraryWriter.h"

#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <pugixml.hpp>

#include <utility>

namespace {

/// What a reading has found; readings of the same library agree.
struct Seen
{
    qint64 photos = 0;
    qint64 units = 0;   ///< of all guids, names, captions and lists
    qint64 numbers = 0; ///< their sum
    bool operator==(const Seen &) const = default;
};

/// Asks for what a library asks for when it builds its model from the file.
class Reading
{
public:
    explicit Reading(const QByteArray &utf8)
        : m_decoder(QVXmlDecoder::fromData(utf8))
    {}

    Seen run()
    {
        while (m_decoder && m_decoder->getNextTag())
            readTag();
        return m_decoder && m_decoder->error().isEmpty() ? m_seen : Seen();
    }

private:
    void readTag()
    {
        switch (m_decoder->key()) {
        case LibraryTag::Photo:
            m_seen.photos += m_decoder->endTag() ? 0 : 1;
            takeTexts({u"id"});
            takeNumbers({u"seq", u"ref"});
            break;
        case LibraryTag::Ref:
            takeTexts({u"id", u"file"});
            takeNumbers({u"folder"});
            break;
        case LibraryTag::Folder:
        case LibraryTag::Group:
            takeTexts({u"id", u"name", u"path"});
            takeNumbers({u"seq"});
            break;
        case LibraryTag::Attr:
            takeTexts({u"key", u"type", u"value"});
            break;
        case LibraryTag::Key:
            takeTexts({u"keyword"});
            break;
        case LibraryTag::Thumb:
        case LibraryTag::Mark:
        case LibraryTag::Hide:
            m_seen.numbers += m_decoder->integerValue();
            break;
        case LibraryTag::Caption:
        case LibraryTag::Keys:
        case LibraryTag::Crop:
        case LibraryTag::Photos:
        case LibraryTag::Selection:
            m_seen.units += m_decoder->value().size();
        }
    }

    void takeTexts(std::initializer_list<QStringView> names)
    {
        for (const QStringView name : names)
            m_seen.units += m_decoder->stringAttributeForTag(name).size();
    }
    void takeNumbers(std::initializer_list<QStringView> names)
    {
        for (const QStringView name : names)
            m_seen.numbers += m_decoder->integerAttributeForTag(name);
    }

    std::optional<QVXmlDecoder> m_decoder;
    Seen m_seen;
};

/// Elements read; nothing is asked for.
qint64 readWithStreamReader(const QByteArray &utf8)
{
    QXmlStreamReader reader(utf8);
    qint64 elements = 0;
    while (!reader.atEnd())
        elements += reader.readNext() == QXmlStreamReader::StartElement ? 1 : 0;
    return reader.hasError() ? 0 : elements;
}

bool readWithPugixml(const QByteArray &utf8)
{
    pugi::xml_document document;
    return document.load_buffer(utf8.constData(), static_cast<size_t>(utf8.size()));
}

/// QVXmlEncoder's operations on a QXmlStreamWriter that lays out the text in the same way.
class StreamWriter
{
public:
    explicit StreamWriter(QByteArray &out)
        : m_writer(&out)
    {
        m_writer.setAutoFormatting(true);
        m_writer.setAutoFormattingIndent(-1);
        m_writer.writeStartDocument();
    }
    void addAttribute(const TagName &name, quint64 number)
    {
        m_attributes.emplace_back(&name.text, QString::number(static_cast<qint32>(number)));
    }
    void addAttribute(const TagName &name, const QString &text) { m_attributes.emplace_back(&name.text, text); }
    void openTag(const TagName &name)
    {
        m_writer.writeStartElement(name.text);
        for (const auto &[attribute, text] : m_attributes)
            m_writer.writeAttribute(*attribute, text);
        m_attributes.clear();
    }
    void closeTag(const TagName &) { m_writer.writeEndElement(); }
    void openAndCloseTag(const TagName &name)
    {
        openTag(name);
        closeTag(name);
    }
    void addTag(const TagName &name, quint64 number) { addLongTag(name, static_cast<qint32>(number)); }
    void addLongTag(const TagName &name, qint64 number) { addTag(name, QString::number(number)); }
    void addTag(const TagName &name, const QString &text) { m_writer.writeTextElement(name.text, text); }

private:
    QXmlStreamWriter m_writer;
    std::vector<std::pair<const QString *, QString>> m_attributes;
};

QByteArray writeWithStreamWriter(const SampleLibrary &library)
{
    QByteArray out;
    StreamWriter writer(out);
    SampleLibraryWriter(library, writer).write();
    return out + '\n';
}

}

int main(int argc, char **argv)
{
    PairRunner runner(argc, argv);
    for (size_t i = 0; i < LibraryTag::kNames.size(); ++i)
        QVXmlDecoder::addDecoderKey(static_cast<int>(i + 1), QString::fromLatin1(LibraryTag::kNames[i]));
    const SampleLibrary library = makeSampleLibrary();
    const QByteArray text = sampleLibraryText(library);

    const Seen seen = Reading(text).run();
    if (seen.photos != library.photos.size() || seen != Reading(writeWithStreamWriter(library)).run())
        runner.fail("the two writers' documents do not read alike");
    if (readWithStreamReader(text) == 0 || !readWithPugixml(text))
        runner.fail("a peer cannot read the document");

    const auto read = [&] { benchmark::DoNotOptimize(Reading(text).run()); };
    runner.run({.name = "read",
                .ours = read,
                .peerName = "QXmlStreamReader",
                .peer = [&] { benchmark::DoNotOptimize(readWithStreamReader(text)); },
                .bytes = text.size()});
    runner.run({.name = "read-pugixml",
                .ours = read,
                .peerName = "pugixml",
                .peer = [&] { benchmark::DoNotOptimize(readWithPugixml(text)); },
                .bytes = text.size()});
    runner.run({.name = "write",
                .ours = [&] { benchmark::DoNotOptimize(sampleLibraryText(library)); },
                .peerName = "QXmlStreamWriter",
                .peer = [&] { benchmark::DoNotOptimize(writeWithStreamWriter(library)); },
                .bytes = text.size()});
    return runner.result();
}
