#pragma once

#include "DispatchQueue.h"
#include "ImageCache.h"
#include "NotificationCenter.h"
#include "PixelPool.h"

#include <QHash>
#include <QImage>
#include <QString>

#include <atomic>
#include <memory>

class PIPhoto;
struct PictureRecipe;

/// Thumbnails of photos: from memory, from the cache folder, or made in the background and announced with
/// "hmphoto.thumbnail". Lives on the main thread; the thumbnails in memory share a byte budget.
class ThumbnailMaker
{
public:
    static constexpr int kBoxSide = 240; ///< pixels

    ThumbnailMaker(const QString &cacheFolder, ImageCache &imageCache, NotificationCenter &notifications);
    /// Jobs under way are given up.
    ~ThumbnailMaker();
    ThumbnailMaker(const ThumbnailMaker &) = delete;
    ThumbnailMaker &operator=(const ThumbnailMaker &) = delete;

    [[nodiscard]] const QString &cacheFolder() const { return m_cacheFolder; }
    /// The one pool of decoded pixels; large renderings share it with the thumbnails.
    [[nodiscard]] PixelPool &pixelPool() { return m_pool; }

    /// The thumbnail, or the placeholder while one is being made; returns at once.
    [[nodiscard]] QImage thumbnail(PIPhoto &photo);
    /// The thumbnail if memory or the cache folder has it; null otherwise. Starts nothing.
    [[nodiscard]] QImage availableThumbnail(const PIPhoto &photo);
    /// "MissingThumbnail", the picture that stands in for one that is not there.
    [[nodiscard]] const QImage &placeholder() const { return m_placeholder; }
    /// Installed by the application from its resources.
    void setPlaceholder(const QImage &image) { m_placeholder = image; }

    [[nodiscard]] QString thumbnailPath(const PIPhoto &photo) const;
    /// Removes the file; failures do not matter.
    void deleteThumbnail(const PIPhoto &photo);
    /// To be called when the photo's crop or effects changed: forgets its pictures, so that the next request remakes.
    void updateForFilters(PIPhoto &photo);
    /// The photo's image file has a new content: crop and thumbnail are gone, and remade if it was on show.
    void fileChanged(PIPhoto &photo);
    /// The photo's file is found again, maybe elsewhere. What was made of it holds; an attempt that failed is no reason
    /// not to try again.
    void fileFound(PIPhoto &photo);
    /// Makes the thumbnail anew, even where an earlier attempt failed: for a photo whose file was found again.
    void remake(PIPhoto &photo);

    /// Photos whose thumbnail is being made or waits for a thread.
    [[nodiscard]] int pendingJobs() const { return static_cast<int>(m_inFlight.size()); }
    /// Jobs submitted since start-up.
    [[nodiscard]] quint64 sequenceCount() const { return m_sequence; }
    /// Returns when all jobs have run; their results arrive with the next turn of the event loop.
    void waitUntilIdle();

private:
    struct Result;

    void makeThumbnail(PIPhoto &photo);
    [[nodiscard]] static Result runJob(const PictureRecipe &recipe, const QString &thumbnailPath,
                                       const std::atomic<bool> &cancelled);
    void finish(const QString &guid, const std::weak_ptr<PIPhoto> &waiting, const Result &result);
    void install(const std::shared_ptr<PIPhoto> &photo, const Result &result);

    QString m_cacheFolder;
    ImageCache &m_imageCache;
    NotificationCenter &m_notifications;
    PixelPool m_pool;
    QImage m_placeholder;
    quint64 m_sequence = 0;
    /// The guids of all jobs under way, because two jobs must not write one file. The value is another photo of that
    /// guid, such as a restored copy, whose turn comes next.
    QHash<QString, std::weak_ptr<PIPhoto>> m_inFlight;
    std::shared_ptr<std::atomic<bool>> m_ended; // ends the jobs, and outlives us for results that arrive later
    DispatchQueue m_queue;                      // last: its jobs end before anything above goes away
};
