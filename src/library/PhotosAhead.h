#pragma once

#include "DispatchQueue.h"
#include "FittedRect.h"
#include "HeldPicture.h"
#include "PixelRequest.h"

#include <QList>

#include <atomic>
#include <functional>
#include <memory>

class ImageCache;
class PIPhoto;
class PixelPool;

/// Makes the pictures of photos that will probably be looked at next, in the background and before anybody asks. They
/// go to the pool, where whoever shows the photo finds them under the number of `knownImage`. What was edited meanwhile
/// is dropped. Main thread.
class PhotosAhead
{
public:
    using PhotoList = QList<std::shared_ptr<PIPhoto>>;
    /// On the main thread, when the turn of a photo is over, whether or not there is a picture now.
    using Finished = std::function<void(const PIPhoto &photo)>;
    /// More are not prepared at once.
    static constexpr qsizetype kMost = 4;
    static constexpr qsizetype kMostHeld = 2 * kMost;

    /// Both outlive it.
    PhotosAhead(ImageCache &imageCache, PixelPool &pool, Finished finished);
    ~PhotosAhead();
    PhotosAhead(const PhotosAhead &) = delete;
    PhotosAhead &operator=(const PhotosAhead &) = delete;

    /// These are wanted from now on, the most urgent first, as they are shown fitted into the room; work for others is
    /// given up.
    void prepare(const PhotoList &photos, const PictureRoom &room);
    /// Gives up all work.
    void cancel();
    /// The photo's picture as it is shown, by the handle under which its pixels were made; null when it is to be
    /// opened.
    [[nodiscard]] Image knownImage(const PIPhoto &photo) const;
    /// The photo was shown by this handle and may soon be wanted again.
    void hold(const PIPhoto &photo, const HeldPicture &picture);
    /// The photo's picture, as it is shown fitted into the room, is in the pool.
    [[nodiscard]] bool isPrepared(const PIPhoto &photo, const PictureRoom &room) const
    {
        return isMade(knownImage(photo), room);
    }
    /// The picture is being made at this moment, of the photo as it is now: `Finished` will be called.
    [[nodiscard]] bool isUnderWay(const PIPhoto &photo) const;
    /// Photos whose pictures are being made or wait for it.
    [[nodiscard]] qsizetype count() const { return m_jobs.size(); }

private:
    struct Job
    {
        std::weak_ptr<PIPhoto> photo;
        PictureRecipe recipe;
        Image known; ///< the picture as it is shown; null when it is still to be opened
        PictureRoom room;
        std::atomic<bool> cancelled = false;
        std::atomic<bool> begun = false; ///< disks that do not answer may keep it waiting

        [[nodiscard]] bool isFor(const PIPhoto &other) const { return photo.lock().get() == &other; }
    };
    /// What a job comes to.
    struct Result
    {
        OpenedPicture opened; ///< null handles when one was at hand
        PixelRequest request;
        std::optional<QImage> pixels;
    };

    [[nodiscard]] bool isMade(const Image &known, const PictureRoom &room) const;
    void holdOnly(const PhotoList &photos);
    void start(const std::shared_ptr<Job> &job);
    [[nodiscard]] static Result run(const Job &job);
    void finish(const std::shared_ptr<Job> &job, const Result &result);

    ImageCache &m_imageCache;
    PixelPool &m_pool;
    Finished m_finished;
    QList<HeldPicture> m_held;          ///< at most one of each photo
    QList<std::shared_ptr<Job>> m_jobs; ///< none of them cancelled
    DispatchQueue m_queue;              ///< last: its blocks end first
};
