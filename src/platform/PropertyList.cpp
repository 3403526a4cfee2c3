#include "PropertyList.h"

#include "OpenFile.h"
#include "PropertyListLimits.h"

#include <QDateTime>

#include <plist/plist.h>

#include <cstdlib>
#include <memory>

namespace PropertyList {

namespace {

constexpr qint64 kMaxFileBytes = qint64(512) << 20;

struct Release
{
    void operator()(void *node) const { plist_free(node); }
    void operator()(char *memory) const { std::free(memory); }
};
using Node = std::unique_ptr<void, Release>;
using Memory = std::unique_ptr<char, Release>;

/// Dates count from here.
const QDateTime &epoch()
{
    static const QDateTime instance(QDate(2001, 1, 1), QTime(0, 0), Qt::UTC);
    return instance;
}

QVariant variantFromNode(plist_t node);

QVariantHash hashFromNode(plist_t node)
{
    QVariantHash result;
    result.reserve(static_cast<qsizetype>(plist_dict_get_size(node)));
    plist_dict_iter position = nullptr;
    plist_dict_new_iter(node, &position);
    const Memory release(static_cast<char *>(position));
    for (;;) {
        char *key = nullptr;
        plist_t value = nullptr;
        plist_dict_next_item(node, position, &key, &value);
        const Memory releaseKey(key);
        if (!value)
            return result;
        result.insert(QString::fromUtf8(key), variantFromNode(value));
    }
}

QVariantList listFromNode(plist_t node)
{
    QVariantList result;
    plist_array_iter position = nullptr;
    plist_array_new_iter(node, &position);
    const Memory release(static_cast<char *>(position));
    for (;;) {
        plist_t value = nullptr;
        plist_array_next_item(node, position, &value);
        if (!value)
            return result;
        result.append(variantFromNode(value));
    }
}

QDateTime dateFromNode(plist_t node)
{
    int32_t seconds = 0;
    int32_t microseconds = 0;
    plist_get_date_val(node, &seconds, &microseconds);
    return epoch().addSecs(seconds).addMSecs(microseconds / 1000);
}

QVariant variantFromNode(plist_t node)
{
    uint64_t length = 0;
    uint8_t truth = 0;
    double real = 0;
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN:
        plist_get_bool_val(node, &truth);
        return truth != 0;
    case PLIST_UINT:
        // Negative numbers come as their two's complement.
        plist_get_uint_val(node, &length);
        return static_cast<qlonglong>(length);
    case PLIST_REAL:
        plist_get_real_val(node, &real);
        return real;
    case PLIST_STRING: {
        const char *text = plist_get_string_ptr(node, &length);
        return QString::fromUtf8(text, static_cast<qsizetype>(length));
    }
    case PLIST_DATA: {
        const char *data = plist_get_data_ptr(node, &length);
        return QByteArray(data, static_cast<qsizetype>(length));
    }
    case PLIST_DATE:
        return dateFromNode(node);
    case PLIST_ARRAY:
        return listFromNode(node);
    case PLIST_DICT:
        return hashFromNode(node);
    default:
        return {};
    }
}

bool fail(QString *reason, const char *text)
{
    if (reason)
        *reason = QString::fromLatin1(text);
    return false;
}

}

std::optional<QVariant> fromData(const QByteArray &bytes, QString *reason)
{
    if (bytes.size() > kMaxFileBytes || !isPropertyListWithinLimits(bytes)) {
        fail(reason, "The property list is too large or too deep");
        return {};
    }
    plist_t raw = nullptr;
    plist_from_memory(bytes.constData(), static_cast<uint32_t>(bytes.size()), &raw);
    const Node node(raw);
    if (!node) {
        fail(reason, "Not a property list");
        return {};
    }
    return variantFromNode(node.get());
}

