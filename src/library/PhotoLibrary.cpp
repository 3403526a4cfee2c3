#include "PhotoLibrary.h"

#include "FileNotifications.h"
#include "LibraryNotifications.h"
#include "PIFileRef.h"

#include <algorithm>

PhotoLibrary::PhotoLibrary(const QString &thumbnailFolder, FileFinder &finder, NotificationCenter &notifications)
    : m_notifications(notifications)
    , m_finder(finder)
    , m_fileRefs({&finder, &m_imageCache})
    , m_fileFacts(notifications)
    , m_thumbnails(thumbnailFolder, m_imageCache, notifications)
{
    m_savingObserver = notifications.observe(kSavingNotification, [this](const NotificationObject &) {
        for (const auto &group : std::as_const(m_groups))
            group->clearSaveIndexes();
        m_fileRefs.clearSaveIndexes();
    });
    m_fileChangeObserver = notifications.observe(kFileChangeNotification, [this](const NotificationObject &object) {
        auto *fileRef = object.as<PIFileRef>();
        if (!fileRef || m_isAnnouncing)
            return;
        fileRef->forgetFacts();
        filesChanged({fileRef});
    });
}

PhotoLibrary::~PhotoLibrary() = default;

void PhotoLibrary::filesChanged(const QSet<const PIFileRef *> &files)
{
    forEachPhotoOf(files, [this](const std::shared_ptr<PIPhoto> &photo) {
        m_thumbnails.fileChanged(*photo);
        m_notifications.post(kThumbnailNotification, photo); // what shows it has the old picture
    });
}

/// Goes through the photos once for all of the files.
void PhotoLibrary::filesChangedContent(const QSet<PIFileRef *> &files)
{
    m_isAnnouncing = true;
    for (PIFileRef *file : files) {
        file->forgetFacts();
        m_notifications.post(kFileChangeNotification, file);
    }
    m_isAnnouncing = false;
    if (!files.isEmpty())
        filesChanged(QSet<const PIFileRef *>(files.cbegin(), files.cend()));
}

void PhotoLibrary::setDirty(bool dirty)
{
    if (!dirty)
        m_dirtyForGood = false;
    if (dirty == m_dirty)
        return;
    m_dirty = dirty;
    if (m_dirtyListener)
        m_dirtyListener(dirty);
}

void PhotoLibrary::setDirtyForGood()
{
    m_dirtyForGood = true;
    setDirty(true);
}

void PhotoLibrary::makeDefaultLibrary()
{
    const auto group = std::make_shared<PIGroup>(QStringLiteral("New Group"));
    group->makeNewFolder();
    m_groups.append(group);
    setDirty(true);
}

namespace {

std::shared_ptr<PIGroup> findContainer(const std::shared_ptr<PIGroup> &item, const QString &guid)
{
    if (item->guid() == guid)
        return item;
    for (const auto &folder : std::as_const(item->folders())) {
        if (auto found = findContainer(folder, guid))
            return found;
    }
    return nullptr;
}

}

std::shared_ptr<PIGroup> PhotoLibrary::findContainerByGuid(const QString &guid) const
{
    for (const auto &group : m_groups) {
        if (auto found = findContainer(group, guid))
            return found;
    }
    return nullptr;
}

namespace {

std::shared_ptr<PIFolder> findPhoto(const PIPhoto &photo, const QList<std::shared_ptr<PIFolder>> &inFolders)
{
    for (const auto &folder : inFolders) {
        const auto isPhoto = [&](const auto &candidate) { return candidate.get() == &photo; };
        if (std::any_of(folder->photos().cbegin(), folder->photos().cend(), isPhoto))
            return folder;
        if (auto found = findPhoto(photo, folder->folders()))
            return found;
    }
    return nullptr;
}

}

std::shared_ptr<PIFolder> PhotoLibrary::folderForPhoto(const PIPhoto &photo) const
{
    for (auto group = m_groups.crbegin(); group != m_groups.crend(); ++group) {
        if (auto found = findPhoto(photo, (*group)->folders()))
            return found;
    }
    return nullptr;
}

std::shared_ptr<PIGroup> PhotoLibrary::groupForFolder(const std::shared_ptr<PIGroup> &item)
{
    std::shared_ptr<PIGroup> result = item;
    while (result && result->asFolder())
        result = result->asFolder()->parent();
    return result;
}

namespace {

void visitPhotos(const QList<std::shared_ptr<PIFolder>> &folders,
                 const std::function<void(const std::shared_ptr<PIPhoto> &)> &visit)
{
    for (const auto &folder : folders) {
        for (const auto &photo : std::as_const(folder->photos()))
            visit(photo);
        visitPhotos(folder->folders(), visit);
    }
}

}

void PhotoLibrary::forEachPhoto(const std::function<void(const std::shared_ptr<PIPhoto> &)> &visit) const
{
    for (const auto &group : m_groups)
        visitPhotos(group->folders(), visit);
}

void PhotoLibrary::forEachPhotoOf(const QSet<const PIFileRef *> &files,
                                  const std::function<void(const std::shared_ptr<PIPhoto> &)> &visit) const
{
    QSet<const PIPhoto *> seen;
    PIGroup::PhotoList photos;
    forEachPhoto([&](const std::shared_ptr<PIPhoto> &photo) {
        if (!files.contains(photo->fileRef().get()) || seen.contains(photo.get()))
            return;
        seen.insert(photo.get());
        photos.append(photo);
    });
    for (const auto &photo : std::as_const(photos))
        visit(photo);
}

QList<std::shared_ptr<PIFileRef>> PhotoLibrary::usedFileRefs(
    const std::function<bool(const PIFileRef &)> &isWanted) const
{
    QList<std::shared_ptr<PIFileRef>> files;
    QSet<const PIFileRef *> seen;
    forEachPhoto([&](const std::shared_ptr<PIPhoto> &photo) {
        const auto &file = photo->fileRef();
        if (!file || !isWanted(*file) || seen.contains(file.get()))
            return;
        seen.insert(file.get());
        files.append(file);
    });
    return files;
}

void PhotoLibrary::pictureChanged(PIPhoto &photo)
{
    m_thumbnails.updateForFilters(photo);
    m_notifications.post(kThumbnailNotification, &photo);
}

void PhotoLibrary::filesChangedPlace(const QSet<const PIFileRef *> &files)
{
    m_fileRefs.takeUpPaths(files);
    for (const PIFileRef *file : files)
        m_imageCache.storeImage({}, file->guid());
    forEachPhotoOf(files, [this](const std::shared_ptr<PIPhoto> &photo) {
        if (!photo->isFileLost())
            m_thumbnails.fileFound(*photo);
        m_notifications.post(kThumbnailNotification, photo);
    });
}
