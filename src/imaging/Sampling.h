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

/// Replaces places in the new image by those that its pixels come from.
using MapRow = std::function<void(QPointF *places, int count)>;
[[nodiscard]] bool addMappedRows(WorkingImage &image, QSize size, Edge edge, const MapRow &map,
                                 Between between = Between::Linear);

/// Adds a step that makes an image of that size; `map(place)` tells where in the image before it a pixel comes from.
template<typename Map>
[[nodiscard]] bool addMapped(WorkingImage &image, QSize size, Edge edge, Map map, Between between = Between::Linear)
{
    const auto mapRow = [map](QPointF *places, int count) {
        for (int i = 0; i < count; ++i)
            places[i] = map(places[i]);
    };
    return addMappedRows(image, size, edge, mapRow, between);
}

/// Several places for each pixel, all of the same weight, appended to a list.
using Spread = std::function<void(QPointF place, std::vector<QPointF> &from)>;
[[nodiscard]] bool addSpread(WorkingImage &image, Edge edge, const Spread &spread);

}
