#include "LocatorFileFinder.h"

#include "BookmarkService.h"
#include "FileBookmark.h"
#include "FileIdentity.h"
#include "KeptOriginal.h"
#include "LocatorCheck.h"
#include "PILocatorManager.h"
#include "TrashFolders.h"

#include <QFile>

#include <utility>

using Status = BookmarkResolution::Status;

LocatorFileFinder::LocatorFileFinder(PILocatorManager *manager, BookmarkService &bookmarks, Search search)
    : m_manager(manager)
    , m_bookmarks(bookmarks)
    , m_search(search)
{}

LocatorFileFinder::LocatorFileFinder(std::function<PILocatorManager *()> manager, BookmarkService &bookmarks,
                                     Search search)
    : m_source(std::move(manager))
    , m_bookmarks(bookmarks)
    , m_search(search)
{}

PILocatorManager *LocatorFileFinder::manager()
{
    if (m_source)
        m_manager = std::exchange(m_source, {})();
    return m_manager;
}

std::optional<LocatorFileFinder::Doubt> LocatorFileFinder::doubtAbout(QVFileLocator &locator,
                                                                      BookmarkService &bookmarks,
                                                                      const Volumes *volumes)
{
    const auto here = locator.verifyPath(bookmarks, volumes);
    if (!here)
        return Doubt::Lost;
    if (locator.isFolder())
        return Doubt::Occupied;
    return here->bookmarkOutdated ? std::optional(Doubt::Changed) : std::nullopt;
}

namespace {

using Doubt = LocatorFileFinder::Doubt;

/// A file that stands at the path is what people expect there, unless the very file that was meant is elsewhere.
BookmarkOptions::Copies copiesFor(Doubt doubt)
{
    return doubt == Doubt::Changed ? BookmarkOptions::Copies::Refused : BookmarkOptions::Copies::Accepted;
}

/// Who puts a photo away and another file in its place means the photo to be that file. So does a program that sets
/// the original aside when it saves.
BookmarkResolution unlessPutAside(BookmarkResolution resolution, const LocatorFileFinder::Unsettled &file)
{
    const bool isPutAside = file.doubt == Doubt::Changed && resolution.status == Status::Found &&
                            (TrashFolders().hold(QFile::encodeName(resolution.path)) ||
                             isKeptOriginal(resolution.path, file.locator.path()));
    return isPutAside ? BookmarkResolution{resolution.index, Status::Missing} : std::move(resolution);
}

/// Whether the file that was meant is no more, as far as can be told: nothing is known of where else it could be.
bool isReplaced(const QVFileLocator &locator, Status status, std::optional<FileTime> lastStored)
{
    if (status != Status::Unreached || !lastStored)
        return status == Status::Missing && lastStored;
    const auto present = examineLinkedFile(QFile::encodeName(locator.path()).constData());
    return present && *lastStored < present->identity.modified &&
           FileBookmark::isOlderThan(locator.bookmark(), present->identity);
}

/// What a file's resolution makes of its locator. Looks at files.
SearchedFile takeUp(const LocatorFileFinder::Unsettled &file, const BookmarkResolution &resolution,
                    BookmarkService &bookmarks, std::optional<FileTime> lastStored)
{
    SearchedFile taken{file, resolution.status, file.locator, false, {false, file.locator.path()}};
    QVFileLocator &locator = taken.locator;
    const bool isChanged = file.doubt == Doubt::Changed;
    // Nothing is where the file was, and nothing else is known: no bookmark can be made, and there is nothing to tell.
    const bool isNowhere = resolution.status != Status::Found && resolution.status != Status::VolumeAway &&
                           file.doubt == Doubt::Lost && !locator.verifyPath(bookmarks);
    if (isNowhere)
        return taken;
    // A folder that took the place of a photo is not what its locator is to follow.
    if (resolution.status == Status::Found || file.doubt == Doubt::Lost) {
        const auto result = locator.follow(resolution, bookmarks);
        const bool isElsewhere = locator.path() != file.locator.path();
        taken.isToBeStored = result.changed || isElsewhere;
        taken.place = {result.found, locator.path(), result.volumeAway,
                       isChanged && !isElsewhere && taken.isToBeStored};
    } else if (resolution.status == Status::VolumeAway || file.doubt == Doubt::Occupied) {
        // What stands at the path then is of another volume that is mounted there.
        taken.place.volumeAway = resolution.status == Status::VolumeAway;
    } else {
        taken.isToBeStored =
            isReplaced(locator, resolution.status, lastStored) && locator.setBookmarkFromPath(bookmarks);
        taken.place = {true, locator.path(), false, taken.isToBeStored};
    }
    return taken;
}

}

