#pragma once

#include "EffectSetStore.h"
#include "FileFacts.h"
#include "FileRefRegistry.h"
#include "ImageCache.h"
#include "KeywordVocabulary.h"
#include "NotificationCenter.h"
#include "PIFolder.h"
#include "PIGroup.h"
#include "PIPhoto.h"
#include "ThumbnailMaker.h"

#include <QSet>

#include <functional>
#include <memory>

class FileFinder;

/// The model: groups with their folders and photos, the keyword vocabulary, effect sets, file references, thumbnails
/// and the dirty flag. Can be loaded, edited and saved without any window. Main thread.
class PhotoLibrary
{
public:
    /// `thumbnailFolder` must exist. `finder` and `notifications` outlive the library.
    PhotoLibrary(const QString &thumbnailFolder, FileFinder &finder, NotificationCenter &notifications);
    ~PhotoLibrary();
    PhotoLibrary(const PhotoLibrary &) = delete;
    PhotoLibrary &operator=(const PhotoLibrary &) = delete;

    [[nodiscard]] QList<std::shared_ptr<PIGroup>> &groups() { return m_groups; }
    [[nodiscard]] const QList<std::shared_ptr<PIGroup>> &groups() const { return m_groups; }
    [[nodiscard]] KeywordVocabulary &keywords() { return m_keywords; }
    [[nodiscard]] const KeywordVocabulary &keywords() const { return m_keywords; }
    [[nodiscard]] EffectSetStore &effectSets() { return m_effectSets; }
    [[nodiscard]] const EffectSetStore &effectSets() const { return m_effectSets; }
    [[nodiscard]] FileRefRegistry &fileRefs() { return m_fileRefs; }
    [[nodiscard]] const FileRefRegistry &fileRefs() const { return m_fileRefs; }
    [[nodiscard]] FileFinder &fileFinder() const { return m_finder; }
    [[nodiscard]] ImageCache &imageCache() { return m_imageCache; }
    [[nodiscard]] ThumbnailMaker &thumbnails() { return m_thumbnails; }
    /// Reads what is not known of the files.
    [[nodiscard]] FileFacts &fileFacts() { return m_fileFacts; }
    [[nodiscard]] NotificationCenter &notifications() { return m_notifications; }

    [[nodiscard]] bool isDirty() const { return m_dirty; }
    void setDirty(bool dirty);
    /// For a change that undo does not take back: the library stays dirty, whatever is undone, until setDirty(false).
    void setDirtyForGood();
    [[nodiscard]] bool isDirtyForGood() const { return m_dirtyForGood; }
    /// Called whenever the dirty flag changes; one listener, the window.
    void setDirtyListener(std::function<void(bool)> listener) { m_dirtyListener = std::move(listener); }

    /// One group "New Group" with one folder "New Folder"; marks the library dirty.
    void makeDefaultLibrary();
    /// Group or folder with that guid, depth first; null when there is none.
    [[nodiscard]] std::shared_ptr<PIGroup> findContainerByGuid(const QString &guid) const;
    /// Groups are searched from the last to the first; null when the photo is in no folder.
    [[nodiscard]] std::shared_ptr<PIFolder> folderForPhoto(const PIPhoto &photo) const;
    /// The top-level group of a group or folder; null outside the library.
    [[nodiscard]] static std::shared_ptr<PIGroup> groupForFolder(const std::shared_ptr<PIGroup> &item);
    /// Calls `visit` for every photo occurrence in save order.
    void forEachPhoto(const std::function<void(const std::shared_ptr<PIPhoto> &)> &visit) const;
    /// Calls `visit` once for every photo of one of the files. It may change the library.
    void forEachPhotoOf(const QSet<const PIFileRef *> &files,
                        const std::function<void(const std::shared_ptr<PIPhoto> &)> &visit) const;
    /// The references of photos that `isWanted` is true for, each once, in save order.
    [[nodiscard]] QList<std::shared_ptr<PIFileRef>> usedFileRefs(
        const std::function<bool(const PIFileRef &)> &isWanted) const;
    /// The photo's crop, effects or file are others: its pictures are made anew, and what shows it is told.
    void pictureChanged(PIPhoto &photo);
    /// The files were found, maybe elsewhere, or are lost now: attempts to read them may be made again, and what shows
    /// their photos is told.
    void filesChangedPlace(const QSet<const PIFileRef *> &files);

    /// The files have another content: "hmphoto.fileChange" is posted for each, and their photos are made anew.
    void filesChangedContent(const QSet<PIFileRef *> &files);

private:
    void filesChanged(const QSet<const PIFileRef *> &files);

    bool m_isAnnouncing = false; ///< changed files, whose photos follow in one go
    NotificationCenter &m_notifications;
    FileFinder &m_finder;
    ImageCache m_imageCache;
    FileRefRegistry m_fileRefs;
    FileFacts m_fileFacts;
    ThumbnailMaker m_thumbnails;
    KeywordVocabulary m_keywords;
    EffectSetStore m_effectSets;
    QList<std::shared_ptr<PIGroup>> m_groups;
    bool m_dirty = false;
    bool m_dirtyForGood = false;
    std::function<void(bool)> m_dirtyListener;
    NotificationCenter::Observer m_savingObserver;
    NotificationCenter::Observer m_fileChangeObserver;
};
