#pragma once

#include "Decoder.h"
#include "Orientation.h"

/// A request translated to the picture as it is stored.
struct PixelPlan
{
    QRect storedPart;   ///< in pixels of the stored picture
    QSize storedTarget; ///< what that part is scaled to; never larger
};

[[nodiscard]] PixelPlan planPixels(const DecodeRequest &request, QSize shownSize, Orientation orientation);
