#include "FileDates.h"

#include "PosixSupport.h"

#include <fcntl.h>
#include <sys/stat.h>

std::optional<qint64> FileDates::dateOf(const QString &path)
{
    struct stat status = {};
    if (::stat(Posix::nativePath(path).constData(), &status) != 0)
        return {};
    return status.st_mtim.tv_sec;
}

namespace {

bool setModified(const QByteArray &path, const timespec &modified)
{
    const timespec times[2] = {{0, UTIME_OMIT}, modified};
    return ::utimensat(AT_FDCWD, path.constData(), times, 0) == 0;
}

}

/// A date beyond those that the file system knows becomes its first or last one without a word.
bool FileDates::setDate(const QString &path, qint64 seconds, QString *reason)
{
    constexpr qint64 kCoarsest = 2; // seconds between two dates of a file system
    const QByteArray native = Posix::nativePath(path);
    struct stat before = {};
    struct stat after = {};
    if (::stat(native.constData(), &before) != 0 || !setModified(native, {seconds, 0}) ||
        ::stat(native.constData(), &after) != 0)
        return Posix::fail(reason, errno);
    if (after.st_mtim.tv_sec >= seconds - kCoarsest && after.st_mtim.tv_sec <= seconds + kCoarsest)
        return true;
    setModified(native, before.st_mtim);
    return Posix::fail(reason, ERANGE);
}
