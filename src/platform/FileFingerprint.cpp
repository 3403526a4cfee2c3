#include "FileFingerprint.h"

#include "OpenFile.h"
#include "PosixSupport.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <xxhash.h>

#include <algorithm>
#include <vector>

namespace {

constexpr quint64 kPieceSize = 64 * 1024;

bool readExactly(int descriptor, char *bytes, quint64 count, quint64 offset)
{
    while (count > 0) {
        const ssize_t got = Posix::retry([&] { return ::pread(descriptor, bytes, count, static_cast<off_t>(offset)); });
        if (got <= 0)
            return false;
        bytes += got;
        offset += static_cast<quint64>(got);
        count -= static_cast<quint64>(got);
    }
    return true;
}

}

std::optional<FileFingerprint> readFingerprint(int descriptor, quint64 size)
{
    const quint64 head = std::min(size, kPieceSize);
    const quint64 tail = std::min(size - head, kPieceSize);
    thread_local std::vector<char> bytes(2 * kPieceSize);
    if (!readExactly(descriptor, bytes.data(), head, 0) ||
        !readExactly(descriptor, bytes.data() + head, tail, size - tail))
        return {};
    const XXH128_hash_t hash = XXH3_128bits(bytes.data(), head + tail);
    return FileFingerprint{hash.high64, hash.low64};
}

std::optional<FileFingerprint> readFingerprintAt(int folder, const char *name, quint64 size)
{
    const FileDescriptor file(Posix::retry(
        [&] { return ::openat(folder, name, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_NOFOLLOW | O_CLOEXEC); }));
    struct stat status = {};
    if (!file.isValid() || ::fstat(file.number(), &status) != 0 || !S_ISREG(status.st_mode) ||
        static_cast<quint64>(status.st_size) != size)
        return {};
    return readFingerprint(file.number(), size);
}
