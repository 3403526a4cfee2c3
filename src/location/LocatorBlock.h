#pragma once

#include <QByteArrayView>
#include <QtEndian>

#include <array>
#include <limits>

/// A block of the locator database: how many data bytes it reserves, how many are in use, and then the data.
struct LocatorBlock
{
    static constexpr quint64 kPrefixBytes = 8;
    /// The database begins with its sequence number.
    static constexpr quint32 kSequenceBytes = 4;
    /// More than any locator needs; a greater length is damage.
    static constexpr quint32 kMaxLength = 1 << 20;

    quint32 capacity = 0;
    quint32 length = 0;

    [[nodiscard]] static LocatorBlock fromPrefix(QByteArrayView prefix)
    {
        return {qFromLittleEndian<quint32>(prefix.data()), qFromLittleEndian<quint32>(prefix.data() + 4)};
    }
    [[nodiscard]] std::array<char, kPrefixBytes> prefix() const
    {
        std::array<char, kPrefixBytes> bytes{};
        qToLittleEndian(capacity, bytes.data());
        qToLittleEndian(length, bytes.data() + 4);
        return bytes;
    }

    /// Whether a block with so many data bytes can stand at `offset` in a database of `fileLength` bytes.
    [[nodiscard]] static bool fits(quint64 offset, quint64 dataBytes, quint64 fileLength)
    {
        return offset >= kSequenceBytes && offset <= std::numeric_limits<quint32>::max() && offset <= fileLength &&
               kPrefixBytes + dataBytes <= fileLength - offset;
    }
    /// Whether this can be what stands at `offset`: all of it lies in the file, and no more is used than reserved.
    [[nodiscard]] bool isPlausible(quint64 offset, quint64 fileLength) const
    {
        return length <= capacity && length <= kMaxLength && fits(offset, capacity, fileLength);
    }
};
