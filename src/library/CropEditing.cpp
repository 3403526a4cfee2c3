#include "CropEditing.h"

#include "Image.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

/// Around the crop lies a band of this width that takes hold of its edges, in view units.
constexpr double kBand = 9;
/// So much of each end of the band is a corner.
constexpr double kCorner = 27;
/// Makes a preset larger than any picture, so that it is always shrunk to fit.
constexpr double kLargerThanPictures = 10000;

/// The edges at the right and at the bottom do not belong to it.
bool isInside(const QRectF &rect, QPointF point)
{
    return point.x() >= rect.x() && point.x() < rect.x() + rect.width() && point.y() >= rect.y() &&
           point.y() < rect.y() + rect.height();
}

/// Edges between pixels can come closer than one.
bool hasPixel(const QRectF &rect)
{
    return std::min(rect.width(), rect.height()) >= 1;
}

}

void CropEditing::start(const QRectF &storedCrop, QSizeF pictureSize, CropSize preset)
{
    const QRectF picture(QPointF(), pictureSize);
    m_size = pictureSize;
    m_preset = preset;
    m_trackZone = CropZone::kNone;
    m_cropRect = storedCrop.isEmpty() ? QRectF() : storedCrop & picture;
    if (!m_cropRect.isEmpty()) {
        m_portrait = m_cropRect.width() < m_cropRect.height();
    } else if (isFree()) {
        m_cropRect = picture;
    } else {
        m_portrait = m_size.width() < m_size.height();
        m_cropRect = largestOfShape();
    }
}

QRectF CropEditing::largestOfShape() const
{
    QSizeF shape(m_preset.width, m_preset.height);
    if (m_portrait)
        shape.transpose();
    return CenterRectangle(shape * kLargerThanPictures, QRectF(QPointF(), m_size));
}

bool CropEditing::rotateCrop()
{
    if (isFree())
        return false;
    m_portrait = !m_portrait;
    m_cropRect = largestOfShape();
    return true;
}

CropEditing::Grip CropEditing::gripAt(QPointF point, const CropFrame &frame) const
{
    const QRectF crop = frame.toView(m_cropRect);
    const QRectF band = crop.adjusted(-kBand, -kBand, kBand, kBand);
    if (isInside(crop, point))
        return m_cropRect.size() == m_size ? Grip() : Grip{CropZone::kMove, point - crop.topLeft()};
    if (!isInside(band, point))
        return {};
    Grip grip;
    if (point.y() <= band.y() + kCorner)
        grip = {CropZone::kTop, {0, point.y() - crop.y()}};
    else if (point.y() >= band.y() + band.height() - kCorner)
        grip = {CropZone::kBottom, {0, point.y() - (crop.y() + crop.height())}};
    else
        grip = {CropZone::kMiddleY, {}};
    if (point.x() <= band.x() + kCorner) {
        grip.zone |= CropZone::kLeft;
        grip.offset.setX(point.x() - crop.x());
    } else if (point.x() < band.x() + band.width() - kCorner) {
        grip.zone |= CropZone::kMiddleX;
    } else {
        grip.zone |= CropZone::kRight;
        grip.offset.setX(point.x() - (crop.x() + crop.width()));
    }
    return grip;
}

void CropEditing::mouseDown(QPointF point, const CropFrame &frame)
{
    const Grip grip = gripAt(point, frame);
    m_trackZone = grip.zone;
    m_dragOffset = grip.offset;
}

bool CropEditing::mouseUp()
{
    return std::exchange(m_trackZone, CropZone::kNone) != CropZone::kNone;
}

