#include "CropOverlay.h"

#include <QPaintDevice>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace {

const QColor kShade(0, 0, 0, 150);
const QColor kDark(0, 0, 0, 130);
const QColor kLight(255, 255, 255, 235);
const QColor kFaintDark(0, 0, 0, 60);
const QColor kFaintLight(255, 255, 255, 130);
constexpr double kHandleWidth = 5;
constexpr double kHandleLength = 20;
constexpr double kHandleGap = 1; ///< between the crop and its handles

/// To the screen's own pixels, so that lines are sharp.
QRectF onPixels(const QRectF &rect, double ratio)
{
    const QRectF device(rect.topLeft() * ratio, rect.size() * ratio);
    const QRect whole = QRectF(device.topLeft().toPoint(), device.bottomRight().toPoint()).toRect();
    return {QPointF(whole.topLeft()) / ratio, QSizeF(whole.size()) / ratio};
}

/// Lines one pixel of the screen wide, legible on light and dark.
void paintThirds(QPainter &painter, const QRectF &crop, double pixel)
{
    for (const int third : {1, 2}) {
        const QRectF down(crop.x() + third * crop.width() / 3, crop.y(), pixel, crop.height());
        const QRectF across(crop.x(), crop.y() + third * crop.height() / 3, crop.width(), pixel);
        for (const QRectF &line : {down, across}) {
            painter.fillRect(onPixels(line.translated(pixel, pixel), 1 / pixel), kFaintDark);
            painter.fillRect(onPixels(line, 1 / pixel), kFaintLight);
        }
    }
}

void paintFrame(QPainter &painter, const QRectF &crop, double pixel)
{
    QPainterPath frame;
    frame.addRect(crop.adjusted(-pixel, -pixel, pixel, pixel));
    frame.addRect(crop);
    painter.fillPath(frame, kLight);
}

/// A bar along each edge and an angle around each corner; what has no room is left out.
QPainterPath handles(const QRectF &crop)
{
    const QRectF inner = crop.adjusted(-kHandleGap, -kHandleGap, kHandleGap, kHandleGap);
    const QRectF outer = inner.adjusted(-kHandleWidth, -kHandleWidth, kHandleWidth, kHandleWidth);
    QPainterPath ring;
    ring.addRect(outer);
    ring.addRect(inner);
    const double across = std::min(kHandleLength, outer.width() / 3);
    const double down = std::min(kHandleLength, outer.height() / 3);
    QPainterPath kept;
    for (const double x : {outer.left(), outer.right() - across}) {
        for (const double y : {outer.top(), outer.bottom() - down})
            kept.addRect(QRectF(x, y, across, down));
    }
    if (outer.width() > 5 * kHandleLength)
        kept.addRect(QRectF(outer.center().x() - across / 2, outer.top(), across, outer.height()));
    if (outer.height() > 5 * kHandleLength)
        kept.addRect(QRectF(outer.left(), outer.center().y() - down / 2, outer.width(), down));
    return ring & kept;
}

}

void paintCropOverlay(QPainter &painter, const QRectF &picture, const QRectF &crop)
{
    const double ratio = painter.device()->devicePixelRatioF();
    const QRectF place = onPixels(crop, ratio);
    QPainterPath cutAway;
    cutAway.addRect(picture);
    cutAway.addRect(place & picture);
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.fillPath(cutAway, kShade);
    paintThirds(painter, place, 1 / ratio);
    paintFrame(painter, place, 1 / ratio);

    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(kDark, 1));
    painter.setBrush(kLight);
    painter.drawPath(handles(place));
}
