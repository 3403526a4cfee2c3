#pragma once

#include <QRect>
#include <QSize>

/// Where a picture stands in a view when it is fitted and centred, in the screen's own pixels, so that a rendering of
/// exactly this size is painted without resampling. A picture is never enlarged beyond one of its pixels per unit of
/// the view's coordinates. Empty when either size is. `viewSize` is in the view's coordinates.
[[nodiscard]] QRect fittedDeviceRect(QSize picture, QSize viewSize, qreal devicePixelRatio);
