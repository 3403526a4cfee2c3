#include "HeifItems.h"

#include <QByteArrayView>

#include <algorithm>
#include <optional>

namespace {

/// Takes numbers and texts from the front of a stretch of bytes; beyond its end all is 0 and empty.
class Bytes
{
public:
    explicit Bytes(QByteArrayView bytes)
        : m_rest(bytes)
    {}

    [[nodiscard]] bool isAtEnd() const { return m_rest.isEmpty(); }

    QByteArrayView take(qsizetype count)
    {
        const QByteArrayView taken = m_rest.first(std::clamp(count, qsizetype(0), m_rest.size()));
        m_rest = m_rest.sliced(taken.size());
        return taken;
    }

    quint64 number(qsizetype bytes)
    {
        quint64 value = 0;
        for (const char byte : take(bytes))
            value = value << 8 | uchar(byte);
        return value;
    }

    QByteArrayView text()
    {
        const qsizetype end = m_rest.indexOf('\0');
        const QByteArrayView found = take(end < 0 ? m_rest.size() : end);
        take(1);
        return found;
    }

    /// The body of the box that begins here; its type goes to `type`.
    Bytes box(QByteArrayView &type)
    {
        const auto size = qsizetype(number(4));
        type = take(4);
        return Bytes(take(size < 8 ? m_rest.size() : size - 8));
    }

private:
    QByteArrayView m_rest;
};

/// The first box of that type among those at the top of the file.
QByteArray topBox(const ByteSource &source, QByteArrayView wanted, qint64 most)
{
    constexpr int mostBoxes = 1000;
    qint64 at = 0;
    for (int i = 0; i < mostBoxes; ++i) {
        const QByteArray head = source.bytes(at, 16);
        Bytes numbers(head);
        quint64 size = numbers.number(4);
        const QByteArrayView type = numbers.take(4);
        const bool isWide = size == 1;
        if (isWide)
            size = numbers.number(8);
        const quint64 body = isWide ? 16 : 8;
        if (size < body || size > quint64(source.size()))
            return {};
        if (type == wanted)
            return size <= quint64(most) ? source.bytes(at + qint64(body), qint64(size - body)) : QByteArray();
        at += qint64(size);
    }
    return {};
}

using Kinds = QHash<quint64, QByteArray>; ///< by the number of the item

Kinds kindsIn(Bytes list)
{
    Kinds kinds;
    const quint64 version = list.number(1);
    list.take(3);
    list.number(version == 0 ? 2 : 4); // their count
    while (!list.isAtEnd()) {
        QByteArrayView type;
        Bytes entry = list.box(type);
        const quint64 entryVersion = entry.number(1);
        entry.take(3);
        const quint64 item = entry.number(entryVersion == 2 ? 2 : 4);
        entry.take(2);
        QByteArray kind = entry.take(4).toByteArray();
        entry.text(); // its name
        if (kind == "mime")
            kind = entry.text().toByteArray();
        if (type == QByteArrayView("infe") && entryVersion >= 2)
            kinds.insert(item, kind);
    }
    return kinds;
}

/// Walks over the table that tells where the items stand.
class Places
{
public:
    Places(Bytes table, const Kinds &kinds, const ByteSource &source, qint64 most)
        : m_table(table)
        , m_kinds(kinds)
        , m_source(source)
        , m_most(most)
    {}

    QHash<QByteArray, QByteArray> read()
    {
        m_version = m_table.number(1);
        m_table.take(3);
        const quint64 sizes = m_table.number(1);
        const quint64 moreSizes = m_table.number(1);
        m_offsetSize = qsizetype(sizes >> 4);
        m_lengthSize = qsizetype(sizes & 0xf);
        m_baseSize = qsizetype(moreSizes >> 4);
        m_indexSize = m_version == 0 ? 0 : qsizetype(moreSizes & 0xf);
        m_table.number(m_version < 2 ? 2 : 4);         // their count
        while (m_lengthSize > 0 && !m_table.isAtEnd()) // an entry that takes no room could be repeated without end
            readItem();
        return m_items;
    }

private:
    void readItem()
    {
        const quint64 item = m_table.number(m_version < 2 ? 2 : 4);
        const quint64 method = m_version == 0 ? 0 : m_table.number(2) & 0xf; // 0: the place is one in the file
        m_table.take(2);
        const quint64 base = m_table.number(m_baseSize);
        const QByteArray kind = m_kinds.value(item);
        const bool isWanted = method == 0 && !m_items.contains(kind) && (kind == "Exif" || kind == kXmpContent);
        QByteArray bytes;
        for (quint64 left = m_table.number(2); left > 0 && !m_table.isAtEnd(); --left) {
            m_table.take(m_indexSize);
            const quint64 place = base + m_table.number(m_offsetSize);
            const quint64 length = m_table.number(m_lengthSize);
            if (isWanted && place < quint64(m_source.size()) && length <= quint64(m_most - bytes.size()))
                bytes += m_source.bytes(qint64(place), qint64(length));
        }
        if (!bytes.isEmpty())
            m_items.insert(kind, bytes);
    }

    Bytes m_table;
    const Kinds &m_kinds;
    const ByteSource &m_source;
    qint64 m_most;
    quint64 m_version = 0;
    qsizetype m_offsetSize = 0;
    qsizetype m_lengthSize = 0;
    qsizetype m_baseSize = 0;
    qsizetype m_indexSize = 0;
    QHash<QByteArray, QByteArray> m_items;
};

}

QHash<QByteArray, QByteArray> readHeifItems(const ByteSource &source, qint64 most)
{
    const QByteArray meta = topBox(source, QByteArrayView("meta"), most);
    Bytes boxes(meta);
    boxes.take(4);
    std::optional<Bytes> list;
    std::optional<Bytes> table;
    while (!boxes.isAtEnd()) {
        QByteArrayView type;
        const Bytes body = boxes.box(type);
        if (type == QByteArrayView("iinf"))
            list = body;
        else if (type == QByteArrayView("iloc"))
            table = body;
    }
    if (!list || !table)
        return {};
    const Kinds kinds = kindsIn(*list);
    return Places(*table, kinds, source, most).read();
}
