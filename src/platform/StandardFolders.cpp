#include "StandardFolders.h"

#include <QFile>

#include <pwd.h>
#include <unistd.h>

#include <vector>

namespace {

QString absolutePathFromEnvironment(const char *variable)
{
    QString path = qEnvironmentVariable(variable);
    if (!path.startsWith(QLatin1Char('/')))
        return {};
    while (path.size() > 1 && path.endsWith(QLatin1Char('/')))
        path.chop(1);
    return path;
}

}

std::optional<QString> homeFolder()
{
    const QString fromEnvironment = absolutePathFromEnvironment("HOME");
    if (!fromEnvironment.isEmpty())
        return fromEnvironment;
    std::vector<char> buffer(16384);
    passwd entry = {};
    passwd *found = nullptr;
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || !found || !found->pw_dir)
        return {};
    const QString path = QFile::decodeName(found->pw_dir);
    return path.startsWith(QLatin1Char('/')) ? std::optional(path) : std::nullopt;
}

std::optional<QString> baseFolder(const char *variable, const QString &belowHome)
{
    const QString given = absolutePathFromEnvironment(variable);
    if (!given.isEmpty())
        return given;
    const auto home = homeFolder();
    if (!home)
        return {};
    return QString(*home + QLatin1Char('/') + belowHome);
}

std::optional<QString> standardFolderPath(StandardFolder folder)
{
    if (folder == StandardFolder::Caches)
        return baseFolder("XDG_CACHE_HOME", QStringLiteral(".cache"));
    const auto data = baseFolder("XDG_DATA_HOME", QStringLiteral(".local/share"));
    if (!data || folder == StandardFolder::ApplicationSupport)
        return data;
    if (folder == StandardFolder::Trash)
        return QString(*data + QLatin1String("/Trash/files"));
    return {};
}

std::optional<QString> applicationCacheFolder()
{
    const auto caches = standardFolderPath(StandardFolder::Caches);
    if (!caches)
        return {};
    return QString(*caches + QLatin1Char('/') + QLatin1String(kBundleIdentifier));
}
