#pragma once

#include "FileIdentity.h"

#include <QByteArrayView>
#include <QtEndian>

#include <algorithm>
#include <concepts>
#include <limits>

/// How a bookmark is stored. Everything is little-endian: magic, version, kind, flags, one zero byte; inode, birth,
/// size, modified, fingerprint (high, low); handle type; then the handle, the volume and three paths, each a 16-bit
/// length and as many bytes.
namespace BookmarkFormat {

inline constexpr char kMagic[4] = {'F', 'B', 'm', 'k'};
inline constexpr quint8 kVersion = 1;
enum Flag : quint8 { HasBirth = 1, HasFingerprint = 2, AllFlags = 3 };

enum At : qsizetype {
    Magic = 0,
    Version = 4,
    Kind = 5,
    Flags = 6,
    Reserved = 7,
    Inode = 8,
    Birth = 16,
    Size = 28,
    Modified = 36,
    Fingerprint = 48,
    HandleType = 64,
    Texts = 68,
};
enum Text { Handle, VolumeIdentity, VolumePath, MountPoint, GivenPath, TextCount };
inline constexpr qsizetype kLengthSize = 2;
inline constexpr qsizetype kMaxText = std::numeric_limits<quint16>::max();

/// Fills bytes of a size that is known beforehand.
class Writer
{
public:
    explicit Writer(char *bytes)
        : m_at(bytes)
    {}

    template<std::integral T>
    void put(T value)
    {
        qToLittleEndian(value, m_at);
        m_at += sizeof value;
    }
    void put(const FileTime &time)
    {
        put(time.seconds);
        put(time.nanoseconds);
    }
    void putBytes(QByteArrayView bytes) { m_at = std::copy_n(bytes.data(), bytes.size(), m_at); }
    void putText(QByteArrayView text)
    {
        put(static_cast<quint16>(text.size()));
        putBytes(text);
    }
    [[nodiscard]] const char *end() const { return m_at; }

private:
    char *m_at;
};

}
