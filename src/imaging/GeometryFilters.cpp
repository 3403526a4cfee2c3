#include "FilterValues.h"
#include "Plane.h"
#include "Sampling.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

using Plane::turned;

bool straightenFilter(WorkingImage &image, const FilterValues &values)
{
    const double angle = values.number("inputAngle");
    const double width = image.size().width();
    const double height = image.size().height();
    const QPointF middle(width / 2, height / 2);
    const double enlarged =
        std::abs(std::cos(angle)) + std::abs(std::sin(angle)) * std::max(width / height, height / width);
    return Sampling::addMapped(
        image, image.size(), Sampling::Edge::Clamp,
        [=](QPointF place) { return middle + turned(place - middle, -angle) / enlarged; }, Sampling::Between::Cubic);
}

using Vector = std::array<double, 3>;

// Turns two of the three coordinates.
Vector turnedIn(Vector v, size_t first, size_t second, double angle)
{
    const QPointF turnedPair = turned(QPointF(v[first], v[second]), angle);
    v[first] = turnedPair.x();
    v[second] = turnedPair.y();
    return v;
}

bool perspectiveRotate(WorkingImage &image, const FilterValues &values)
{
    constexpr double filmDiagonal = 43.27; // in millimetres
    const double pitch = values.number("inputPitch");
    const double yaw = values.number("inputYaw");
    const double roll = values.number("inputRoll");
    const QPointF middle(image.size().width() / 2.0, image.size().height() / 2.0);
    const double focus = std::max(values.number("inputFocalLength"), 1.0) * 2 * Plane::length(middle) / filmDiagonal;
    return Sampling::addMapped(image, image.size(), Sampling::Edge::Clear, [=](QPointF place) {
        const QPointF apart = (place - middle) / focus;
        // Back through the turns about the axes that lead out of, up in, and across the picture.
        Vector ray{apart.x(), apart.y(), 1};
        ray = turnedIn(ray, 0, 1, -roll);
        ray = turnedIn(ray, 2, 0, -yaw);
        ray = turnedIn(ray, 1, 2, -pitch);
        return ray[2] > 1e-6 ? middle + QPointF(ray[0], ray[1]) * (focus / ray[2]) : Plane::nowhere();
    });
}

const FilterTable kFilters{
    {"CIStraightenFilter",
     QT_TRANSLATE_NOOP("FilterLibrary", "Straighten"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Rotates the picture and enlarges it just enough to fill its frame."),
     {{"inputAngle", QT_TRANSLATE_NOOP("FilterLibrary", "Angle"), InputKind::Number, 0.0, 0.0, -kPi, kPi}},
     straightenFilter},
    {"CIPerspectiveRotate",
     QT_TRANSLATE_NOOP("FilterLibrary", "Perspective Rotate"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Turns the picture in space as if the camera had been pointed elsewhere."),
     {{"inputFocalLength", QT_TRANSLATE_NOOP("FilterLibrary", "Focal Length"), InputKind::Number, 28.0, {}, {}, {}},
      {"inputPitch", QT_TRANSLATE_NOOP("FilterLibrary", "Pitch"), InputKind::Number, 0.0, 0.0, {}, {}},
      {"inputYaw", QT_TRANSLATE_NOOP("FilterLibrary", "Yaw"), InputKind::Number, 0.0, 0.0, {}, {}},
      {"inputRoll", QT_TRANSLATE_NOOP("FilterLibrary", "Roll"), InputKind::Number, 0.0, 0.0, {}, {}}},
     perspectiveRotate},
};

}

const FilterTable &geometryFilters()
{
    return kFilters;
}
