#include "LocatorBlockFile.h"

#include "LogString.h"
#include "PosixSupport.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>

namespace {

FileDescriptor openForWriting(const QString &path, int flags)
{
    const QByteArray native = Posix::nativePath(path);
    return FileDescriptor(Posix::retry(
        [&] { return ::open(native.constData(), O_RDWR | O_NONBLOCK | O_NOCTTY | O_CLOEXEC | flags, 0666); }));
}

bool exists(const QString &path)
{
    struct stat facts = {};
    return ::stat(Posix::nativePath(path).constData(), &facts) == 0;
}

}

bool LocatorBlockFile::open(const QString &path)
{
    m_path = path;
    if (!exists(path) && !openForWriting(path, O_CREAT).isValid()) {
        LogString("Can't create locator database at %@", path);
        return false;
    }
    m_file = openForWriting(path, /*flags=*/0);
    if (!m_file.isValid()) {
        LogString("Can't open locator database %@: %d", path, errno);
        return false;
    }
    struct stat facts = {};
    const int error = ::fstat(m_file.number(), &facts) != 0 ? errno : (S_ISREG(facts.st_mode) ? 0 : ESPIPE);
    if (error != 0) {
        LogString("Locator database (%@) seek failed: %d", path, error);
        return false;
    }
    m_length = static_cast<quint64>(facts.st_size);
    return readSequenceID();
}

namespace {

/// Reads all of `count` bytes. False with errno set on failure; a file that ends before counts as one.
bool readAt(int file, char *bytes, quint64 count, quint64 offset)
{
    while (count > 0) {
        const ssize_t got = Posix::retry([&] { return ::pread(file, bytes, count, static_cast<off_t>(offset)); });
        if (got == 0)
            errno = EIO;
        if (got <= 0)
            return false;
        bytes += got;
        count -= static_cast<quint64>(got);
        offset += static_cast<quint64>(got);
    }
    return true;
}

/// False with errno set when not everything was written.
bool writeAt(int file, QByteArrayView bytes, quint64 offset)
{
    while (!bytes.isEmpty()) {
        const ssize_t count = Posix::retry([&] {
            return ::pwrite(file, bytes.data(), static_cast<size_t>(bytes.size()), static_cast<off_t>(offset));
        });
        if (count == 0)
            errno = EIO;
        if (count <= 0)
            return false;
        bytes = bytes.sliced(count);
        offset += static_cast<quint64>(count);
    }
    return true;
}

using SequenceBytes = std::array<char, LocatorBlock::kSequenceBytes>;

bool writeSequenceID(int file, quint32 sequenceID)
{
    SequenceBytes bytes{};
    qToLittleEndian(sequenceID, bytes.data());
    return writeAt(file, QByteArrayView(bytes.data(), bytes.size()), 0);
}

}

bool LocatorBlockFile::readSequenceID()
{
    SequenceBytes bytes{};
    // A file that ends within the number holds nothing else either, and begins anew.
    if (m_length < bytes.size()) {
        if (!writeSequenceID(m_file.number(), 0)) {
            LogString("Can't write locator database seq# (%@): %d", m_path, errno);
            return false;
        }
        m_length = bytes.size();
        return true;
    }
    if (!readAt(m_file.number(), bytes.data(), bytes.size(), 0)) {
        LogString("Can't read locator database seq# (%@): %d", m_path, errno);
        return false;
    }
    m_sequenceID = qFromLittleEndian<quint32>(bytes.data());
    return true;
}

void LocatorBlockFile::close()
{
    m_file = {};
    m_memory = {};
}

bool LocatorBlockFile::commit(quint32 sequenceID)
{
    return writeSequenceID(m_file.number(), sequenceID) &&
           Posix::retry([&] { return ::fdatasync(m_file.number()); }) == 0;
}

std::optional<LocatorBlock> LocatorBlockFile::blockAt(quint32 offset) const
{
    QByteArray room;
    const QByteArrayView prefix = bytesAt(offset, LocatorBlock::kPrefixBytes, room);
    if (prefix.isEmpty())
        return {};
    const LocatorBlock block = LocatorBlock::fromPrefix(prefix);
    return block.isPlausible(offset, m_length) ? std::optional(block) : std::nullopt;
}

namespace {

/// What is read of a block whose length is not known yet: enough for nearly every locator.
constexpr quint64 kLikelyBlockBytes = 2048;

}

std::optional<QByteArrayView> LocatorBlockFile::dataAt(quint32 offset, QByteArray &room) const
{
    if (!LocatorBlock::fits(offset, /*dataBytes=*/0, m_length))
        return {};
    QByteArrayView bytes = bytesAt(offset, std::min(kLikelyBlockBytes, m_length - offset), room);
    if (bytes.isEmpty())
        return {};
    const LocatorBlock block = LocatorBlock::fromPrefix(bytes);
    if (!block.isPlausible(offset, m_length))
        return {};
    const quint64 wanted = LocatorBlock::kPrefixBytes + block.length;
    if (wanted > static_cast<quint64>(bytes.size()))
        bytes = bytesAt(offset, wanted, room);
    if (bytes.isEmpty())
        return {};
    return bytes.sliced(LocatorBlock::kPrefixBytes, block.length);
}

/// All of the bytes; none when they cannot be read.
QByteArrayView LocatorBlockFile::bytesAt(quint32 offset, quint64 count, QByteArray &room) const
{
    if (offset + count <= static_cast<quint64>(m_memory.size()))
        return QByteArrayView(m_memory).sliced(offset, static_cast<qsizetype>(count));
    room.resize(static_cast<qsizetype>(count));
    if (readAt(m_file.number(), room.data(), count, offset))
        return room;
    LogString("Can't read locator database: %d", errno);
    return {};
}

bool LocatorBlockFile::write(quint64 offset, const LocatorBlock &block, const QByteArray &data)
{
    const quint64 end = offset + LocatorBlock::kPrefixBytes + block.length;
    if (!LocatorBlock::fits(offset, block.capacity, std::numeric_limits<quint32>::max())) {
        errno = EFBIG;
        return false;
    }
    auto prefix = block.prefix();
    const std::array<iovec, 2> parts{
        {{prefix.data(), prefix.size()}, {const_cast<char *>(data.constData()), static_cast<size_t>(data.size())}}};
    const ssize_t count = Posix::retry(
        [&] { return ::pwritev(m_file.number(), parts.data(), int(parts.size()), static_cast<off_t>(offset)); });
    if (count < 0)
        return false;
    if (const quint64 written = static_cast<quint64>(count); offset + written < end) {
        // Writing the rest tells why it was left, unless it now succeeds.
        const QByteArray whole = QByteArray(prefix.data(), prefix.size()) + data;
        if (!writeAt(m_file.number(), QByteArrayView(whole).sliced(count), offset + written))
            return false;
    }
    m_length = std::max(m_length, end);
    return true;
}

void LocatorBlockFile::keepInMemory()
{
    constexpr quint64 maxBytes = quint64(512) << 20;
    if (m_length > maxBytes)
        return;
    m_memory.resize(static_cast<qsizetype>(m_length));
    if (!readAt(m_file.number(), m_memory.data(), m_length, 0))
        m_memory.clear();
}
