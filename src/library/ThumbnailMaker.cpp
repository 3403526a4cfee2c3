#include "ThumbnailMaker.h"

#include "Decoder.h"
#include "FileDates.h"
#include "LibraryNotifications.h"
#include "OpenFile.h"
#include "PIFileRef.h"
#include "PIPhoto.h"
#include "SaveImage.h"

#include <QFile>

namespace {

constexpr double kJpegCompression = 0.5;
// Every so many jobs the next one waits for all before it, so that no more than these run side by side.
constexpr quint64 kJobsPerRound = 10;

// Null unless the file is a whole picture of a thumbnail's size: anybody may have put it there.
QImage readThumbnail(const QString &path)
{
    const auto file = openRegularFile(path);
    constexpr qint64 mostBytes = 256 * 1024; // a thumbnail takes far less, and the main thread must not wait for more
    if (!file || file->size > mostBytes)
        return {};
    const auto header = Decoder::readHeader(file->descriptor.number(), path);
    const QSize box(ThumbnailMaker::kBoxSide, ThumbnailMaker::kBoxSide);
    if (!header || header->size.boundedTo(box) != header->size)
        return {};
    const auto image = Decoder::decode(file->descriptor.number(), path);
    return image && !image->damaged ? image->pixels : QImage();
}

}

struct ThumbnailMaker::Result
{
    QImage thumbnail; ///< null when none could be made
    quint64 date = 0;
    OpenedPicture picture; ///< what is shown is null when the effects failed
};

ThumbnailMaker::ThumbnailMaker(const QString &cacheFolder, ImageCache &imageCache, NotificationCenter &notifications)
    : m_cacheFolder(cacheFolder)
    , m_imageCache(imageCache)
    , m_notifications(notifications)
    , m_pool(PixelPool::standardBudget())
    , m_ended(std::make_shared<std::atomic<bool>>(false))
    , m_queue(QStringLiteral("hmphoto.thumbnail"), /*maxThreads=*/0, DispatchQueue::AtEnd::LeaveBehind)
{}

ThumbnailMaker::~ThumbnailMaker()
{
    *m_ended = true;
}

QImage ThumbnailMaker::thumbnail(PIPhoto &photo)
{
    QImage image = availableThumbnail(photo);
    if (!image.isNull())
        return image;
    if (!photo.isWaitingForThumbnail()) {
        photo.setWaitingForThumbnail(true);
        photo.setCropChanged(false);
        makeThumbnail(photo);
    }
    return m_placeholder;
}

QImage ThumbnailMaker::availableThumbnail(const PIPhoto &photo)
{
    if (photo.isCropChanged() || photo.isWaitingForThumbnail())
        return {};
    QImage image = m_pool.find(photo.guid());
    if (!image.isNull() || photo.thumbnailDate() == 0)
        return image;
    const QString path = thumbnailPath(photo);
    const auto date = FileDates::dateOf(path);
    if (!date || static_cast<double>(*date) != static_cast<double>(photo.thumbnailDate()))
        return {};
    image = readThumbnail(path);
    if (!image.isNull())
        m_pool.insert(photo.guid(), image);
    return image;
}

QString ThumbnailMaker::thumbnailPath(const PIPhoto &photo) const
{
    return m_cacheFolder + u'/' + photo.guid() + QLatin1String(".jpg");
}

void ThumbnailMaker::deleteThumbnail(const PIPhoto &photo)
{
    QFile::remove(thumbnailPath(photo));
}

void ThumbnailMaker::updateForFilters(PIPhoto &photo)
{
    m_imageCache.storeImage({}, photo.guid());
    m_pool.remove(photo.guid());
    // The old file must not be believed either, should the program end before the new one is made.
    photo.setThumbnailDate(0);
    photo.setCropChanged(true);
    // An earlier attempt that failed is no reason not to try again. While a job is under way its result will be
    // refused, and whoever shows the photo asks again then.
    if (!m_inFlight.contains(photo.guid()))
        photo.setWaitingForThumbnail(false);
}

