#include "TiffDirectories.h"

#include "PictureNotes.h"

#include <array>

namespace {

constexpr quint32 kInPlace = 4; ///< bytes that stand in the entry itself

}

TiffDirectories::TiffDirectories(const ByteSource &source)
    : m_source(source)
{
    const QByteArray header = source.bytes(0, 8);
    m_isBigEndian = header.startsWith("MM");
    const bool isWide = header.startsWith(QByteArrayView("II+\0", 4)) || header.startsWith(QByteArrayView("MM\0+", 4));
    if (header.size() == 8 && (m_isBigEndian || header.startsWith("II")) && !isWide)
        m_first = number<quint32>(header.constData() + 4);
}

qint64 TiffDirectories::directoryIn(qint64 directory, quint16 tag) const
{
    constexpr quint16 longNumber = 4;
    constexpr quint16 placeOfDirectory = 13; // some writers' type for the same
    const QByteArray found = entry(directory, tag);
    const auto type = found.isEmpty() ? quint16(0) : number<quint16>(found.constData() + 2);
    return type == longNumber || type == placeOfDirectory ? number<quint32>(found.constData() + 8) : 0;
}

QByteArray TiffDirectories::textIn(qint64 directory, quint16 tag) const
{
    constexpr quint16 text = 2;
    const QByteArray found = entry(directory, tag);
    if (found.isEmpty() || number<quint16>(found.constData() + 2) != text)
        return {};
    const auto length = number<quint32>(found.constData() + 4);
    if (length <= kInPlace)
        return found.mid(8, length);
    return m_source.bytes(number<quint32>(found.constData() + 8), qMin(qint64(length), PictureNotes::kMostText));
}

QByteArray TiffDirectories::entry(qint64 directory, quint16 tag) const
{
    constexpr qint64 entrySize = 12;
    const QByteArray count = directory > 0 ? m_source.bytes(directory, 2) : QByteArray();
    if (count.size() < 2)
        return {};
    const QByteArray entries = m_source.bytes(directory + 2, entrySize * number<quint16>(count.constData()));
    for (qsizetype at = 0; at + entrySize <= entries.size(); at += entrySize) {
        if (number<quint16>(entries.constData() + at) == tag)
            return entries.mid(at, entrySize);
    }
    return {};
}

QByteArray TiffDirectories::valueOf(const QByteArray &entry, qint64 most) const
{
    static constexpr std::array<qint64, 14> kSizes = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4}; // by type
    const auto type = entry.isEmpty() ? quint16(0) : number<quint16>(entry.constData() + 2);
    const qint64 bytes = type < kSizes.size() ? kSizes[type] * number<quint32>(entry.constData() + 4) : 0;
    if (bytes == 0 || bytes > most)
        return {};
    if (bytes <= kInPlace)
        return entry.mid(8, bytes);
    const QByteArray value = m_source.bytes(number<quint32>(entry.constData() + 8), bytes);
    return value.size() == bytes ? value : QByteArray();
}
