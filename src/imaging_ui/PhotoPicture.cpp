#include "PhotoPicture.h"

#include "PIPhoto.h"
#include "ThumbnailMaker.h"

#include <QFileInfo>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

/// A thumbnail at its largest is one of a larger picture, of unknown size.
constexpr int kMostEnlarged = 100;

}

PhotoPicture::PhotoPicture(ThumbnailMaker &thumbnails, ImageCache &imageCache, PixelPool &pool, Room room)
    : m_thumbnails(thumbnails)
    , m_imageCache(imageCache)
    , m_room(std::move(room))
    , m_renderer(pool)
    , m_ahead(imageCache, pool, [this](const PIPhoto &photo) { wasPrepared(photo); })
{}

void PhotoPicture::setPhoto(const std::shared_ptr<PIPhoto> &photo, const PhotosAhead::PhotoList &ahead)
{
    m_next = ahead;
    if (photo != m_photo) {
        cancelRendering();
        if (m_photo && m_extent == Extent::AsEdited)
            m_ahead.hold(*m_photo, m_held);
        m_held = {};
        m_image = {};
        m_isOpenedAgain = false;
        m_pixels = {};
        m_state = State::Empty;
    }
    m_photo = photo;
    reload();
}

void PhotoPicture::setExtent(Extent extent)
{
    if (std::exchange(m_extent, extent) == extent)
        return;
    m_pixels = {}; // is of another part, though its shape may be the same
    m_held = {};
    reload();
}

/// What was shown stays as long as it holds: under another handle its pixels would be made again.
Image PhotoPicture::knownImage() const
{
    if (const Image held = m_held.of(*m_photo); !held.isNull())
        return held;
    return m_extent == Extent::WholeFile ? m_photo->knownFileImage(m_imageCache) : m_ahead.knownImage(*m_photo);
}

void PhotoPicture::setImage(const Image &image)
{
    m_image = image;
    if (!image.isNull())
        m_held = {m_photo, m_photo->recipe(m_imageCache), image};
}

void PhotoPicture::reload()
{
    const bool present = m_photo && !m_photo->isFileLost();
    const Image before = m_image;
    setImage(present ? knownImage() : Image());
    if (!present)
        return showFailure(m_photo ? State::Missing : State::Empty);
    if (m_image.isNull())
        return openFile();
    if (!m_image.isSameAs(before) || m_pixels.isNull())
        showPreview();
    renderSharp();
}

void PhotoPicture::roomChanged()
{
    if (m_photo && m_image.isNull())
        reload();
    else
        renderSharp();
}

/// What there is at once, laid where the sharp picture will be. A thumbnail is of the photo as it is edited.
void PhotoPicture::showPreview()
{
    const bool isEdited = !m_photo->cropRect().isEmpty() || !m_photo->filterDicts().isEmpty();
    const bool hasThumbnail = m_extent == Extent::AsEdited || !isEdited;
    const QImage thumbnail = hasThumbnail ? m_thumbnails.availableThumbnail(*m_photo) : QImage();
    if (!thumbnail.isNull() || !hasPixelsOfSameShape())
        m_pixels = thumbnail;
    setState(State::Preview);
}

/// What is shown may stay until what comes after an edit is there, unless it would be drawn out of shape.
bool PhotoPicture::hasPixelsOfSameShape() const
{
    const QSizeF before = m_pixels.size();
    const QSizeF now = m_image.isNull() ? before : QSizeF(m_image.size());
    constexpr double kTolerance = 0.01;
    return !before.isEmpty() &&
           std::abs(before.width() * now.height() / (before.height() * now.width()) - 1) < kTolerance;
}

void PhotoPicture::setPreview(const QImage &preview)
{
    if (m_state != State::Preview)
        return;
    m_pixels = preview;
    setState(State::Preview);
}

/// Until the file is open, the picture takes the shape that the photo and its thumbnail tell of.
void PhotoPicture::openFile()
{
    if (m_state != State::Missing && m_state != State::Unreadable)
        showPreview(); // else the message stands until something better comes
    if (m_room().isEmpty())
        return cancelRendering(); // done when there is some
    if (isBeingPrepared())
        return;
    if (m_photo->isFileLost())
        return showFailure(State::Missing);
    cancelRendering();
    m_ahead.cancel(); // what is wanted now has the processors for itself
    m_renderer.run([this, recipe = m_photo->recipe(m_imageCache), needsPreview = m_pixels.isNull(),
                    isWhole = m_extent == Extent::WholeFile](const std::atomic<bool> &) -> std::function<void()> {
        const OpenedPicture picture = recipe.open();
        const Image &image = isWhole ? picture.file : picture.shown;
        const QImage embedded = needsPreview ? image.embeddedThumbnail() : QImage();
        const State failure = image.isNull() ? failureOf(recipe.path) : State::Unreadable;
        return [this, picture, embedded, failure] { fileOpened(picture, embedded, failure); };
    });
}

