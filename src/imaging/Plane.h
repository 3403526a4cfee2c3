#pragma once

#include <QPointF>

#include <cmath>

/// Points as vectors, y upward.
namespace Plane {

[[nodiscard]] inline double length(QPointF vector)
{
    return std::sqrt(QPointF::dotProduct(vector, vector));
}

/// Counterclockwise.
[[nodiscard]] inline QPointF turned(QPointF vector, double angle)
{
    const double cosine = std::cos(angle);
    const double sine = std::sin(angle);
    return {cosine * vector.x() - sine * vector.y(), sine * vector.x() + cosine * vector.y()};
}

/// A place outside every picture.
[[nodiscard]] inline QPointF nowhere()
{
    return {-1e9, -1e9};
}

}
