#pragma once

#include "WorkingImage.h"

#include <functional>

/// Steps that fetch pixels from elsewhere. Places count from the left bottom corner, to the middle of pixels.
namespace Sampling {

enum class Edge {
    Clamp, ///< beyond the edges the nearest pixel repeats
    Clear, ///< beyond the edges is nothing
};

/// How what lies between pixels is found.
enum class Between { Linear, Cubic };

/// Where in the image before it a pixel comes from.
using Map = std::function<QPointF(QPointF)>;

/// Adds a step that makes an image of that size.
[[nodiscard]] bool addMapped(WorkingImage &image, QSize size, Edge edge, const Map &map,
                             Between between = Between::Linear);

/// Several places for each pixel, all of the same weight, appended to a list.
using Spread = std::function<void(QPointF place, std::vector<QPointF> &from)>;
[[nodiscard]] bool addSpread(WorkingImage &image, Edge edge, const Spread &spread);

}