bool CropEditing::mouseDragged(QPointF point, const CropFrame &frame)
{
    if (m_trackZone == CropZone::kNone)
        return false;
    const QPointF exact = (point - m_dragOffset - frame.origin) / frame.scale;
    const auto pixel = [](double at, double last) {
        return std::clamp<double>(std::floor(static_cast<float>(at)), 0, last);
    };
    const QPointF pointed(pixel(exact.x(), m_size.width()), pixel(exact.y(), m_size.height()));
    QRectF rect = m_trackZone == CropZone::kMove ? movedTo(pointed) : resizedTo(pointed);
    const bool isHeld = m_trackZone != CropZone::kMove && !isFree();
    if (isHeld && !(enforceCropAspect(rect, QRectF(QPointF(), m_size)) && hasPixel(rect)))
        return false;
    return std::exchange(m_cropRect, rect) != rect;
}

QRectF CropEditing::movedTo(QPointF origin) const
{
    const QSizeF room = m_size - m_cropRect.size();
    return {QPointF(std::min(origin.x(), room.width()), std::min(origin.y(), room.height())), m_cropRect.size()};
}

namespace {

/// The rectangle along one axis.
struct Span
{
    double at;
    double length;

    void dragEnd(double to, double extent) { length = std::clamp(to - at, 1.0, extent); }
    void dragStart(double to, double extent)
    {
        const double before = std::exchange(at, std::min(to, extent - 1));
        length += before - at;
    }
    /// A start that was dragged beyond the end stops before it.
    void keepOnePixel()
    {
        if (length < 1)
            at -= 1 - std::exchange(length, 1);
    }
};

}

QRectF CropEditing::resizedTo(QPointF corner) const
{
    Span across{m_cropRect.x(), m_cropRect.width()};
    Span down{m_cropRect.y(), m_cropRect.height()};
    if (m_trackZone & CropZone::kBottom)
        down.dragEnd(corner.y(), m_size.height());
    if (m_trackZone & CropZone::kTop)
        down.dragStart(corner.y(), m_size.height());
    if (m_trackZone & CropZone::kRight)
        across.dragEnd(corner.x(), m_size.width());
    if (m_trackZone & CropZone::kLeft)
        across.dragStart(corner.x(), m_size.width());
    if (isFree()) { // else such a step is dropped
        across.keepOnePixel();
        down.keepOnePixel();
    }
    return {across.at, down.at, across.length, down.length};
}

/// Gives the rectangle that was just dragged the preset's shape and keeps it in the picture. False when it is empty
/// along the axis that leads.
bool CropEditing::enforceCropAspect(QRectF &rect, const QRectF &imageRect) const
{
    return m_trackZone & CropZone::kMiddleX ? followHeight(rect, imageRect) : followWidth(rect, imageRect);
}

bool CropEditing::followHeight(QRectF &rect, const QRectF &imageRect) const
{
    if (rect.height() <= 0)
        return false;
    const double ratio = m_portrait ? m_preset.height / m_preset.width : m_preset.width / m_preset.height;
    const double x = rect.x();
    double y = rect.y();
    double height = rect.height();
    double width = ratio * height;
    if (x + width > imageRect.right()) {
        width = imageRect.right() - x;
        const double before = std::exchange(height, width / ratio);
        if (m_trackZone & CropZone::kTop)
            y += before - height;
    } else if (y + height > imageRect.bottom()) {
        height = imageRect.bottom() - y;
        width = ratio * height;
    }
    rect = {x, y, width, height};
    return true;
}

bool CropEditing::followWidth(QRectF &rect, const QRectF &imageRect) const
{
    if (rect.width() <= 0)
        return false;
    const double ratio = m_portrait ? m_preset.width / m_preset.height : m_preset.height / m_preset.width;
    double x = rect.x();
    double y = rect.y();
    double width = rect.width();
    double height = ratio * width;
    if (m_trackZone & CropZone::kTop)
        y += rect.height() - height;
    y = std::max(y, imageRect.y());
    if (y + height > imageRect.bottom()) {
        height = imageRect.bottom() - y;
        const double before = std::exchange(width, height / ratio);
        if (m_trackZone & CropZone::kLeft)
            x += before - width;
    }
    rect = {x, y, width, height};
    return true;
}
