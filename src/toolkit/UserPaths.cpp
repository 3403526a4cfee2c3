#include "UserPaths.h"

#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>

#include <cerrno>

QString HomeFolderPath()
{
    static const QString path = homeFolder().value_or(QString());
    return path;
}

QString RootPath()
{
    return QString(QChar::Null); // no path holds a null character
}

namespace {

/// Makes the folder and its missing parents, private to the user as the base-directory rules ask.
bool makeFolder(const QString &path)
{
    for (qsizetype slash = path.indexOf(QLatin1Char('/'), 1);; slash = path.indexOf(QLatin1Char('/'), slash + 1)) {
        if (::mkdir(QFile::encodeName(path.left(slash)).constData(), 0700) != 0 && errno != EEXIST)
            return false;
        if (slash < 0)
            return QFileInfo(path).isDir();
    }
}

}

std::optional<QString> PathForUserFolder(StandardFolder folder)
{
    const auto path = standardFolderPath(folder);
    if (!path || !(QFileInfo(*path).isDir() || makeFolder(*path)))
        return {};
    return path;
}