FoundFile LocatorFileFinder::locate(const QString &guid, const QString &path)
{
    if (m_isPostponing) {
        m_postponed.append({guid, path});
        return {true, path};
    }
    auto locator = manager() ? m_manager->locatorForGuid(guid) : std::nullopt;
    if (!locator)
        return relocate(guid, path);
    const auto doubt = doubtAbout(*locator, m_bookmarks);
    if (!doubt || m_search == Search::Later)
        return takeDoubt(guid, locator->path(), doubt);
    BookmarkOptions options;
    options.copies = copiesFor(*doubt);
    const QByteArray bookmark = locator->bookmark();
    auto resolution = bookmark.isEmpty() ? BookmarkResolution{} : m_bookmarks.resolve(bookmark, options);
    const Unsettled file{guid, *std::move(locator), *doubt};
    return settle(takeUp(file, unlessPutAside(std::move(resolution), file), m_bookmarks, lastStored()));
}

FoundFile LocatorFileFinder::takeDoubt(const QString &guid, const QString &path, std::optional<Doubt> doubt)
{
    if (!doubt) {
        noteFound(guid);
        return {true, path};
    }
    note(guid, *doubt);
    const bool isAway = m_away.contains(guid);
    return {*doubt == Doubt::Changed && !isAway, path, isAway};
}

FoundFile LocatorFileFinder::relocate(const QString &guid, const QString &path)
{
    m_unsettled.remove(guid);
    noteFound(guid);
    const auto prepared = std::exchange(m_prepared, {});
    if (!manager()) // nobody would keep a bookmark
        return {QVFileLocator(path, QByteArray()).verifyPath(m_bookmarks).has_value(), path};
    const bool isReady = prepared && prepared->path == path;
    QVFileLocator locator = isReady ? QVFileLocator(path, prepared->bookmark) : QVFileLocator(path, m_bookmarks);
    // What was just made from its path can only be there, or not be anywhere yet.
    const auto here = locator.verifyPath(m_bookmarks);
    if (here && here->bookmarkOutdated && isReady)
        (void)locator.setBookmarkFromPath(m_bookmarks);
    if (store(guid, locator) && !here && isReady)
        note(guid, Doubt::Lost); // gone since it was prepared
    return {here.has_value(), path};
}

void LocatorFileFinder::trimUnusedFiles(const QStringList &guidsInUse)
{
    if (m_isPostponing)
        m_guidsInUse = guidsInUse;
    else if (manager())
        m_manager->trimUnusedFiles(guidsInUse);
}

LocatorCheck LocatorFileFinder::takePostponed()
{
    m_isPostponing = false;
    return {std::exchange(m_postponed, {}), std::exchange(m_guidsInUse, {}),
            manager() ? m_manager->snapshot() : LocatorSnapshot(), m_bookmarks};
}

LocatorCheck LocatorFileFinder::check(QList<PostponedFile> files)
{
    for (PostponedFile &file : files)
        file.isDoubtful |= m_doubtful.contains(file.guid);
    return {std::move(files), {}, manager() ? m_manager->snapshot() : LocatorSnapshot(), m_bookmarks};
}

void LocatorFileFinder::forget(const QStringList &guids)
{
    if (manager())
        m_manager->forget(guids);
}

FoundFile LocatorFileFinder::takeChecked(const CheckedFile &file)
{
    const auto locator = manager() ? m_manager->locatorForGuid(file.guid) : std::nullopt;
    if (!locator && file.newBookmark) {
        usePrepared(file.path, *file.newBookmark);
        return relocate(file.guid, file.path);
    }
    // Given another place meanwhile, it was not what was looked at.
    if (!locator || file.newBookmark || locator->path() != file.path)
        return locate(file.guid, file.path);
    return takeDoubt(file.guid, file.path, file.doubt);
}

