#include "OpenFile.h"

#include "PosixSupport.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

FileDescriptor &FileDescriptor::operator=(FileDescriptor &&other) noexcept
{
    FileDescriptor taken(std::move(other));
    std::swap(m_number, taken.m_number);
    return *this;
}

FileDescriptor::~FileDescriptor()
{
    if (m_number >= 0)
        ::close(m_number);
}

std::optional<OpenedFile> openRegularFile(const QString &path, QString *reason)
{
    const QByteArray native = Posix::nativePath(path);
    OpenedFile file;
    file.descriptor = FileDescriptor(
        Posix::retry([&] { return ::open(native.constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC); }));
    struct stat status = {};
    if (!file.descriptor.isValid() || ::fstat(file.descriptor.number(), &status) != 0) {
        Posix::fail(reason, errno);
        return {};
    }
    if (!S_ISREG(status.st_mode)) {
        if (reason)
            *reason = QStringLiteral("Not a regular file");
        return {};
    }
    file.size = status.st_size;
    file.device = status.st_dev;
    file.inode = status.st_ino;
    file.modified = status.st_mtim.tv_sec;
    return file;
}

namespace {

/// Reads to the end of the file, at most one byte more than `maxBytes`. The size that fstat told is only a hint: the
/// file may be growing.
std::optional<QByteArray> readToEnd(const OpenedFile &file, qint64 maxBytes, QString *reason)
{
    QByteArray bytes;
    qint64 filled = 0;
    for (;;) {
        const qint64 room = std::max(file.size + 1, filled + filled / 2 + 4096);
        bytes.resize(room <= maxBytes ? room : maxBytes + 1);
        const ssize_t got = Posix::retry([&] {
            return ::read(file.descriptor.number(), bytes.data() + filled, static_cast<size_t>(bytes.size() - filled));
        });
        if (got < 0) {
            Posix::fail(reason, errno);
            return {};
        }
        filled += got;
        if (got == 0 || filled > maxBytes)
            break;
    }
    bytes.resize(filled);
    return bytes;
}

}

std::optional<QByteArray> readWholeFile(const QString &path, qint64 maxBytes, QString *reason)
{
    const auto file = openRegularFile(path, reason);
    if (!file)
        return {};
    std::optional<QByteArray> bytes;
    if (file->size <= maxBytes) {
        bytes = readToEnd(*file, maxBytes, reason);
        if (!bytes)
            return {};
    }
    if (!bytes || bytes->size() > maxBytes) {
        if (reason)
            *reason = QStringLiteral("The file is too large");
        return {};
    }
    return bytes;
}
