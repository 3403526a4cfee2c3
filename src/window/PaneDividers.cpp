#include "PaneDividers.h"

#include <algorithm>

PaneDividers PaneDividers::fitted(int width, int thickness) const
{
    PaneDividers result = *this;
    result.outline = std::clamp(outline, kMinOutline, kMaxOutline);
    const int origin = result.outline + thickness;
    const int last = std::min(width - kMinDetail, origin + kMaxThumbnails);
    result.thumbnails = std::max(std::min(thumbnails, last), origin + kMinThumbnails);
    return result;
}

QList<int> PaneDividers::sizes(int width, int thickness) const
{
    return {outline, thumbnails - outline - thickness, width - thumbnails - thickness};
}

QList<int> PaneDividers::sizesWithoutDetail(int width, int thickness) const
{
    return {outline, width - outline - thickness};
}
