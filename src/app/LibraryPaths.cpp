#include "LibraryPaths.h"

#include "DirectoryReader.h"
#include "LogString.h"
#include "StringUtilities.h"
#include "UserPaths.h"

#include <QDir>
#include <QFileInfo>

#include <cerrno>
#include <cstring>

namespace {

constexpr auto kMakerFolder = "Harrowmere";
constexpr auto kAdvancedUserEntry = "Harrowmere Advanced User";

QString join(const QString &folder, const char *name)
{
    return QVString::appendingPathComponent(folder, QLatin1String(name));
}

bool makeFolder(const QString &path)
{
    errno = 0;
    return entryTypeAt(path) == EntryType::Folder || QDir().mkpath(path);
}

bool wantsAlternatePlace(const QString &support, Qt::KeyboardModifiers modifiers)
{
    const Qt::KeyboardModifiers wanted = Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;
    return (modifiers & wanted) == wanted && entryTypeAt(join(join(support, kMakerFolder), kAdvancedUserEntry));
}

}

namespace {

/// Where the links lead, so that saving replaces the file and not a link to it; also when the file is not there yet.
QString withoutLinks(QString path)
{
    constexpr int mostLinks = 40; // the kernel's own limit
    for (int i = 0; i < mostLinks && QFileInfo(path).isSymLink(); ++i)
        path = QFileInfo(path).symLinkTarget();
    return path;
}

}

std::optional<LibraryPaths> prepareLibraryPaths(const LibraryPlace &place)
{
    const auto support = PathForUserFolder(StandardFolder::ApplicationSupport);
    if (!support) {
        LogString("Can't locate Application Support folder");
        return std::nullopt;
    }
    LibraryPaths paths;
    const bool alternate = wantsAlternatePlace(*support, place.modifiers);
    paths.libraryFolder =
        alternate ? join(place.alternateVolume, "Photo") : join(join(*support, kMakerFolder), "Photo");
    if (!makeFolder(paths.libraryFolder)) {
        LogString("Can't create support folder %@: %@", paths.libraryFolder, QString::fromLocal8Bit(strerror(errno)));
        return std::nullopt;
    }

    QString cacheHome = paths.libraryFolder;
    if (!alternate) {
        const auto cache = applicationCacheFolder();
        if (!cache) {
            LogString("Can't locate cache folder");
            return std::nullopt;
        }
        cacheHome = *cache;
    }
    paths.thumbnailFolder = join(cacheHome, "Thumbnails");
    if (!makeFolder(paths.thumbnailFolder))
        return std::nullopt;
    paths.databasePath = withoutLinks(join(paths.libraryFolder, "Photo.xml"));
    return paths;
}
