#pragma once

#include "FilterValues.h"
#include "Plane.h"
#include "Sampling.h"

#include <algorithm>
#include <cmath>

/// What filters have in common that repeat a part of the picture.
namespace Tiles {

[[nodiscard]] inline double fraction(double x)
{
    return x - std::floor(x);
}

[[nodiscard]] inline double remainderOf(double x, double period)
{
    return x - period * std::floor(x / period);
}

/// Takes each pixel from where `fold` puts it; in widths, turned by the angle, about the centre.
template<typename Fold>
[[nodiscard]] bool addTiles(WorkingImage &image, const FilterValues &values, Fold fold)
{
    const QPointF center = values.point("inputCenter");
    const double angle = values.number("inputAngle");
    const double width = std::max(values.number("inputWidth"), values.scale());
    return Sampling::addMapped(image, image.size(), Sampling::Edge::Clear, [=](QPointF place) {
        return center + width * Plane::turned(fold(Plane::turned(place - center, -angle) / width), angle);
    });
}

}
