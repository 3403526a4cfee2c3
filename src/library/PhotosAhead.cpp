#include "PhotosAhead.h"

#include "ImageCache.h"
#include "PIPhoto.h"
#include "PixelPool.h"

#include <algorithm>
#include <utility>

namespace {

/// A file takes one thread; two files at once keep up with whoever steps quickly.
constexpr int kThreads = 2;

PixelRequest fitted(const Image &image, const PictureRoom &room)
{
    return {image, fittedPixels(image.size(), room)};
}

}

PhotosAhead::PhotosAhead(ImageCache &imageCache, PixelPool &pool, Finished finished)
    : m_imageCache(imageCache)
    , m_pool(pool)
    , m_finished(std::move(finished))
    , m_queue(QStringLiteral("hmphoto.ahead"), kThreads, DispatchQueue::AtEnd::LeaveBehind)
{}

PhotosAhead::~PhotosAhead()
{
    cancel();
}

bool PhotosAhead::isMade(const Image &known, const PictureRoom &room) const
{
    return !known.isNull() && !m_pool.find(fitted(known, room).key()).isNull();
}

Image PhotosAhead::knownImage(const PIPhoto &photo) const
{
    for (const HeldPicture &held : m_held) {
        if (const Image image = held.of(photo); !image.isNull())
            return image;
    }
    return photo.knownImage(m_imageCache);
}

void PhotosAhead::hold(const PIPhoto &photo, const HeldPicture &picture)
{
    m_held.removeIf([&](const HeldPicture &held) { return held.isFor(photo); });
    while (m_held.size() >= kMostHeld)
        m_held.removeFirst();
    m_held.append(picture);
}

/// Handles of photos that are not wanted any more go.
void PhotosAhead::holdOnly(const PhotoList &photos)
{
    m_held.removeIf([&](const HeldPicture &held) {
        return std::none_of(photos.begin(), photos.end(), [&](const auto &photo) { return held.isFor(*photo); });
    });
}

void PhotosAhead::prepare(const PhotoList &photos, const PictureRoom &room)
{
    const QList<std::shared_ptr<Job>> before = std::exchange(m_jobs, {});
    holdOnly(photos);
    for (const auto &photo : photos.first(std::min(photos.size(), kMost))) {
        if (room.isEmpty() || photo->isFileLost())
            continue;
        const auto same = std::find_if(before.begin(), before.end(), [&](const auto &job) {
            return job->isFor(*photo) && job->room == room && isStill(*photo, job->recipe);
        });
        if (same != before.end()) {
            m_jobs.append(*same);
            continue;
        }
        const Image known = knownImage(*photo);
        const PictureRecipe recipe = photo->recipe(m_imageCache);
        if (!known.isNull())
            hold(*photo, {photo, recipe, known});
        if (!isMade(known, room))
            start(std::make_shared<Job>(photo, recipe, known, room));
    }
    for (const auto &job : before)
        job->cancelled = !m_jobs.contains(job);
}

void PhotosAhead::start(const std::shared_ptr<Job> &job)
{
    m_jobs.append(job);
    m_queue.async([this, job] {
        job->begun = true;
        if (job->cancelled)
            return;
        // Cancelling happens on the main thread only, so what is not cancelled there has an owner to hand it to.
        runOnMain([this, job, result = run(*job)] {
            if (!job->cancelled)
                finish(job, result);
        });
    });
}

void PhotosAhead::cancel()
{
    for (const auto &job : std::exchange(m_jobs, {}))
        job->cancelled = true;
}

bool PhotosAhead::isUnderWay(const PIPhoto &photo) const
{
    return std::any_of(m_jobs.begin(), m_jobs.end(),
                       [&](const auto &job) { return job->begun && job->isFor(photo) && isStill(photo, job->recipe); });
}

// On a thread of the queue.
PhotosAhead::Result PhotosAhead::run(const Job &job)
{
    Result result;
    if (job.known.isNull())
        result.opened = job.recipe.open();
    result.request = fitted(job.known.isNull() ? result.opened.shown : job.known, job.room);
    if (!result.request.image.isNull())
        result.pixels = result.request.make(job.cancelled);
    return result;
}

void PhotosAhead::finish(const std::shared_ptr<Job> &job, const Result &result)
{
    m_jobs.removeOne(job);
    const auto photo = job->photo.lock();
    if (!photo)
        return;
    if (isStill(*photo, job->recipe)) {
        photo->takePicture(result.opened, m_imageCache);
        hold(*photo, {photo, job->recipe, result.request.image});
        if (result.pixels)
            m_pool.insert(result.request.key(), *result.pixels);
    }
    m_finished(*photo);
}