QByteArray LocatorFileFinder::bookmark(const QString &guid)
{
    const auto locator = manager() ? m_manager->locatorForGuid(guid) : std::nullopt;
    return locator ? locator->bookmark() : QByteArray();
}

void LocatorFileFinder::save()
{
    if (manager())
        m_manager->save();
}

FileFinder::Preparation LocatorFileFinder::preparation()
{
    if (!manager())
        return {};
    return [&bookmarks = m_bookmarks](const QString &path) {
        QString reason; // when there is no bookmark, locating the file tells why
        return bookmarks.create(path, reason).value_or(QByteArray());
    };
}

void LocatorFileFinder::usePrepared(const QString &path, const QByteArray &prepared)
{
    m_prepared.reset();
    if (!prepared.isEmpty())
        m_prepared = Prepared{path, prepared};
}

void LocatorFileFinder::note(const QString &guid, Doubt doubt)
{
    const bool isFirst = m_unsettled.isEmpty();
    const auto earlier = m_unsettled.constFind(guid);
    const auto before = m_doubtful.constFind(guid);
    const bool isNew =
        before == m_doubtful.cend() || *before != doubt || (earlier != m_unsettled.cend() && earlier->isNew);
    m_unsettled.insert(guid, {guid, doubt, isNew});
    m_doubtful.insert(guid, doubt);
    if (isFirst && m_noteListener)
        m_noteListener();
}

void LocatorFileFinder::noteFound(const QString &guid)
{
    m_doubtful.remove(guid);
    m_away.remove(guid);
}

QList<LocatorFileFinder::Unsettled> LocatorFileFinder::takeUnsettled()
{
    QList<Unsettled> files;
    const auto unsettled = std::exchange(m_unsettled, {});
    for (const Noted &noted : unsettled)
        if (auto locator = m_manager->locatorForGuid(noted.guid))
            files.append({noted.guid, *std::move(locator), noted.doubt, noted.isNew});
    return files;
}

std::optional<FileTime> LocatorFileFinder::lastStored()
{
    return manager() ? std::optional(m_manager->lastStored()) : std::nullopt;
}

FoundFile LocatorFileFinder::settle(const SearchedFile &searched)
{
    const auto &[guid, before, doubt, isNew] = searched.file;
    const auto present = manager() ? m_manager->locatorForGuid(guid) : std::nullopt;
    if (present && (present->path() != before.path() || present->bookmark() != before.bookmark()))
        return locate(guid, present->path());
    FoundFile result = searched.place;
    const bool isStored = searched.isToBeStored && store(guid, searched.locator);
    result.contentChanged = result.contentChanged && isStored;
    if (searched.status == Status::Found || searched.status == Status::VolumeAway)
        noteFound(guid);
    if (result.volumeAway)
        m_away.insert(guid);
    return result;
}

bool LocatorFileFinder::store(const QString &guid, const QVFileLocator &locator)
{
    return manager() && m_manager->setLocator(locator, guid);
}

void searchUnsettled(const QList<LocatorFileFinder::Unsettled> &files, std::optional<FileTime> lastStored,
                     const BookmarkOptions &options, const std::function<void(const QList<SearchedFile> &)> &searched)
{
    if (files.isEmpty())
        return;
    BookmarkOptions wanted = forPictures(options);
    QList<QByteArray> bookmarks;
    for (const auto &file : files) {
        if (copiesFor(file.doubt) == BookmarkOptions::Copies::Refused)
            wanted.originalsOnly.insert(bookmarks.size());
        bookmarks.append(file.locator.bookmark());
    }
    FileBookmarkService service(options.volumes);
    wanted.resolved = [&](const QList<BookmarkResolution> &resolutions) {
        QList<SearchedFile> batch;
        for (const BookmarkResolution &resolution : resolutions) {
            const auto &file = files.at(resolution.index);
            if (resolution.status == Status::Unsearched)
                batch.append({file, resolution.status, file.locator, false, {false, file.locator.path()}});
            else
                batch.append(takeUp(file, unlessPutAside(resolution, file), service, lastStored));
        }
        searched(batch);
    };
    FileBookmark::resolveMany(bookmarks, wanted);
}
