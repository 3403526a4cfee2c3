#include "PropertyList.h"

#include "FileWriter.h"
#include "OpenFile.h"
#include "PropertyListLimits.h"

#include <QDateTime>

#include <plist/plist.h>

#include <algorithm>
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

std::optional<QByteArray> toXml(const QVariant &value, QString *reason)
{
    const Node node = nodeFromVariant(value);
    if (!node) {
        fail(reason, "A value cannot be stored in a property list");
        return {};
    }
    char *raw = nullptr;
    uint32_t length = 0;
    plist_to_xml(node.get(), &raw, &length);
    const Memory xml(raw);
    if (!xml) {
        fail(reason, "The property list cannot be written as XML");
        return {};
    }
    return QByteArray(xml.get(), static_cast<qsizetype>(length));
}

std::optional<QVariant> read(const QString &path, QString *reason)
{
    const auto bytes = readWholeFile(path, kMaxFileBytes, reason);
    return bytes ? fromData(*bytes, reason) : std::nullopt;
}

bool write(const QString &path, const QVariant &value, QString *reason)
{
    const auto xml = toXml(value, reason);
    return xml && FileWriter::replace(path, *xml, FileWriter::Flush::ToDisk, reason);
}

bool isStorableText(const QString &text)
{
    const auto isStorable = [](QChar character) {
        const char16_t unit = character.unicode();
        return (unit >= 0x20 && unit < 0xFFFE) || unit == '\t' || unit == '\n' || unit == '\r';
    };
    return std::all_of(text.cbegin(), text.cend(), isStorable) && text.isValidUtf16();
}

}
