#include "PosixSupport.h"

QByteArray Posix::nativePath(const QString &path)
{
    if (path.contains(QChar::Null) || !path.isValidUtf16())
        return {};
    return path.toUtf8();
}

QByteArray Posix::parentFolder(const QByteArray &path)
{
    const qsizetype slash = path.lastIndexOf('/');
    if (slash < 0)
        return ".";
    return slash == 0 ? QByteArray("/") : path.left(slash);
}

bool Posix::fail(QString *reason, int error)
{
    if (reason)
        *reason = qt_error_string(error);
    return false;
}
