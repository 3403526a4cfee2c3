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

bool FileDates::setDate(const QString &path, qint64 seconds, QString *reason)
{
    const timespec times[2] = {{0, UTIME_OMIT}, {seconds, 0}};
    if (::utimensat(AT_FDCWD, Posix::nativePath(path).constData(), times, 0) != 0)
        return Posix::fail(reason, errno);
    return true;
}
