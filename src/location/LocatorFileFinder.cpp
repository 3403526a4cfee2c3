#include "LocatorFileFinder.h"

#include "BookmarkService.h"
#include "FileBookmark.h"
#include "PILocatorManager.h"

#include <utility>

using Status = BookmarkResolution::Status;

LocatorFileFinder::LocatorFileFinder(PILocatorManager *manager, BookmarkService &bookmarks, Search search)
    : m_manager(manager)
    , m_bookmarks(bookmarks)
    , m_search(search)
{}

namespace {

using Doubt = LocatorFileFinder::Doubt;

/// Nothing when the file is surely where the path leads.
std::optional<Doubt> doubtAbout(QVFileLocator &locator, BookmarkService &bookmarks)
{
    const auto here = locator.verifyPath(bookmarks);
    if (!here)
        return Doubt::Lost;
    if (locator.isFolder())
        return Doubt::Occupied;
    return here->bookmarkOutdated ? std::optional(Doubt::Changed) : std::nullopt;
}

/// A file that stands at the path is what people expect there, unless the very file that was meant is elsewhere.
BookmarkOptions::Copies copiesFor(Doubt doubt)
{
    return doubt == Doubt::Changed ? BookmarkOptions::Copies::Refused : BookmarkOptions::Copies::Accepted;
}

}

FoundFile LocatorFileFinder::locate(const QString &guid, const QString &path)
{
    auto locator = m_manager ? m_manager->locatorForGuid(guid) : std::nullopt;
    if (!locator)
        return relocate(guid, path);
    const auto doubt = doubtAbout(*locator, m_bookmarks);
    if (!doubt)
        return {true, locator->path()};
    if (m_search == Search::Later) {
        m_unsettled.insert(guid, *doubt);
        return {*doubt == Doubt::Changed, locator->path()};
    }
    BookmarkOptions options;
    options.copies = copiesFor(*doubt);
    const QByteArray bookmark = locator->bookmark();
    return settle({guid, *std::move(locator), *doubt},
                  bookmark.isEmpty() ? BookmarkResolution{} : m_bookmarks.resolve(bookmark, options));
}

FoundFile LocatorFileFinder::relocate(const QString &guid, const QString &path)
{
    m_unsettled.remove(guid);
    QVFileLocator locator(path, m_bookmarks);
    const auto result = locator.verify(m_bookmarks);
    store(guid, locator);
    return {result.found, result.found ? locator.path() : path, result.volumeAway};
}

void LocatorFileFinder::trimUnusedFiles(const QStringList &guidsInUse)
{
    if (m_manager)
        m_manager->trimUnusedFiles(guidsInUse);
}

QByteArray LocatorFileFinder::bookmark(const QString &guid)
{
    const auto locator = m_manager ? m_manager->locatorForGuid(guid) : std::nullopt;
    return locator ? locator->bookmark() : QByteArray();
}

QList<LocatorFileFinder::Unsettled> LocatorFileFinder::takeUnsettled()
{
    QList<Unsettled> files;
    const QHash<QString, Doubt> unsettled = std::exchange(m_unsettled, {});
    for (auto entry = unsettled.cbegin(); entry != unsettled.cend(); ++entry)
        if (auto locator = m_manager->locatorForGuid(entry.key()))
            files.append({entry.key(), *std::move(locator), entry.value()});
    return files;
}

FoundFile LocatorFileFinder::settle(const Unsettled &file, const BookmarkResolution &resolution)
{
    QVFileLocator locator = file.locator;
    // A folder that took the place of a photo is not what its locator is to follow.
    if (resolution.status == Status::Found || file.doubt == Doubt::Lost) {
        const auto result = locator.follow(resolution, m_bookmarks);
        if (result.changed || locator.path() != file.locator.path())
            store(file.guid, locator);
        return {result.found, locator.path(), result.volumeAway};
    }
    if (file.doubt == Doubt::Occupied)
        return {false, locator.path(), resolution.status == Status::VolumeAway};
    // The file that was meant is no more, so it was replaced by the one that is there.
    if (resolution.status == Status::Missing && locator.setBookmarkFromPath(m_bookmarks))
        store(file.guid, locator);
    return {true, locator.path()};
}

void LocatorFileFinder::store(const QString &guid, const QVFileLocator &locator)
{
    if (m_manager)
        m_manager->setLocator(locator, guid);
}

namespace {

void searchAll(const QList<LocatorFileFinder::Unsettled> &files, BookmarkOptions options,
               const std::function<void(const QList<SearchedFile> &)> &searched)
{
    QList<QByteArray> bookmarks;
    for (const auto &file : files)
        bookmarks.append(file.locator.bookmark());
    options.resolved = [&](const QList<BookmarkResolution> &resolutions) {
        QList<SearchedFile> batch;
        for (const BookmarkResolution &resolution : resolutions)
            batch.append({files.at(resolution.index), resolution});
        searched(batch);
    };
    if (!files.isEmpty())
        FileBookmark::resolveMany(bookmarks, options);
}

}

void searchUnsettled(const QList<LocatorFileFinder::Unsettled> &files, const BookmarkOptions &options,
                     const std::function<void(const QList<SearchedFile> &)> &searched)
{
    for (const BookmarkOptions::Copies copies : {BookmarkOptions::Copies::Refused, BookmarkOptions::Copies::Accepted}) {
        QList<LocatorFileFinder::Unsettled> some;
        for (const auto &file : files)
            if (copiesFor(file.doubt) == copies)
                some.append(file);
        BookmarkOptions wanted = options;
        wanted.copies = copies;
        searchAll(some, wanted, searched);
    }
}
