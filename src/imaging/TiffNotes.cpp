#include "TiffNotes.h"

#include <QtEndian>

#include <optional>

namespace {

constexpr quint16 kArtist = 0x013b;
constexpr quint16 kCopyright = 0x8298;
constexpr quint16 kCameraDirectory = 0x8769;
constexpr quint16 kTaken = 0x9003;

/// Finds entries in the directories of a TIFF file, or of a raw file that differs in its third byte only. Files with
/// offsets of 64 bits are not among them.
class TiffDirectories
{
public:
    explicit TiffDirectories(const ByteSource &source)
        : m_source(source)
    {
        const QByteArray header = source.bytes(0, 8);
        m_isBigEndian = header.startsWith("MM");
        const bool isWide =
            header.startsWith(QByteArrayView("II+\0", 4)) || header.startsWith(QByteArrayView("MM\0+", 4));
        if (header.size() == 8 && (m_isBigEndian || header.startsWith("II")) && !isWide)
            m_first = number<quint32>(header.constData() + 4);
    }

    /// Where the first directory is; 0 without one.
    [[nodiscard]] qint64 first() const { return m_first; }

    /// Where the directory begins that an entry leads to; 0 without one.
    [[nodiscard]] qint64 directoryIn(qint64 directory, quint16 tag) const
    {
        constexpr quint16 longNumber = 4;
        const QByteArray found = entry(directory, tag);
        const bool leadsOn = !found.isEmpty() && number<quint16>(found.constData() + 2) == longNumber;
        return leadsOn ? number<quint32>(found.constData() + 8) : 0;
    }

    [[nodiscard]] QByteArray textIn(qint64 directory, quint16 tag) const
    {
        constexpr quint16 text = 2;
        constexpr quint32 inPlace = 4;
        const QByteArray found = entry(directory, tag);
        if (found.isEmpty() || number<quint16>(found.constData() + 2) != text)
            return {};
        const auto length = number<quint32>(found.constData() + 4);
        if (length <= inPlace)
            return found.mid(8, length);
        return m_source.bytes(number<quint32>(found.constData() + 8), qMin(qint64(length), PictureNotes::kMostText));
    }

private:
    template<typename Number>
    [[nodiscard]] Number number(const char *from) const
    {
        return m_isBigEndian ? qFromBigEndian<Number>(from) : qFromLittleEndian<Number>(from);
    }

    /// Its twelve bytes; none when there is no such entry.
    [[nodiscard]] QByteArray entry(qint64 directory, quint16 tag) const
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

    const ByteSource &m_source;
    bool m_isBigEndian = false;
    qint64 m_first = 0;
};

}

PictureNotes readTiffNotes(const ByteSource &source)
{
    const TiffDirectories file(source);
    const qint64 first = file.first();
    return PictureNotes::fromTexts(file.textIn(file.directoryIn(first, kCameraDirectory), kTaken),
                                   file.textIn(first, kArtist), file.textIn(first, kCopyright));
}