void ThumbnailMaker::fileChanged(PIPhoto &photo)
{
    const bool wanted = photo.isWaitingForThumbnail() || !m_pool.find(photo.guid()).isNull();
    deleteThumbnail(photo);
    photo.setCropRect({});
    photo.setThumbnailDate(0);
    m_imageCache.storeImage({}, photo.guid());
    if (photo.fileRef())
        m_imageCache.storeImage({}, photo.fileRef()->guid());
    if (wanted)
        remake(photo);
}

void ThumbnailMaker::fileFound(PIPhoto &photo)
{
    if (photo.isWaitingForThumbnail()) // also while a job is under way, which may look at the former place
        updateForFilters(photo);
}

void ThumbnailMaker::remake(PIPhoto &photo)
{
    updateForFilters(photo);
    (void)thumbnail(photo);
}

void ThumbnailMaker::waitUntilIdle()
{
    m_queue.waitUntilIdle();
}

void ThumbnailMaker::makeThumbnail(PIPhoto &photo)
{
    if (const auto earlier = m_inFlight.find(photo.guid()); earlier != m_inFlight.end()) {
        *earlier = photo.weak_from_this();
        return;
    }
    if (photo.isFileLost())
        return;
    m_inFlight.insert(photo.guid(), {});
    if (++m_sequence % kJobsPerRound == 0)
        m_queue.barrierAsync([] {});
    m_queue.async([this, recipe = photo.recipe(m_imageCache), path = thumbnailPath(photo), guid = photo.guid(),
                   waiting = photo.weak_from_this(), ended = m_ended] {
        if (*ended)
            return;
        Result result = runJob(recipe, path, *ended);
        runOnMain([this, guid, waiting, ended, result = std::move(result)] {
            if (!*ended)
                finish(guid, waiting, result);
        });
    });
}

namespace {

bool writeThumbnail(const Image &image, const QString &path, const std::atomic<bool> &cancelled)
{
    const QSize size = CenterRectangle(image.size(), {ThumbnailMaker::kBoxSide, ThumbnailMaker::kBoxSide});
    SaveRequest request;
    request.path = path;
    request.type = SaveFileType::Jpeg;
    request.compression = kJpegCompression;
    request.embedProfile = false;
    request.flush = FileWriter::Flush::No; // it can be made again
    request.cancelled = &cancelled;
    return SaveImageCore(size.width(), size.height(), image, request);
}

}

// On a thread of the queue.
ThumbnailMaker::Result ThumbnailMaker::runJob(const PictureRecipe &recipe, const QString &thumbnailPath,
                                              const std::atomic<bool> &cancelled)
{
    Result result;
    result.picture = recipe.open();
    if (result.picture.file.isNull())
        return result;
    if (!writeThumbnail(result.picture.shown, thumbnailPath, cancelled)) {
        // Effects that yield nothing leave the picture as the file has it.
        result.picture.shown = Image();
        if (recipe.chain.isEmpty() || !writeThumbnail(result.picture.file, thumbnailPath, cancelled))
            return result;
    }
    if (const auto date = FileDates::dateOf(thumbnailPath)) {
        result.date = static_cast<quint64>(*date);
        result.thumbnail = readThumbnail(thumbnailPath);
    }
    return result;
}

void ThumbnailMaker::finish(const QString &guid, const std::weak_ptr<PIPhoto> &waiting, const Result &result)
{
    const auto next = m_inFlight.take(guid).lock();
    const auto photo = waiting.lock();
    if (photo && (next || photo->isCropChanged())) {
        // The photo is no longer what the job knew of it: whoever shows it asks again.
        photo->setWaitingForThumbnail(false);
        photo->setCropChanged(true);
        m_notifications.post(kThumbnailNotification, photo);
    } else if (photo && !result.thumbnail.isNull()) {
        install(photo, result);
    } else if (!photo && !next) {
        QFile::remove(m_cacheFolder + u'/' + guid + QLatin1String(".jpg"));
    }
    if (next)
        makeThumbnail(*next);
}

void ThumbnailMaker::install(const std::shared_ptr<PIPhoto> &photo, const Result &result)
{
    m_pool.insert(photo->guid(), result.thumbnail);
    photo->setThumbnailDate(result.date);
    photo->setWaitingForThumbnail(false);
    photo->takePicture(result.picture, m_imageCache);
    m_notifications.post(kThumbnailNotification, photo);
}
