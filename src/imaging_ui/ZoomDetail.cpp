#include "ZoomDetail.h"

#include <QPainter>

#include <utility>

namespace {

/// Of the pool that holds all decoded pixels.
constexpr qint64 kShareOfPool = 4;
constexpr qint64 kBytesPerPixel = 4;
/// From here on the picture's own pixels are what there is to see.
constexpr double kShowsPixels = 3;

}

ZoomDetail::ZoomDetail(PixelPool &pool, std::function<void()> arrived)
    : m_renderer(pool)
    , m_arrived(std::move(arrived))
    , m_mostPixels(pool.budget() / kShareOfPool / kBytesPerPixel)
{}

void ZoomDetail::clear()
{
    stopPending();
    m_shown = {};
    m_pixels = {};
    m_isComplete = false;
}

/// What comes late would replace what is wanted now.
void ZoomDetail::stopPending()
{
    m_renderer.cancel();
    m_pending = {};
}

void ZoomDetail::follow(const Image &image, const PictureZoom &zoom, PictureZoom::Make make)
{
    if (zoom.isFitted() || image.isNull())
        return clear();
    if (!m_shown.image.isSameAs(image))
        clear();
    const PictureZoom::Pixels wanted = zoom.wanted(m_mostPixels, make);
    m_isComplete = zoom.isServedBy({m_shown.part, m_shown.size}, wanted);
    if (m_isComplete)
        return stopPending();
    if (zoom.isServedBy({m_pending.part, m_pending.size}, wanted))
        return;
    stopPending();
    const PixelRequest request{image, wanted.size, wanted.part};
    if (request.isSameAs(m_refused))
        return;
    const QImage made = m_renderer.find(request);
    if (!made.isNull())
        return take(request, made);
    m_pending = request;
    m_renderer.render(request, [this, request](const std::optional<QImage> &pixels) {
        m_pending = {};
        if (pixels)
            take(request, *pixels);
        else
            m_refused = request;
        m_arrived();
    });
}

void ZoomDetail::take(const PixelRequest &request, const QImage &pixels)
{
    m_shown = request;
    m_pixels = pixels;
    m_isComplete = true;
}

bool ZoomDetail::isCoarse(const PictureZoom &zoom) const
{
    return m_isComplete && zoom.isCoarse({m_shown.part, m_shown.size});
}

void ZoomDetail::paint(QPainter &painter, const PictureZoom &zoom, double pixelRatio) const
{
    if (m_pixels.isNull())
        return;
    const QRectF place = zoom.placeOf(m_shown.part);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, zoom.scale() < kShowsPixels);
    painter.drawImage(QRectF(place.topLeft() / pixelRatio, place.size() / pixelRatio), m_pixels,
                      QRectF(m_pixels.rect()));
}
