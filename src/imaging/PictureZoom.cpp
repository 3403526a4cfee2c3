#include "PictureZoom.h"

#include "FittedRect.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double kSame = 1e-6;
constexpr double kRounding = 0.1; ///< of sizes, which are whole numbers
/// The resolutions at which a zoomed picture is made; between them the painter scales down, by less than two.
constexpr double kLevels[] = {1.0 / 8, 1.0 / 4, 1.0 / 2, 1};
/// The edges of a part that is made, in pixels of the picture, so that small ways need nothing new.
constexpr int kGrid = 256;
/// What is made, by what is in sight, along a side: the first for which there are pixels enough.
constexpr double kMargins[] = {2, 1.5, 1.2, 1};

bool isSame(double a, double b)
{
    return std::abs(a / b - 1) < kSame;
}

QSize scaledUp(QSize size, double scale)
{
    return {int(std::ceil(size.width() * scale - kSame)), int(std::ceil(size.height() * scale - kSame))};
}

double pixelsOf(QSize size, double scale)
{
    return size.width() * scale * size.height() * scale;
}

double levelOf(const PictureZoom::Pixels &pixels)
{
    return double(pixels.size.width()) / pixels.part.width();
}

/// Larger by `margin`, and out to the grid.
QRect spread(const QRect &sight, double margin)
{
    const double across = sight.width() * (margin - 1) / 2;
    const double down = sight.height() * (margin - 1) / 2;
    const auto below = [](double at) { return int(std::floor(at / kGrid)) * kGrid; };
    const auto above = [](double at) { return int(std::ceil(at / kGrid)) * kGrid; };
    const QPoint topLeft(below(sight.x() - across), below(sight.y() - down));
    const QPoint end(above(sight.x() + sight.width() + across), above(sight.y() + sight.height() + down));
    return {topLeft, QSize(end.x() - topLeft.x(), end.y() - topLeft.y())};
}

/// Along one side: in the middle when there is room, else without a gap at either end.
double placed(double origin, double length, double start, double room)
{
    return length <= room ? start + (room - length) / 2 : std::clamp(origin, start + room - length, start);
}

}

void PictureZoom::setPicture(QSize picture)
{
    if (picture == m_picture)
        return;
    m_picture = picture;
    fit();
}

void PictureZoom::setArea(const QRect &area, double pixelRatio)
{
    if (area == m_viewArea && pixelRatio == m_ratio)
        return;
    const QPointF before = middle();
    m_viewArea = area;
    m_ratio = pixelRatio;
    m_area = QRect((QPointF(area.topLeft()) * pixelRatio).toPoint(),
                   QSize(int(area.width() * pixelRatio), int(area.height() * pixelRatio)));
    if (m_zoomed)
        moveTo(m_zoomed->scale, m_zoomed->origin + middle() - before);
}

QRect PictureZoom::fittedRect() const
{
    return fittedDeviceRect(m_picture, m_viewArea.size(), m_ratio).translated(m_area.topLeft());
}

/// The longer side tells it better: each was rounded.
double PictureZoom::fittedScale() const
{
    const QSize fitted = fittedRect().size();
    if (fitted.isEmpty())
        return 0;
    return m_picture.width() > m_picture.height() ? double(fitted.width()) / m_picture.width()
                                                  : double(fitted.height()) / m_picture.height();
}

double PictureZoom::leastScale() const
{
    return std::min(fittedScale(), 1.0);
}

double PictureZoom::scale() const
{
    return m_zoomed ? m_zoomed->scale : fittedScale();
}

QPointF PictureZoom::origin() const
{
    return m_zoomed ? m_zoomed->origin : QPointF(fittedRect().topLeft());
}

QRect PictureZoom::place() const
{
    if (!m_zoomed)
        return fittedRect();
    const QSizeF size = QSizeF(m_picture) * m_zoomed->scale;
    return {m_zoomed->origin.toPoint(), size.toSize().expandedTo({1, 1})};
}

bool PictureZoom::canPan() const
{
    return m_zoomed && (place().width() > m_area.width() || place().height() > m_area.height());
}

void PictureZoom::moveTo(double scale, QPointF origin)
{
    if (fittedScale() <= 0 || isSame(scale, fittedScale()) || scale < leastScale()) {
        fit();
        return;
    }
    const QSizeF size = QSizeF(m_picture) * scale;
    m_zoomed = {scale,
                {placed(origin.x(), size.width(), m_area.x(), m_area.width()),
                 placed(origin.y(), size.height(), m_area.y(), m_area.height())}};
}

void PictureZoom::zoomTo(double scale, QPointF about)
{
    const double before = this->scale();
    if (before <= 0)
        return;
    const double after = std::clamp(scale, leastScale(), std::max(kMostScale, fittedScale()));
    moveTo(after, about - (about - origin()) * (after / before));
}

void PictureZoom::zoomBy(double factor, QPointF about)
{
    const double from = scale();
    double to = from * factor;
    for (const double stop : {fittedScale(), 1.0}) {
        if (!isSame(stop, from) && std::min(from, to) < stop && stop < std::max(from, to))
            to = stop;
    }
    zoomTo(to, about);
}

void PictureZoom::panBy(QPointF way)
{
    if (m_zoomed)
        moveTo(m_zoomed->scale, m_zoomed->origin + way);
}

QRect PictureZoom::partInSight() const
{
    const double by = scale();
    if (by <= 0)
        return {};
    const QRectF sight(QPointF(m_area.topLeft() - place().topLeft()) / by, QSizeF(m_area.size()) / by);
    return sight.toAlignedRect() & QRect(QPoint(), m_picture);
}

PictureZoom::Pixels PictureZoom::wanted(qint64 mostPixels, Make make) const
{
    const QRect whole(QPoint(), m_picture);
    const QRect sight = partInSight();
    const auto most = double(mostPixels);
    const QRect needed = make == Make::Parts ? sight : whole;
    double level = *std::find_if(std::begin(kLevels), std::end(kLevels) - 1,
                                 [this](double each) { return each >= scale() * (1 - kSame); });
    while (pixelsOf(needed.size(), level) > most)
        level /= 2;
    if (make == Make::Whole || pixelsOf(whole.size(), level) <= most)
        return {whole, scaledUp(whole.size(), level)};

    for (const double margin : kMargins) {
        const QRect part = spread(sight, margin) & whole;
        const QSize size = scaledUp(part.size(), level);
        if (qint64(size.width()) * size.height() <= mostPixels)
            return {part, size};
    }
    return {sight, scaledUp(sight.size(), level)};
}

bool PictureZoom::isServedBy(const Pixels &pixels, const Pixels &wanted) const
{
    if (pixels.part.isEmpty() || wanted.part.isEmpty() || !pixels.part.contains(partInSight()))
        return false;
    return std::abs(levelOf(pixels) / levelOf(wanted) - 1) < kRounding;
}

bool PictureZoom::isCoarse(const Pixels &pixels) const
{
    return !pixels.part.isEmpty() && levelOf(pixels) < std::min(scale(), 1.0) * (1 - kRounding);
}

QRectF PictureZoom::placeOf(const QRect &part) const
{
    const QRect whole = place();
    const double across = double(whole.width()) / m_picture.width();
    const double down = double(whole.height()) / m_picture.height();
    return {whole.x() + part.x() * across, whole.y() + part.y() * down, part.width() * across, part.height() * down};
}
