#include "FittedRect.h"

#include <QtMath>

#include <algorithm>

QRect fittedDeviceRect(QSize picture, QSize viewSize, qreal devicePixelRatio)
{
    const QSize view(qFloor(viewSize.width() * devicePixelRatio), qFloor(viewSize.height() * devicePixelRatio));
    if (picture.isEmpty() || view.isEmpty())
        return {};
    const double scale = std::min(
        {double(view.width()) / picture.width(), double(view.height()) / picture.height(), double(devicePixelRatio)});
    const QSize size(std::clamp(qRound(picture.width() * scale), 1, view.width()),
                     std::clamp(qRound(picture.height() * scale), 1, view.height()));
    return {QPoint((view.width() - size.width()) / 2, (view.height() - size.height()) / 2), size};
}

QSize fittedPixels(QSize picture, const PictureRoom &room)
{
    return fittedDeviceRect(picture, room.size, room.pixelRatio).size().boundedTo(picture);
}