void PhotoPicture::fileOpened(const OpenedPicture &picture, const QImage &embedded, State failure)
{
    m_photo->takePicture(picture, m_imageCache);
    setImage(m_extent == Extent::WholeFile ? picture.file : picture.shown);
    if (m_image.isNull())
        return showFailure(failure);
    if (m_pixels.isNull())
        m_pixels = embedded;
    setState(State::Preview);
    renderSharp();
}

void PhotoPicture::cancelRendering()
{
    m_renderer.cancel();
    m_rendering = {};
}

void PhotoPicture::renderSharp()
{
    const PictureRoom room = m_room();
    const PixelRequest wanted{m_image, fittedPixels(m_image.size(), room)};
    if (m_image.isNull() || wanted.size.isEmpty())
        return;
    if (m_state == State::Sharp && m_pixels.size() == wanted.size)
        return prepareAhead();
    const QImage made = m_renderer.find(wanted);
    if (!made.isNull()) {
        cancelRendering();
        sharpArrived(made);
        return;
    }
    if (m_rendering.isSameAs(wanted) || isBeingPrepared())
        return;
    m_rendering = wanted;
    m_ahead.cancel();
    m_renderer.render(wanted, [this](const auto &pixels) { sharpArrived(pixels); });
}

void PhotoPicture::sharpArrived(const std::optional<QImage> &pixels)
{
    m_rendering = {};
    if (!pixels)
        return renderingFailed();
    m_isOpenedAgain = false;
    m_pixels = *pixels;
    setState(State::Sharp);
    prepareAhead();
}

/// A file that is written anew gives no pixels to the handle from before, and is no damaged one. Which of them it is
/// takes a look at the file.
void PhotoPicture::renderingFailed()
{
    m_renderer.run([this, image = std::exchange(m_image, {}),
                    path = m_photo->fileRef()->path()](const std::atomic<bool> &) -> std::function<void()> {
        const bool isAnother = !image.isCurrent();
        return [this, isAnother, failure = failureOf(path)] {
            if (isAnother && !std::exchange(m_isOpenedAgain, true))
                openFile();
            else
                showFailure(failure);
        };
    });
    m_held = {};
}

/// On any thread but the main one: the disk may not answer.
PhotoPicture::State PhotoPicture::failureOf(const QString &path)
{
    return QFileInfo::exists(path) ? State::Unreadable : State::Missing;
}

void PhotoPicture::showFailure(State failure)
{
    cancelRendering();
    m_pixels = {};
    setState(failure);
    prepareAhead();
}

void PhotoPicture::setState(State state)
{
    m_state = state;
    Q_EMIT stateChanged();
}

/// Only when nothing keeps the processors busy that is wanted now.
void PhotoPicture::prepareAhead()
{
    if (m_photo && m_state != State::Preview && !m_room().isEmpty())
        m_ahead.prepare(m_next, m_room());
}

/// Whether the photo on show was reached while its picture was being made in advance: that work goes on.
bool PhotoPicture::isBeingPrepared() const
{
    return m_extent == Extent::AsEdited && m_ahead.isUnderWay(*m_photo);
}

void PhotoPicture::wasPrepared(const PIPhoto &photo)
{
    if (m_photo.get() == &photo && m_state != State::Sharp)
        reload();
}

QSize PhotoPicture::size() const
{
    if (!m_image.isNull() || !m_photo || m_pixels.isNull())
        return m_image.size();
    if (m_extent == Extent::AsEdited && !m_photo->cropRect().isEmpty())
        return m_photo->cropRect().toRect().size();
    const QSizeF known = m_photo->fileRef() ? m_photo->fileRef()->knownPhotoSize() : QSizeF();
    if (!known.isEmpty())
        return known.toSize();
    const QSize thumbnail = m_pixels.size();
    const bool isWhole = std::max(thumbnail.width(), thumbnail.height()) < ThumbnailMaker::kBoxSide;
    return isWhole ? thumbnail : thumbnail * kMostEnlarged;
}
