#pragma once

#include "ByteSource.h"

#include <QByteArray>
#include <QtEndian>

/// Finds entries in the directories of a TIFF file, or of a raw file that differs in its third byte only. Files with
/// offsets of 64 bits are not among them.
class TiffDirectories
{
public:
    /// `source` outlives this.
    explicit TiffDirectories(const ByteSource &source);

    [[nodiscard]] bool isBigEndian() const { return m_isBigEndian; }
    /// Where the first directory is; 0 without one.
    [[nodiscard]] qint64 first() const { return m_first; }
    /// Where the directory begins that an entry leads to; 0 without one.
    [[nodiscard]] qint64 directoryIn(qint64 directory, quint16 tag) const;
    /// Empty when there is no such text.
    [[nodiscard]] QByteArray textIn(qint64 directory, quint16 tag) const;
    /// The entry's twelve bytes; none when there is no such entry.
    [[nodiscard]] QByteArray entry(qint64 directory, quint16 tag) const;
    /// What an entry holds or leads to, of whatever type; empty when it is not all there or longer than `most`.
    [[nodiscard]] QByteArray valueOf(const QByteArray &entry, qint64 most) const;

private:
    template<typename Number>
    [[nodiscard]] Number number(const char *from) const
    {
        return m_isBigEndian ? qFromBigEndian<Number>(from) : qFromLittleEndian<Number>(from);
    }

    const ByteSource &m_source;
    bool m_isBigEndian = false;
    qint64 m_first = 0;
};
