#include "UnsettledSearch.h"

#include "BookmarkService.h"
#include "FileBookmark.h"
#include "KeptOriginal.h"
#include "PosixSupport.h"
#include "TrashFolders.h"

#include <algorithm>
#include <utility>

namespace {

using Doubt = LocatorFileFinder::Doubt;
using Status = BookmarkResolution::Status;
using Unsettled = LocatorFileFinder::Unsettled;

/// Works out what files' resolutions make of their locators. Looks at files.
class Verdict
{
public:
    Verdict(const QList<Unsettled> &files, std::optional<FileTime> lastStored, BookmarkService &bookmarks)
        : m_lastStored(lastStored)
        , m_bookmarks(bookmarks)
    {
        for (const Unsettled &file : files)
            m_paths.insert(file.locator.path());
    }

    /// Whether a copy may stand in for the file. One that stands at its path is what people expect there, unless it
    /// cannot have been saved there.
    [[nodiscard]] static bool acceptsCopies(const Unsettled &file)
    {
        return file.doubt != Doubt::Changed || isOfEarlierDate(file);
    }
    [[nodiscard]] SearchedFile on(const Unsettled &file, const BookmarkResolution &resolution) const;

private:
    [[nodiscard]] static bool isOfEarlierDate(const Unsettled &file);
    [[nodiscard]] bool isPutAside(const Unsettled &file, const BookmarkResolution &resolution) const;
    [[nodiscard]] bool isReplaced(const Unsettled &file, Status status) const;
    [[nodiscard]] bool isRestored(const Unsettled &file) const;
    void renew(SearchedFile &searched) const;
    void follow(SearchedFile &searched, const BookmarkResolution &resolution) const;

    std::optional<FileTime> m_lastStored;
    BookmarkService &m_bookmarks;
    QSet<QString> m_paths; ///< of all the files that are not as their locators say
};

std::optional<PresentFile> examine(const Unsettled &file)
{
    return examineLinkedFile(Posix::nativePath(file.locator.path()).constData());
}

bool Verdict::isOfEarlierDate(const Unsettled &file)
{
    const auto present = examine(file);
    return present && FileBookmark::isNewerThan(file.locator.bookmark(), present->identity);
}

/// Who puts a photo away and another file in its place means the photo to be that file. So does a program that sets
/// the original aside when it saves; but not who exchanges the names of two photos.
bool Verdict::isPutAside(const Unsettled &file, const BookmarkResolution &resolution) const
{
    if (file.doubt != Doubt::Changed || resolution.status != Status::Found)
        return false;
    return TrashFolders().hold(Posix::nativePath(resolution.path)) ||
           (isKeptOriginal(resolution.path, file.locator.path()) && !m_paths.contains(resolution.path));
}

/// Whether the file that was meant is no more, as far as can be told: nothing is known of where else it could be.
bool Verdict::isReplaced(const Unsettled &file, Status status) const
{
    if (!m_lastStored || (status != Status::Missing && status != Status::Unreached))
        return false;
    if (status == Status::Missing)
        return !isOfEarlierDate(file);
    const auto present = examine(file);
    return present && *m_lastStored < present->identity.modified &&
           FileBookmark::isOlderThan(file.locator.bookmark(), present->identity);
}

/// Whether the file at the path is the same on another disk, as after a backup was played back.
bool Verdict::isRestored(const Unsettled &file) const
{
    QString reason;
    const auto present = m_bookmarks.create(file.locator.path(), reason);
    return present && FileBookmark::haveSameContent(*present, file.locator.bookmark());
}

void Verdict::renew(SearchedFile &searched) const
{
    searched.isToBeStored = searched.locator.setBookmarkFromPath(m_bookmarks);
}

void Verdict::follow(SearchedFile &searched, const BookmarkResolution &resolution) const
{
    QVFileLocator &locator = searched.locator;
    const auto result = locator.follow(resolution, m_bookmarks);
    const bool isElsewhere = locator.path() != searched.file.locator.path();
    searched.isToBeStored = result.changed || isElsewhere;
    const bool isRewritten = searched.file.doubt == Doubt::Changed && !isElsewhere && searched.isToBeStored;
    searched.place = {result.found, locator.path(), result.volumeAway, isRewritten};
}

SearchedFile Verdict::on(const Unsettled &file, const BookmarkResolution &resolution) const
{
    const bool isAside = isPutAside(file, resolution);
    const Status status = isAside ? Status::Missing : resolution.status;
    SearchedFile searched{file, status, file.locator, false, {false, file.locator.path()}};
    const bool isTold = status == Status::Found || status == Status::VolumeAway;
    // Nothing is where the file was, and nothing else is known: no bookmark can be made, and there is nothing to tell.
    if (!isTold && file.doubt == Doubt::Lost && !searched.locator.verifyPath(m_bookmarks))
        return searched;
    // A folder that took the place of a photo is not what its locator is to follow.
    if (status == Status::Found || file.doubt == Doubt::Lost) {
        follow(searched, resolution);
    } else if (status == Status::VolumeAway && file.doubt == Doubt::Changed && isRestored(file)) {
        renew(searched);
        searched.place.found = true;
        searched.status = Status::Found;
    } else if (status == Status::VolumeAway || file.doubt == Doubt::Occupied) {
        // What stands at the path then is of another volume that is mounted there.
        searched.place.volumeAway = status == Status::VolumeAway;
    } else {
        if (isAside || isReplaced(file, status))
            renew(searched);
        searched.place.found = true;
        searched.place.contentChanged = searched.isToBeStored;
    }
    return searched;
}

}

void searchUnsettled(const QList<LocatorFileFinder::Unsettled> &files, std::optional<FileTime> lastStored,
                     const BookmarkOptions &options, const std::function<void(const QList<SearchedFile> &)> &searched)
{
    if (files.isEmpty())
        return;
    BookmarkOptions wanted = forPictures(options);
    QList<QByteArray> bookmarks;
    for (const Unsettled &file : files) {
        if (!Verdict::acceptsCopies(file))
            wanted.originalsOnly.insert(bookmarks.size());
        bookmarks.append(file.locator.bookmark());
    }
    FileBookmarkService service(options.volumes);
    const Verdict verdict(files, lastStored, service);
    wanted.resolved = [&](const QList<BookmarkResolution> &resolutions) {
        QList<SearchedFile> batch;
        for (const BookmarkResolution &resolution : resolutions) {
            const Unsettled &file = files.at(resolution.index);
            if (resolution.status == Status::Unsearched)
                batch.append({file, resolution.status, file.locator, false, {false, file.locator.path()}});
            else
                batch.append(verdict.on(file, resolution));
        }
        searched(batch);
    };
    FileBookmark::resolveMany(bookmarks, wanted);
}

SearchedFile searchUnsettled(const LocatorFileFinder::Unsettled &file, std::optional<FileTime> lastStored,
                             BookmarkService &bookmarks)
{
    BookmarkOptions options;
    options.copies =
        Verdict::acceptsCopies(file) ? BookmarkOptions::Copies::Accepted : BookmarkOptions::Copies::Refused;
    const QByteArray bookmark = file.locator.bookmark();
    const auto resolution = bookmark.isEmpty() ? BookmarkResolution{} : bookmarks.resolve(bookmark, options);
    return Verdict({file}, lastStored, bookmarks).on(file, resolution);
}