namespace {

Node nodeFromVariant(const QVariant &value);

template<typename Dictionary>
Node nodeFromDictionary(const Dictionary &dictionary)
{
    Node node(plist_new_dict());
    for (auto entry = dictionary.cbegin(); entry != dictionary.cend(); ++entry) {
        Node value = nodeFromVariant(entry.value());
        if (!value || !isStorableText(entry.key()))
            return {};
        plist_dict_set_item(node.get(), entry.key().toUtf8().constData(), value.release());
    }
    return node;
}

Node nodeFromList(const QVariantList &list)
{
    Node node(plist_new_array());
    for (const QVariant &item : list) {
        Node value = nodeFromVariant(item);
        if (!value)
            return {};
        plist_array_append_item(node.get(), value.release());
    }
    return node;
}

Node nodeFromDate(const QDateTime &date)
{
    const qint64 milliseconds = epoch().msecsTo(date);
    const qint64 seconds = milliseconds / 1000;
    if (!date.isValid() || seconds != static_cast<int32_t>(seconds))
        return {};
    return Node(
        plist_new_date(static_cast<int32_t>(seconds), static_cast<int32_t>(milliseconds - seconds * 1000) * 1000));
}

Node nodeFromVariant(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::Bool:
        return Node(plist_new_bool(value.toBool() ? 1 : 0));
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
        return Node(plist_new_uint(static_cast<uint64_t>(value.toLongLong())));
    case QMetaType::Double:
        return Node(plist_new_real(value.toDouble()));
    case QMetaType::QString:
        return isStorableText(value.toString()) ? Node(plist_new_string(value.toString().toUtf8().constData()))
                                                : Node();
    case QMetaType::QByteArray: {
        const QByteArray bytes = value.toByteArray();
        return Node(plist_new_data(bytes.constData(), static_cast<uint64_t>(bytes.size())));
    }
    case QMetaType::QDateTime:
        return nodeFromDate(value.toDateTime());
    case QMetaType::QVariantList:
        return nodeFromList(*static_cast<const QVariantList *>(value.constData()));
    case QMetaType::QVariantHash:
        return nodeFromDictionary(*static_cast<const QVariantHash *>(value.constData()));
    case QMetaType::QVariantMap:
        return nodeFromDictionary(*static_cast<const QVariantMap *>(value.constData()));
    default:
        return {};
    }
}

}

namespace {

struct Xml
{
    Memory memory;
    QByteArrayView text; ///< empty on failure
};

Xml xmlFromNode(plist_t node)
{
    char *raw = nullptr;
    uint32_t length = 0;
    plist_to_xml(node, &raw, &length);
    return {Memory(raw), QByteArrayView(raw, raw ? static_cast<qsizetype>(length) : 0)};
}

}

void DictionaryWriter::Piece::operator()(void *node) const
{
    plist_free(node);
}

bool DictionaryWriter::add(const QString &key, const QVariant &value)
{
    constexpr int entriesInPiece = 12;
    if (m_entries == entriesInPiece)
        endPiece();
    if (!m_piece)
        m_piece.reset(plist_new_dict());
    Node node = nodeFromVariant(value);
    m_failed |= !node || !isStorableText(key);
    if (m_failed)
        return false;
    plist_dict_set_item(m_piece.get(), key.toUtf8().constData(), node.release());
    ++m_entries;
    return true;
}

/// A dictionary node compares every new key with a good part of those that it has, which takes most of the time when
/// they are many. So the entries are written by several nodes, and what stands around them is taken from one.
void DictionaryWriter::endPiece()
{
    constexpr QByteArrayView begin("<dict>\n");
    const Xml xml = xmlFromNode(m_piece.get());
    const qsizetype first = xml.text.indexOf(begin) + begin.size();
    const qsizetype last = xml.text.lastIndexOf("</dict>");
    m_failed |= first < begin.size() || last < first;
    if (m_failed)
        return;
    m_xml.append(xml.text.sliced(m_xml.isEmpty() ? 0 : first).chopped(xml.text.size() - last));
    m_foot = xml.text.sliced(last).toByteArray();
    m_piece.reset();
    m_entries = 0;
}

std::optional<QByteArray> DictionaryWriter::take()
{
    if (m_entries == 0 && !m_failed)
        return toXml(QVariantHash());
    if (!m_failed)
        endPiece();
    return m_failed ? std::nullopt : std::optional<QByteArray>(m_xml.append(m_foot));
}

std::optional<QByteArray> toXml(const QVariant &value, QString *reason)
{
    const Node node = nodeFromVariant(value);
    const Xml xml = node ? xmlFromNode(node.get()) : Xml();
    if (xml.text.isEmpty()) {
        fail(reason, "A value cannot be stored in a property list");
        return {};
    }
    return xml.text.toByteArray();
}

std::optional<QVariant> read(const QString &path, QString *reason)
{
    const auto bytes = readWholeFile(path, kMaxFileBytes, reason);
    return bytes ? fromData(*bytes, reason) : std::nullopt;
}

bool isStorableText(const QString &text)
{
    bool isStorable = true;
    bool hasHalves = false;
    // Without a way out in between the compiler looks at many characters at once.
    for (const QChar character : text) {
        const char16_t unit = character.unicode();
        const bool isSpace = (unit == '\t') | (unit == '\n') | (unit == '\r');
        isStorable &= isSpace | ((unit >= 0x20) & (unit < 0xFFFE));
        hasHalves |= (unit & 0xF800) == 0xD800;
    }
    return isStorable && (!hasHalves || text.isValidUtf16());
}

}
