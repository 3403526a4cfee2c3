#pragma once

#include <QRect>
#include <QSize>

/// The room that a view has for a picture.
struct PictureRoom
{
    QSize size; ///< in the view's coordinates
    double pixelRatio = 1;

    [[nodiscard]] bool isEmpty() const { return size.isEmpty(); }
    friend bool operator==(const PictureRoom &, const PictureRoom &) = default;
};

/// Where a picture stands in a view when it is fitted and centred, in the screen's own pixels, so that a rendering of
/// exactly this size is painted without resampling. A picture is never enlarged beyond one of its pixels per unit of
/// the view's coordinates. Empty when either size is. `viewSize` is in the view's coordinates.
[[nodiscard]] QRect fittedDeviceRect(QSize picture, QSize viewSize, qreal devicePixelRatio);

/// The pixels to make of a picture that is fitted; never more than it has.
[[nodiscard]] QSize fittedPixels(QSize picture, const PictureRoom &room);
