#include "FilterValues.h"
#include "Plane.h"
#include "Sampling.h"

#include <algorithm>
#include <cmath>

namespace {

using Plane::length;
using Plane::turned;
using Sampling::Edge;

// Takes each pixel from `center + map(its distance as a vector)`.
template<typename Map>
bool addAround(WorkingImage &image, QPointF center, Edge edge, Map map)
{
    return Sampling::addMapped(image, image.size(), edge, [=](QPointF place) { return center + map(place - center); });
}

// The same inside a circle alone; `map(vector, share of the radius)`.
template<typename Map>
bool addInCircle(WorkingImage &image, const FilterValues &values, Map map)
{
    const double radius = values.number("inputRadius");
    return addAround(image, values.point("inputCenter"), Edge::Clear, [=](QPointF apart) {
        const double distance = length(apart);
        return distance < radius ? map(apart, distance / radius) : apart;
    });
}

bool bumpDistortion(WorkingImage &image, const FilterValues &values)
{
    const double scale = values.number("inputScale");
    return addInCircle(image, values,
                       [=](QPointF apart, double share) { return apart * (1 - scale * (1 - share) * (1 - share)); });
}

bool bumpDistortionLinear(WorkingImage &image, const FilterValues &values)
{
    const double radius = values.number("inputRadius");
    const double scale = values.number("inputScale");
    const QPointF across = turned(QPointF(0, 1), values.number("inputAngle"));
    return addAround(image, values.point("inputCenter"), Edge::Clear, [=](QPointF apart) {
        const double side = QPointF::dotProduct(apart, across);
        const double rest = 1 - std::abs(side) / radius;
        return rest > 0 ? apart - across * (side * scale * rest * rest) : apart;
    });
}

bool circleSplashDistortion(WorkingImage &image, const FilterValues &values)
{
    const double radius = values.number("inputRadius");
    return addAround(image, values.point("inputCenter"), Edge::Clamp, [=](QPointF apart) {
        const double distance = length(apart);
        return distance <= radius ? apart : apart * (radius / distance);
    });
}

// How far, in radii, a half-round glass shifts what lies under it.
double lensShift(double share, double refraction)
{
    const double bent = std::asin(std::min(1.0, share / std::max(refraction, 0.01)));
    const double shift = std::sqrt(std::max(1 - share * share, 0.0)) * std::tan(std::asin(share) - bent);
    return std::clamp(shift, -2.0, 2.0);
}

bool glassLozenge(WorkingImage &image, const FilterValues &values)
{
    const QPointF from = values.point("inputPoint0");
    const QPointF rod = values.point("inputPoint1") - from;
    const double rodSquare = std::max(QPointF::dotProduct(rod, rod), 1e-9);
    const double radius = values.number("inputRadius");
    const double refraction = values.number("inputRefraction");
    return addAround(image, from, Edge::Clear, [=](QPointF apart) {
        const double along = std::clamp(QPointF::dotProduct(apart, rod) / rodSquare, 0.0, 1.0);
        const QPointF side = apart - rod * along;
        const double distance = length(side);
        if (distance >= radius || distance <= 0)
            return apart;
        return apart - side * (lensShift(distance / radius, refraction) * radius / distance);
    });
}

bool holeDistortion(WorkingImage &image, const FilterValues &values)
{
    const double radius = values.number("inputRadius");
    return addAround(image, values.point("inputCenter"), Edge::Clear, [=](QPointF apart) {
        const double distance = length(apart);
        const double share = distance > 0 ? radius / distance : radius > 0 ? 2 : 0;
        return share > 1 ? Plane::nowhere() : apart * (1 - share * share);
    });
}

bool lightTunnel(WorkingImage &image, const FilterValues &values)
{
    const double radius = std::max(values.number("inputRadius"), values.scale());
    const double rotation = values.number("inputRotation");
    return addAround(image, values.point("inputCenter"), Edge::Clear, [=](QPointF apart) {
        const double share = radius / length(apart);
        return share < 1 ? turned(apart * (share * share), rotation * (1 / share - 1)) : apart;
    });
}

bool pinchDistortion(WorkingImage &image, const FilterValues &values)
{
    const double scale = values.number("inputScale");
    return addInCircle(image, values,
                       [=](QPointF apart, double share) { return apart * (1 + scale * (1 - share) * (1 - share)); });
}

bool torusLensDistortion(WorkingImage &image, const FilterValues &values)
{
    const double half = values.number("inputWidth") / 2;
    const double middle = values.number("inputRadius") - half;
    const double refraction = values.number("inputRefraction");
    if (half <= 0 || middle + half <= 0)
        return true;
    return addAround(image, values.point("inputCenter"), Edge::Clear, [=](QPointF apart) {
        const double distance = length(apart);
        const double share = (distance - middle) / half;
        if (std::abs(share) >= 1 || distance <= 0)
            return apart;
        const double shift = std::copysign(lensShift(std::abs(share), refraction) * half, share);
        return apart * (1 - shift / distance);
    });
}

bool twirlDistortion(WorkingImage &image, const FilterValues &values)
{
    const double angle = values.number("inputAngle");
    return addInCircle(image, values,
                       [=](QPointF apart, double share) { return turned(apart, -angle * (1 - share) * (1 - share)); });
}

bool vortexDistortion(WorkingImage &image, const FilterValues &values)
{
    const double angle = values.number("inputAngle");
    const double radius = values.number("inputRadius");
    const QPointF center = values.point("inputCenter");
    if (radius <= 0)
        return true;
    const auto from = [=](QPointF place) {
        const double rest = std::max(1 - length(place - center) / radius, 0.0);
        return center + turned(place - center, -angle * rest * rest * rest * rest);
    };
    // Where the turns crowd, a pixel is many places.
    return Sampling::addSpread(image, Edge::Clear, [=](QPointF place, std::vector<QPointF> &places) {
        const double rest = std::max(1 - length(place - center) / radius, 0.0);
        const bool isCrowded = std::abs(angle) * 4 * rest * rest * rest > 0.5 * radius;
        const int side = isCrowded ? 3 : 1;
        for (int i = 0; i < side * side; ++i)
            places.push_back(from(place + QPointF((i % side + 0.5) / side - 0.5, (i / side + 0.5) / side - 0.5)));
    });
}

const FilterTable kFilters{
    {"CIBumpDistortion",
     QT_TRANSLATE_NOOP("FilterLibrary", "Bump Distortion"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Bulges the picture out of, or into, the plane around a point."),
     {{"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputRadius", QT_TRANSLATE_NOOP("FilterLibrary", "Radius"), InputKind::Pixels, 300.0, {}, 0.0, 600.0},
      {"inputScale", QT_TRANSLATE_NOOP("FilterLibrary", "Scale"), InputKind::Number, 0.5, 0.0, -1.0, 1.0}},
     bumpDistortion},
    {"CIBumpDistortionLinear",
     QT_TRANSLATE_NOOP("FilterLibrary", "Bump Distortion Linear"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Bulges the picture along a line."),
     {{"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputRadius", QT_TRANSLATE_NOOP("FilterLibrary", "Radius"), InputKind::Pixels, 300.0, 0.0, 0.0, 600.0},
      {"inputAngle", QT_TRANSLATE_NOOP("FilterLibrary", "Angle"), InputKind::Angle, 0.0, 0.0, 0.0, 2 * kPi},
      {"inputScale", QT_TRANSLATE_NOOP("FilterLibrary", "Scale"), InputKind::Number, 0.5, 0.0, 0.0, 1.0}},
     bumpDistortionLinear},
    {"CICircleSplashDistortion",
     QT_TRANSLATE_NOOP("FilterLibrary", "Circle Splash Distortion"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Keeps a disc and drags its rim colours outwards in rays."),
     {{"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputRadius", QT_TRANSLATE_NOOP("FilterLibrary", "Radius"), InputKind::Pixels, 150.0, {}, 0.0, 1000.0}},
     circleSplashDistortion},
    {"CIGlassLozenge",
     QT_TRANSLATE_NOOP("FilterLibrary", "Glass Lozenge"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Lays a rod-shaped glass lens with round ends over the picture."),
     {{"inputPoint0", QT_TRANSLATE_NOOP("FilterLibrary", "Point 0"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputPoint1", QT_TRANSLATE_NOOP("FilterLibrary", "Point 1"), InputKind::Point, QPointF(350, 150), {}, {}, {}},
      {"inputRadius", QT_TRANSLATE_NOOP("FilterLibrary", "Radius"), InputKind::Pixels, 100.0, 100.0, 0.0, 1000.0},
      {"inputRefraction", QT_TRANSLATE_NOOP("FilterLibrary", "Refraction"), InputKind::Number, 1.7, 1.0, 0.0, 5.0}},
     glassLozenge},
    {"CIHoleDistortion",
     QT_TRANSLATE_NOOP("FilterLibrary", "Hole Distortion"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Opens a round hole and pushes the picture away from it."),
     {{"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputRadius", QT_TRANSLATE_NOOP("FilterLibrary", "Radius"), InputKind::Pixels, 150.0, 0.1, 0.01, 1000.0}},
     holeDistortion},
    {"CILightTunnel",
     QT_TRANSLATE_NOOP("FilterLibrary", "Light Tunnel Distortion"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Keeps a disc and winds its content outwards into a tunnel."),
     {{"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputRotation", QT_TRANSLATE_NOOP("FilterLibrary", "Rotation"), InputKind::Angle, 0.0, {}, 0.0, kPi / 2},
      {"inputRadius", QT_TRANSLATE_NOOP("FilterLibrary", "Radius"), InputKind::Pixels, 100.0, {}, 1.0, 500.0}},
     lightTunnel},
    {"CIPinchDistortion",
     QT_TRANSLATE_NOOP("FilterLibrary", "Pinch Distortion"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Pulls the picture together towards a point."),
     {{"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputRadius", QT_TRANSLATE_NOOP("FilterLibrary", "Radius"), InputKind::Pixels, 300.0, 0.0, 0.0, 1000.0},
      {"inputScale", QT_TRANSLATE_NOOP("FilterLibrary", "Scale"), InputKind::Number, 0.5, 0.0, 0.0, 2.0}},
     pinchDistortion},
    {"CITorusLensDistortion",
     QT_TRANSLATE_NOOP("FilterLibrary", "Torus Lens Distortion"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Lays a ring-shaped glass lens over the picture."),
     {{"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputRadius", QT_TRANSLATE_NOOP("FilterLibrary", "Radius"), InputKind::Pixels, 160.0, 0.0, 0.0, 500.0},
      {"inputWidth", QT_TRANSLATE_NOOP("FilterLibrary", "Width"), InputKind::Pixels, 80.0, 0.0, 0.0, 200.0},
      {"inputRefraction", QT_TRANSLATE_NOOP("FilterLibrary", "Refraction"), InputKind::Number, 1.7, 1.0, 0.0, 5.0}},
     torusLensDistortion},
    {"CITwirlDistortion",
     QT_TRANSLATE_NOOP("FilterLibrary", "Twirl Distortion"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Twists the picture around a point."),
     {{"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputRadius", QT_TRANSLATE_NOOP("FilterLibrary", "Radius"), InputKind::Pixels, 300.0, 300.0, 0.0, 500.0},
      {"inputAngle", QT_TRANSLATE_NOOP("FilterLibrary", "Angle"), InputKind::Angle, kPi, 0.0, -4 * kPi, 4 * kPi}},
     twirlDistortion},
    {"CIVortexDistortion",
     QT_TRANSLATE_NOOP("FilterLibrary", "Vortex Distortion"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Winds the picture many times around a point."),
     {{"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputRadius", QT_TRANSLATE_NOOP("FilterLibrary", "Radius"), InputKind::Pixels, 300.0, 0.0, 0.0, 800.0},
      {"inputAngle", QT_TRANSLATE_NOOP("FilterLibrary", "Angle"), InputKind::Angle, 18 * kPi, 0.0, -30 * kPi,
       30 * kPi}},
     vortexDistortion},
};

}

const FilterTable &distortionFilters()
{
    return kFilters;
}
