#include "LocatorFileFinder.h"

#include "BookmarkService.h"
#include "LocatorCheck.h"
#include "PILocatorManager.h"
#include "UnsettledSearch.h"

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
    return settle(searchUnsettled({guid, *std::move(locator), *doubt}, lastStored(), m_bookmarks));
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
