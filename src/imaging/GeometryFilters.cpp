#include "FilterValues.h"
#include "Plane.h"
#include "Resampling.h"
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

bool addScale(WorkingImage &image, const FilterValues &values, const Resampling::Kernel &kernel)
{
    const double scale = std::max(values.number("inputScale"), 0.0);
    const double aspect = std::max(values.number("inputAspectRatio"), 0.0);
    const auto length = [](double pixels) { return std::clamp(std::round(pixels), 1.0, 1e9); };
    const QSize size = image.size();
    return Resampling::addScaled(image, length(size.width() * scale * aspect), length(size.height() * scale), kernel);
}

bool lanczosScaleTransform(WorkingImage &image, const FilterValues &values)
{
    return addScale(image, values, Resampling::lanczos());
}

bool bicubicScaleTransform(WorkingImage &image, const FilterValues &values)
{
    const double b = values.number("inputB", -10, 10);
    const double c = values.number("inputC", -10, 10);
    return addScale(image, values, Resampling::cubic(b, c));
}

const FilterTable kFilters{
    {"CIStraightenFilter",
     QT_TRANSLATE_NOOP("FilterLibrary", "Straighten"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Rotates the picture and enlarges it just enough to fill its frame."),
     {{"inputAngle", QT_TRANSLATE_NOOP("FilterLibrary", "Angle"), InputKind::Angle, 0.0, 0.0, -kPi, kPi}},
     straightenFilter},
    {"CILanczosScaleTransform",
     QT_TRANSLATE_NOOP("FilterLibrary", "Lanczos Scale Transform"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Scales the picture with a high-quality Lanczos kernel."),
     {{"inputScale", QT_TRANSLATE_NOOP("FilterLibrary", "Scale"), InputKind::Number, 1.0, 1.0, 0.05, 1.5},
      {"inputAspectRatio", QT_TRANSLATE_NOOP("FilterLibrary", "Aspect Ratio"), InputKind::Number, 1.0, 1.0, 0.5, 2.0}},
     lanczosScaleTransform},
    {"CIBicubicScaleTransform",
     QT_TRANSLATE_NOOP("FilterLibrary", "Bicubic Scale Transform"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Scales the picture with an adjustable cubic kernel."),
     {{"inputScale", QT_TRANSLATE_NOOP("FilterLibrary", "Scale"), InputKind::Number, 1.0, 1.0, 0.05, 100.0},
      {"inputAspectRatio", QT_TRANSLATE_NOOP("FilterLibrary", "Aspect Ratio"), InputKind::Number, 1.0, 1.0, 0.5, 2.0},
      {"inputB", QT_TRANSLATE_NOOP("FilterLibrary", "B"), InputKind::Number, 0.0, {}, 0.0, 1.0},
      {"inputC", QT_TRANSLATE_NOOP("FilterLibrary", "C"), InputKind::Number, 0.75, {}, 0.0, 1.0}},
     bicubicScaleTransform},
    {"CIPerspectiveRotate",
     QT_TRANSLATE_NOOP("FilterLibrary", "Perspective Rotate"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Turns the picture in space as if the camera had been pointed elsewhere."),
     {{"inputFocalLength", QT_TRANSLATE_NOOP("FilterLibrary", "Focal Length"), InputKind::Number, 28.0, {}, {}, {}},
      {"inputPitch", QT_TRANSLATE_NOOP("FilterLibrary", "Pitch"), InputKind::Angle, 0.0, 0.0, {}, {}},
      {"inputYaw", QT_TRANSLATE_NOOP("FilterLibrary", "Yaw"), InputKind::Angle, 0.0, 0.0, {}, {}},
      {"inputRoll", QT_TRANSLATE_NOOP("FilterLibrary", "Roll"), InputKind::Angle, 0.0, 0.0, {}, {}}},
     perspectiveRotate},
};

}

const FilterTable &geometryFilters()
{
    return kFilters;
}
