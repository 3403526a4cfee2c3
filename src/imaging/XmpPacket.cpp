#include "XmpPacket.h"

#include "PictureBlocks.h"

#include <QStringDecoder>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

namespace {

/// Without what has no place in XML.
QString textOf(const QByteArray &packet)
{
    const auto encoding = QStringConverter::encodingForData(packet, u'<').value_or(QStringConverter::Utf8);
    QStringDecoder decoder(encoding);
    QString text = decoder(packet);
    if (decoder.hasError())
        text = QString::fromLatin1(packet);
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

    [[nodiscard]] bool isHarmless(qsizetype mostProperties)
    {
        constexpr int deepest = 100;
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
        const QStringView rest = tag.startsWith(item) ? tag.sliced(item.size()) : QStringView(u"-");
        return rest.isEmpty() || rest.startsWith(u'/') || rest.front().isSpace();
    }

    QStringView m_xml;
    int m_depth = 0;
    qsizetype m_properties = 0;
};

}

std::optional<std::string> harmlessXmp(const QByteArray &packet)
{
    constexpr qsizetype mostProperties = 2'000;
    const QString text = packet.size() > PictureBlocks::kMostBytes ? QString() : textOf(packet);
    return TagWalk(text).isHarmless(mostProperties) ? std::optional(text.toStdString()) : std::nullopt;
}

namespace {

const QString kRdf = QStringLiteral("http://www.w3.org/1999/02/22-rdf-syntax-ns#");
const QString kDublinCore = QStringLiteral("http://purl.org/dc/elements/1.1/");
const QString kXml = QStringLiteral("http://www.w3.org/XML/1998/namespace");

/// Writes a packet anew with nothing but the picture's own words, each kind once. What stands deeper tells of parts of
/// the picture, or of other pictures.
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

    /// The element on which the reader stands, and what is in it.
    void take(QXmlStreamReader &reader)
    {
        const Place above = m_places.isEmpty() ? Place::Outside : m_places.last();
        if (above == Place::InDescription) {
            if (isWanted(reader.namespaceUri(), reader.name()))
                copyList(reader.name().toString(), reader);
            else
                reader.skipCurrentElement();
            return;
        }
        const bool isRdf = reader.namespaceUri() == kRdf;
        if (above == Place::InRdf && isRdf && reader.name() == QLatin1String("Description")) {
            copyAttributes(reader.attributes());
            m_places << Place::InDescription;
        } else {
            m_places << (isRdf && reader.name() == QLatin1String("RDF") ? Place::InRdf : Place::Outside);
        }
    }
    void leave() { m_places.removeLast(); }

private:
    enum class Place { Outside, InRdf, InDescription };
    struct Item
    {
        QString language;
        QString text;
    };

    [[nodiscard]] bool isWanted(QStringView space, QStringView name) const
    {
        const bool isWord = name == QLatin1String("description") || name == QLatin1String("subject");
        return space == kDublinCore && isWord && !m_written.contains(name.toString());
    }

    /// Properties may be told by attributes.
    void copyAttributes(const QXmlStreamAttributes &attributes)
    {
        for (const QXmlStreamAttribute &attribute : attributes) {
            if (isWanted(attribute.namespaceUri(), attribute.name()))
                write(attribute.name().toString(), {{QString(), attribute.value().toString()}});
        }
    }

    void copyList(const QString &name, QXmlStreamReader &reader)
    {
        constexpr qsizetype mostItems = 5'000;
        QList<Item> items;
        QString bare;
        for (int depth = 1; depth > 0 && !reader.atEnd();) {
            const auto token = reader.readNext();
            if (token == QXmlStreamReader::StartElement && reader.name() == QLatin1String("li")) {
                const QString language = reader.attributes().value(kXml, QStringLiteral("lang")).toString();
                const QString text = reader.readElementText(QXmlStreamReader::IncludeChildElements);
                if (items.size() < mostItems)
                    items.append({language, text});
            } else if (token == QXmlStreamReader::Characters) {
                bare += reader.text();
            } else {
                depth += token == QXmlStreamReader::StartElement ? 1 : token == QXmlStreamReader::EndElement ? -1 : 0;
            }
        }
        if (items.isEmpty() && !bare.trimmed().isEmpty())
            items.append({QString(), bare});
        if (!items.isEmpty())
            write(name, items);
    }

    void write(const QString &name, const QList<Item> &items)
    {
        const bool isDescription = name == QLatin1String("description");
        m_written << name;
        m_writer.writeStartElement(kDublinCore, name);
        m_writer.writeStartElement(kRdf, isDescription ? QStringLiteral("Alt") : QStringLiteral("Bag"));
        for (const Item &item : items) {
            m_writer.writeStartElement(kRdf, QStringLiteral("li"));
            if (isDescription)
                m_writer.writeAttribute(QStringLiteral("xml:lang"),
                                        item.language.isEmpty() ? QStringLiteral("x-default") : item.language);
            m_writer.writeCharacters(item.text);
            m_writer.writeEndElement();
        }
        m_writer.writeEndElement();
        m_writer.writeEndElement();
    }

    QXmlStreamWriter m_writer;
    QList<Place> m_places;
    QStringList m_written;
};

/// Qt's reader looks through all namespaces for each name.
bool hasFewNamespaces(const QString &xml)
{
    constexpr qsizetype most = 500;
    return xml.count(QLatin1String("xmlns")) <= most;
}

}

std::optional<std::string> wordsOfXmp(const QByteArray &packet)
{
    const QString text = packet.size() > PictureBlocks::kMostBytes ? QString() : textOf(packet);
    if (!text.contains(QLatin1String("description")) && !text.contains(QLatin1String("subject")))
        return std::string(); // most that cameras write are such
    if (!hasFewNamespaces(text) || !TagWalk(text).isHarmless(text.size()))
        return std::nullopt;
    QXmlStreamReader reader(text);
    QString words;
    WordCopy copy(words);
    while (!reader.atEnd()) {
        const auto token = reader.readNext();
        if (token == QXmlStreamReader::StartElement)
            copy.take(reader);
        else if (token == QXmlStreamReader::EndElement)
            copy.leave();
    }
    copy.finish();
    return reader.hasError() ? std::nullopt : std::optional(words.toStdString());
}
