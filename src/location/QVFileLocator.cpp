#include "QVFileLocator.h"

#include "BookmarkService.h"
#include "FileIdentity.h"
#include "LogString.h"
#include "PosixSupport.h"
#include "RunningServices.h"
#include "UserPaths.h"

QVFileLocator::QVFileLocator(const QString &path, BookmarkService &bookmarks, LocatorMethod method)
    : m_method(method == LocatorMethod::Nil ? methodFromPath(path) : method)
    , m_path(path)
{
    (void)setBookmarkFromPath(bookmarks);
}

QVFileLocator::QVFileLocator(const QString &path, const QByteArray &bookmark)
    : m_bookmark(bookmark)
    , m_method(methodFromPath(path))
    , m_path(path)
{}

QVFileLocator::Verification QVFileLocator::verify(BookmarkService &bookmarks, BookmarkOptions::Mounting mounting)
{
    if (const auto here = verifyPath(bookmarks))
        return *here;
    if (m_bookmark.isEmpty())
        return {};
    BookmarkOptions options;
    options.mounting = mounting;
    return follow(bookmarks.resolve(m_bookmark, options), bookmarks);
}

namespace {

/// Nothing when no file or folder is there, links followed.
std::optional<PresentFile> examine(const QString &path)
{
    return examineLinkedFile(Posix::nativePath(path).constData());
}

}

std::optional<QVFileLocator::Verification> QVFileLocator::verifyPath(BookmarkService &bookmarks, const Volumes *volumes)
{
    const auto present = examine(m_path);
    if (!present)
        return {};
    m_folder = present->identity.kind == FileKind::Folder;
    const bool isCurrent = bookmarks.isCurrent(m_bookmark, present->identity, volumes);
    return Verification{.found = true, .bookmarkOutdated = !isCurrent};
}

QVFileLocator::Verification QVFileLocator::follow(const BookmarkResolution &resolution, BookmarkService &bookmarks)
{
    using Status = BookmarkResolution::Status;
    if (resolution.status == Status::VolumeAway)
        return {.volumeAway = true};
    if (resolution.status == Status::Unnameable) // whatever stands at the path is not what was meant
        return verifyPath(bookmarks).value_or(Verification{.reason = QStringLiteral("Its new name is no text")});
    Verification result{.found = true};
    const bool isResolved = resolution.status == Status::Found;
    // What the bookmark cannot find may have come back to its old place meanwhile.
    if (!isResolved && !setBookmarkFromPath(bookmarks, &result.reason))
        return {.reason = result.reason};
    result.changed = !isResolved || resolution.stale;
    if (isResolved)
        m_path = resolution.path;
    m_method = methodFromPath(m_path);
    if (const auto present = examine(m_path))
        m_folder = present->identity.kind == FileKind::Folder;
    if (isResolved && resolution.stale && !resolution.fresh.isEmpty())
        m_bookmark = resolution.fresh;
    else if (isResolved && resolution.stale)
        (void)setBookmarkFromPath(bookmarks);
    return result;
}

bool QVFileLocator::setBookmarkFromPath(BookmarkService &bookmarks, QString *reason)
{
    QString why;
    if (auto bookmark = bookmarks.create(m_path, why)) {
        m_bookmark = *std::move(bookmark);
        return true;
    }
    LogString("Can't bookmark %@. %@", m_path, why);
    if (reason)
        *reason = why;
    return false;
}

bool QVFileLocator::isInTrash() const
{
    const auto trash = PathForUserFolder(StandardFolder::Trash);
    return trash && m_path.startsWith(*trash);
}

QString QVFileLocator::displayText() const
{
    const QLatin1String volumes("/Volumes/");
    return m_path.startsWith(volumes) && m_path.size() > volumes.size() ? m_path.mid(volumes.size()) : m_path;
}

bool QVFileLocator::isServiceRunning(const RunningServices &services) const
{
    if (m_method == LocatorMethod::Alias || m_method == LocatorMethod::Local)
        return true;
    const QString identifier = bundleIdentifier(m_method);
    return !identifier.isEmpty() && services.isServiceRunning(identifier);
}

bool QVFileLocator::runService(const RunningServices &services) const
{
    const QString identifier = bundleIdentifier(m_method);
    if (isServiceRunning(services))
        return true;
    return !identifier.isEmpty() && services.runService(identifier);
}
