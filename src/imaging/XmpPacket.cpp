#include "XmpPacket.h"

#include "PictureBlocks.h"

#include <QStringDecoder>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <utility>

namespace {

/// Without what has no place in XML.
QString textOf(const QByteArray &packet)
{
    const auto encoding = QStringConverter::encodingForData(packet, u'<').value_or(QStringConverter::Utf8);
    QStringDecoder decoder(encoding);
    QString text = decoder(packet);
    for (QChar &unit : text) {
        const bool isSpace = unit == u'\t' || unit == u'\n' || unit == u'\r';
        if ((unit < u' ' && !isSpace) || unit == QChar(0xfffe) || unit == QChar(0xffff))
            unit = u' ';
    }
    text = text.mid(qMax(text.indexOf(u'<'), qsizetype(0))).trimmed();
    if (!text.startsWith(QLatin1String("<?xml ")))
        return text;
    const qsizetype end = text.indexOf(QLatin1String("?>")); // it names the encoding that the packet had
    return end < 0 ? QString() : text.mid(end + 2);
}

/// Walks over the tags as every XML parser must.
class TagWalk
{
public:
    explicit TagWalk(QStringView xml)
        : m_xml(xml)
    {}

    [[nodiscard]] bool isHarmless()
    {
        constexpr int deepest = 100;
        constexpr qsizetype mostProperties = 20'000;
        for (qsizetype at = m_xml.indexOf(u'<'); at >= 0; at = m_xml.indexOf(u'<', at)) {
            at = behindMarkup(at);
            if (at < 0 || m_depth > deepest || m_properties > mostProperties)
                return false;
        }
        return true;
    }

private:
    /// -1 when it does not end, or is none that a packet may have.
    qsizetype behindMarkup(qsizetype at)
    {
        const QStringView rest = m_xml.sliced(at);
        if (rest.startsWith(QLatin1String("<!--")))
            return behind(at + 4, QLatin1String("-->"));
        if (rest.startsWith(QLatin1String("<![CDATA[")))
            return behind(at + 9, QLatin1String("]]>"));
        if (rest.startsWith(QLatin1String("<?")))
            return behind(at + 2, QLatin1String("?>"));
        if (rest.startsWith(QLatin1String("<!")))
            return -1;
        if (!rest.startsWith(QLatin1String("</")))
            return behindStartTag(at);
        --m_depth;
        return behind(at, QLatin1String(">"));
    }

    [[nodiscard]] qsizetype behind(qsizetype at, QLatin1String mark) const
    {
        const qsizetype found = m_xml.indexOf(mark, at);
        return found < 0 ? -1 : found + mark.size();
    }

    /// A quoted value may hold what else would end the tag.
    qsizetype behindStartTag(qsizetype at)
    {
        const qsizetype start = at;
        for (++at; at < m_xml.size() && m_xml.at(at) != u'>'; ++at) {
            const QChar unit = m_xml.at(at);
            if (unit != u'"' && unit != u'\'')
                continue;
            ++m_properties;
            at = m_xml.indexOf(unit, at + 1);
            if (at < 0)
                return -1;
        }
        if (at >= m_xml.size())
            return -1;
        const QStringView tag = m_xml.sliced(start, at - start);
        if (!isListItem(tag))
            ++m_properties;
        if (!tag.endsWith(u'/'))
            ++m_depth;
        return at + 1;
    }

    [[nodiscard]] static bool isListItem(QStringView tag)
    {
        constexpr QLatin1String item("<rdf:li");
        return tag.startsWith(item) && (tag.size() == item.size() || !tag.at(item.size()).isLetterOrNumber());
    }

    QStringView m_xml;
    int m_depth = 0;
    qsizetype m_properties = 0;
};

}

std::optional<std::string> harmlessXmp(const QByteArray &packet)
{
    if (packet.size() > PictureBlocks::kMostBytes)
        return std::nullopt;
    const QString text = textOf(packet);
    return TagWalk(text).isHarmless() ? std::optional(text.toStdString()) : std::nullopt;
}

namespace {

const QString kRdf = QStringLiteral("http://www.w3.org/1999/02/22-rdf-syntax-ns#");
const QString kDublinCore = QStringLiteral("http://purl.org/dc/elements/1.1/");

/// Copies the words of a packet as they stand, each kind once.
class WordCopy
{
public:
    explicit WordCopy(QString &to)
        : m_writer(&to)
    {
        m_writer.writeNamespace(kRdf, QStringLiteral("rdf"));
        m_writer.writeNamespace(kDublinCore, QStringLiteral("dc"));
        m_writer.writeStartElement(kRdf, QStringLiteral("RDF"));
        m_writer.writeStartElement(kRdf, QStringLiteral("Description"));
        m_writer.writeAttribute(kRdf, QStringLiteral("about"), QString());
    }

    void finish() { m_writer.writeEndDocument(); }

    /// From the element on which the reader stands.
    void take(QXmlStreamReader &reader)
    {
        if (isWanted(reader.namespaceUri(), reader.name()))
            return copyElement(reader);
        const QXmlStreamAttributes attributes = reader.attributes();
        for (const QXmlStreamAttribute &attribute : attributes) { // short for elements
            if (isWanted(attribute.namespaceUri(), attribute.name()))
                m_writer.writeTextElement(kDublinCore, attribute.name().toString(), attribute.value().toString());
        }
    }

private:
    bool isWanted(QStringView space, QStringView name)
    {
        const bool isDescription = name == QLatin1String("description");
        if (space != kDublinCore || (!isDescription && name != QLatin1String("subject")))
            return false;
        return !std::exchange(isDescription ? m_hasDescription : m_hasSubjects, true);
    }

    void copyElement(QXmlStreamReader &reader)
    {
        int depth = 0;
        do {
            if (reader.isStartElement() || reader.isEndElement() || reader.isCharacters())
                m_writer.writeCurrentToken(reader);
            depth += reader.isStartElement() ? 1 : (reader.isEndElement() ? -1 : 0);
        } while (depth > 0 && reader.readNext() != QXmlStreamReader::Invalid);
    }

    QXmlStreamWriter m_writer;
    bool m_hasDescription = false;
    bool m_hasSubjects = false;
};

}

std::optional<std::string> wordsOfXmp(const std::string &packet)
{
    QXmlStreamReader reader(QString::fromStdString(packet));
    QString words;
    WordCopy copy(words);
    while (!reader.atEnd()) {
        if (reader.readNext() == QXmlStreamReader::StartElement)
            copy.take(reader);
    }
    copy.finish();
    return reader.hasError() ? std::nullopt : std::optional(words.toStdString());
}
