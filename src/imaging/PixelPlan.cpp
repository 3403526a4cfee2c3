#include "PixelPlan.h"

PixelPlan planPixels(const DecodeRequest &request, QSize shownSize, Orientation orientation)
{
    const QRect whole(QPoint(), shownSize);
    const QRect asked = request.region.intersected(whole);
    const QRect part = asked.isEmpty() ? whole : asked;
    const QSize target =
        request.size.isEmpty() ? part.size() : request.size.boundedTo(part.size()).expandedTo(QSize(1, 1));
    return {orientation.toStored(part, shownSize), orientation.turned(target)};
}
