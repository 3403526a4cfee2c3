#include "SampleLibrary.h"

#include "QVXmlEncoder.h"
#include "SampleLibraryWriter.h"

#include <QRandomGenerator>

namespace {

const char *const words[] = {
    "harbour", "evening", "light", "over",  "the",    "old",      "bridge", "with",     "Clara", "and",     "Jonas",
    "market",  "square",  "after", "rain",  "first",  "snow",     "near",   "café",     "Köln",  "Zürich",  "garden",
    "wedding", "summer",  "lake",  "boat",  "little", "mountain", "path",   "sunset",   "from",  "window",  "train",
    "station", "dog",     "on",    "beach", "autumn", "leaves",   "family", "birthday", "cake",  "concert", "stage",
};

/// Draws everything from one generator, so that a seed fixes the whole library.
class Maker
{
public:
    explicit Maker(const SampleShape &shape)
        : m_shape(shape)
        , m_random(shape.seed)
    {}

    SampleLibrary make()
    {
        for (int i = 0; i < m_shape.keywords; ++i)
            m_library.keywords.append(word() + QString::number(i));
        for (int i = 0; i < m_shape.folders; ++i)
            makeFolder(i);
        for (int i = 0; i < m_shape.photos; ++i)
            makePhoto(i);
        return std::move(m_library);
    }

private:
    int below(int limit) { return static_cast<int>(m_random.bounded(limit)); }
    bool oneIn(int n) { return below(n) == 0; }
    QString word() { return QString::fromUtf8(words[below(static_cast<int>(std::size(words)))]); }

    QString sentence(int length)
    {
        QString text = word();
        for (int i = 1; i < length; ++i)
            text += (oneIn(25)   ? QStringLiteral(" & ")
                     : oneIn(20) ? QStringLiteral(", ")
                                 : QStringLiteral(" ")) +
                    word();
        return oneIn(12) ? u'"' + text + u'"' : text;
    }

    QString guid()
    {
        static constexpr char digits[] = "0123456789ABCDEF";
        QString text(36, u'-');
        for (qsizetype i = 0; i < text.size(); ++i)
            if (i != 8 && i != 13 && i != 18 && i != 23)
                text[i] = QLatin1Char(digits[below(16)]);
        return text;
    }

    void makeFolder(int index)
    {
        SampleLibrary::Folder folder;
        folder.guid = guid();
        folder.name = QStringLiteral("%1 %2").arg(2000 + index % 25).arg(sentence(3));
        folder.path = m_shape.root + QStringLiteral("/%1/%2 %3").arg(2000 + index % 25).arg(index).arg(word());
        const bool first = index % m_library.foldersPerGroup == 0;
        folder.groupGuid = first ? guid() : QString();
        folder.depth = first ? 0 : below(std::min(3, m_library.folders.last().depth + 2));
        folder.closed = oneIn(4);
        if (oneIn(3))
            folder.selection = QStringLiteral("%1 %2-%3").arg(below(5)).arg(7).arg(9 + below(20));
        m_library.folders.append(folder);
    }

    void makePhoto(int index)
    {
        SampleLibrary::Photo photo;
        photo.guid = guid();
        photo.fileGuid = guid();
        photo.file = QStringLiteral("IMG_%1.JPG").arg(index, 6, 10, QLatin1Char('0'));
        photo.folder = static_cast<int>(qint64(index) * m_shape.folders / m_shape.photos);
        photo.caption = oneIn(4) ? QString() : sentence(3 + below(14));
        for (int i = below(6); i > 0; --i)
            photo.keys += QString::number(below(m_shape.keywords)) + (i > 1 ? QStringLiteral(" ") : QString());
        if (oneIn(6))
            photo.crop = QStringLiteral("{{%1, %2}, {%3, %4}}").arg(below(900)).arg(below(900)).arg(1200).arg(800.5);
        photo.thumbnailDate = 1'700'000'000 + below(10'000'000);
        photo.marked = oneIn(8);
        if (oneIn(2))
            makeFilters(photo);
        m_library.photos.append(photo);
        QString &list = m_library.folders[photo.folder].photos;
        list += (list.isEmpty() ? QString() : QStringLiteral(" ")) + QString::number(index);
    }

    void addFilter(SampleLibrary::Photo &photo, const QString &name, const QStringList &inputs)
    {
        const QString number = QStringLiteral("number");
        SampleLibrary::Filter filter{{QStringLiteral("CIAttributeFilterName"), QStringLiteral("string"), name}};
        for (const QString &input : inputs)
            filter.append({input, number, QString::number(below(2000) / 1000.0 - 1, 'f', 8)});
        photo.filters.append(filter);
    }

    void makeFilters(SampleLibrary::Photo &photo)
    {
        addFilter(
            photo, QStringLiteral("CIColorControls"),
            {QStringLiteral("inputBrightness"), QStringLiteral("inputContrast"), QStringLiteral("inputSaturation")});
        if (oneIn(2))
            addFilter(photo, QStringLiteral("CIUnsharpMask"),
                      {QStringLiteral("inputIntensity"), QStringLiteral("inputRadius")});
        if (oneIn(4)) {
            addFilter(photo, QStringLiteral("CIVignetteEffect"), {QStringLiteral("inputRadius")});
            photo.filters.last().append(
                {QStringLiteral("inputCenter"), QStringLiteral("vector"), QStringLiteral("{0.25, -1}")});
        }
    }

    const SampleShape m_shape;
    QRandomGenerator m_random;
    SampleLibrary m_library;
};

/// The part of a writer that a library needs, on QVXmlEncoder.
class OurWriter
{
public:
    explicit OurWriter(QVXmlEncoder &encoder)
        : m_encoder(encoder)
    {}
    template<typename Value>
    void addAttribute(const TagName &name, Value value)
    {
        m_encoder.addAttribute(name.ascii, value);
    }
    void openTag(const TagName &name) { m_encoder.openTag(name.ascii); }
    void closeTag(const TagName &name) { m_encoder.closeTag(name.ascii); }
    void openAndCloseTag(const TagName &name) { m_encoder.openAndCloseTag(name.ascii); }
    template<typename Value>
    void addTag(const TagName &name, Value value)
    {
        m_encoder.addTag(name.ascii, value);
    }
    void addLongTag(const TagName &name, qint64 number) { m_encoder.addTagWithLongNumber(name.ascii, number); }

private:
    QVXmlEncoder &m_encoder;
};

}

SampleLibrary makeSampleLibrary(const SampleShape &shape)
{
    return Maker(shape).make();
}

QByteArray sampleLibraryText(const SampleLibrary &library)
{
    QVXmlEncoder encoder;
    OurWriter writer(encoder);
    SampleLibraryWriter(library, writer).write();
    return encoder.utf8();
}
