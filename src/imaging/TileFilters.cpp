#include "FilterValues.h"
#include "PixelMath.h"
#include "Plane.h"
#include "Sampling.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

using Plane::length;
using Plane::turned;
using Sampling::Edge;

constexpr double kHalfRoot3 = std::numbers::sqrt3 / 2;

// From one even number to the next: up to 1 and back.
double triangleWave(double x)
{
    return std::abs(x - 2 * std::floor(x / 2 + 0.5));
}

double fraction(double x)
{
    return x - std::floor(x);
}

double remainderOf(double x, double period)
{
    return x - period * std::floor(x / period);
}

// Takes each pixel from where `fold` puts it; in widths, turned by the angle, about the centre.
template<typename Fold>
bool addTiles(WorkingImage &image, const FilterValues &values, Fold fold)
{
    const QPointF center = values.point("inputCenter");
    const double angle = values.number("inputAngle");
    const double width = std::max(values.number("inputWidth"), values.scale());
    return Sampling::addMapped(image, image.size(), Edge::Clear, [=](QPointF place) {
        return center + width * turned(fold(turned(place - center, -angle) / width), angle);
    });
}

bool eightfoldReflectedTile(WorkingImage &image, const FilterValues &values)
{
    return addTiles(image, values, [](QPointF u) {
        const double x = std::abs(u.x() - std::round(u.x()));
        const double y = std::abs(u.y() - std::round(u.y()));
        return QPointF(std::max(x, y), std::min(x, y));
    });
}

bool fourfoldReflectedTile(WorkingImage &image, const FilterValues &values)
{
    constexpr double least = 0.05;
    const double acute = std::clamp(std::abs(values.number("inputAcuteAngle")), least, kPi - least);
    const double height = std::tan(acute / 2);
    return addTiles(image, values,
                    [=](QPointF u) { return QPointF(triangleWave(u.x()), height * triangleWave(u.y() / height)); });
}

bool fourfoldRotatedTile(WorkingImage &image, const FilterValues &values)
{
    return addTiles(image, values, [](QPointF u) {
        const QPointF half(0.5, 0.5);
        const QPointF inTile = QPointF(fraction(u.x()), fraction(u.y())) - half;
        const bool isOddColumn = remainderOf(std::floor(u.x()), 2) > 0;
        const bool isOddRow = remainderOf(std::floor(u.y()), 2) > 0;
        const int quarters = isOddRow ? (isOddColumn ? 2 : 3) : (isOddColumn ? 1 : 0);
        return turned(inTile, -quarters * kPi / 2) + half;
    });
}

/// The lattice of a parallelogram with sides of 1.
class Skew
{
public:
    explicit Skew(double angle)
        : m_cosine(std::cos(angle))
        , m_sine(std::sin(angle))
    {
        constexpr double least = 0.05;
        if (std::abs(m_sine) < least)
            m_sine = std::copysign(least, m_sine);
    }
    [[nodiscard]] QPointF fromPlane(QPointF u) const
    {
        const double b = u.y() / m_sine;
        return {u.x() - b * m_cosine, b};
    }
    [[nodiscard]] QPointF toPlane(double a, double b) const { return {a + b * m_cosine, b * m_sine}; }

private:
    double m_cosine;
    double m_sine;
};

bool fourfoldTranslatedTile(WorkingImage &image, const FilterValues &values)
{
    const Skew skew(values.number("inputAcuteAngle"));
    return addTiles(image, values, [=](QPointF u) {
        const QPointF cell = skew.fromPlane(u);
        return skew.toPlane(fraction(cell.x()), fraction(cell.y()));
    });
}

bool parallelogramTile(WorkingImage &image, const FilterValues &values)
{
    const Skew skew(values.number("inputAcuteAngle"));
    return addTiles(image, values, [=](QPointF u) {
        const QPointF cell = skew.fromPlane(u);
        return skew.toPlane(triangleWave(cell.x()), triangleWave(cell.y()));
    });
}

bool glideReflectedTile(WorkingImage &image, const FilterValues &values)
{
    return addTiles(image, values, [](QPointF u) {
        const bool isOddColumn = remainderOf(std::floor(u.x()), 2) > 0;
        const double y = fraction(u.y());
        return QPointF(fraction(u.x()), isOddColumn ? 1 - y : y);
    });
}

bool kaleidoscope(WorkingImage &image, const FilterValues &values)
{
    const QPointF center = values.point("inputCenter");
    const double angle = values.number("inputAngle");
    const double wedge = kPi / std::max(1.0, std::round(values.number("inputCount")));
    return Sampling::addMapped(image, image.size(), Edge::Clear, [=](QPointF place) {
        const QPointF apart = place - center;
        const double turn = remainderOf(std::atan2(apart.y(), apart.x()) - angle, 2 * wedge);
        return center + turned(QPointF(length(apart), 0), std::min(turn, 2 * wedge - turn) + angle);
    });
}

bool opTile(WorkingImage &image, const FilterValues &values)
{
    const QPointF center = values.point("inputCenter");
    const double angle = values.number("inputAngle");
    const double scale = values.number("inputScale");
    const double width = std::max(values.number("inputWidth"), values.scale());
    return Sampling::addMapped(image, image.size(), Edge::Clear, [=](QPointF place) {
        const QPointF tile = (place - center) / width;
        const QPointF middle = center + width * QPointF(std::floor(tile.x()) + 0.5, std::floor(tile.y()) + 0.5);
        return middle + scale * turned(place - middle, -angle);
    });
}

// Of the copies that mirroring over and over makes without turning, the one nearest to the triangle's corner.
QPointF nearestCopy(QPointF u)
{
    QPointF best = u;
    for (int i = 0; i < 2; ++i) {
        const double b = std::floor(u.x() / 1.5) + i;
        const double a = std::round((u.y() - b * kHalfRoot3) / std::numbers::sqrt3);
        const QPointF copy = u - QPointF(1.5 * b, a * std::numbers::sqrt3 + b * kHalfRoot3);
        if (i == 0 || length(copy) < length(best))
            best = copy;
    }
    return best;
}

// Mirrored until it lies in the triangle over (0, 0) and (1, 0).
QPointF foldedInTriangle(QPointF u)
{
    u = nearestCopy(u);
    struct Side
    {
        QPointF start;
        QPointF inward;
    };
    static const std::array<Side, 3> sides{
        {{{0, 0}, {0, 1}}, {{0, 0}, {kHalfRoot3, -0.5}}, {{1, 0}, {-kHalfRoot3, -0.5}}}};
    for (int mirrored = 0; mirrored < 5;) {
        const int before = mirrored;
        for (const Side &side : sides) {
            const double depth = QPointF::dotProduct(u - side.start, side.inward);
            if (depth < 0 && mirrored < 5) {
                u -= 2 * depth * side.inward;
                ++mirrored;
            }
        }
        if (mirrored == before)
            break;
    }
    return u;
}

bool sixfoldReflectedTile(WorkingImage &image, const FilterValues &values)
{
    return addTiles(image, values, foldedInTriangle);
}

QPointF nearestOfTriangles(QPointF u)
{
    const double row = std::floor(u.y() / kHalfRoot3);
    QPointF best;
    double least = 4;
    for (int i = 0; i < 2; ++i) {
        const double y = row + i;
        const double x = std::round(u.x() - y / 2) + y / 2;
        const QPointF point(x, y * kHalfRoot3);
        if (length(u - point) < least) {
            least = length(u - point);
            best = point;
        }
    }
    return best;
}

// The vector from the nearest point of a triangular lattice, as length and angle within a sixth of a turn.
template<typename Fold>
bool addSixths(WorkingImage &image, const FilterValues &values, Fold fold)
{
    return addTiles(image, values, [=](QPointF u) {
        const QPointF apart = u - nearestOfTriangles(u);
        const double turn = remainderOf(std::atan2(apart.y(), apart.x()), kPi / 3);
        return turned(QPointF(length(apart), 0), fold(turn));
    });
}

bool sixfoldRotatedTile(WorkingImage &image, const FilterValues &values)
{
    return addSixths(image, values, [](double turn) { return turn; });
}

bool twelvefoldReflectedTile(WorkingImage &image, const FilterValues &values)
{
    return addSixths(image, values, [](double turn) { return std::min(turn, kPi / 3 - turn); });
}

bool triangleTile(WorkingImage &image, const FilterValues &values)
{
    return addTiles(image, values, [](QPointF u) {
        const double row = u.y() / kHalfRoot3;
        double a = fraction(u.x() - row / 2);
        double b = fraction(row);
        if (a + b > 1) {
            a = 1 - a;
            b = 1 - b;
        }
        return QPointF(a + b / 2, b * kHalfRoot3);
    });
}

bool triangleKaleidoscope(WorkingImage &image, const FilterValues &values)
{
    const QPointF point = values.point("inputPoint");
    const double size = std::max(values.number("inputSize"), values.scale());
    const double rotation = values.number("inputRotation");
    const double decay = values.number("inputDecay", 0, 1);
    const QPointF middle(0.5, kHalfRoot3 / 3);
    const bool isMapped = Sampling::addMapped(image, image.size(), Edge::Clear, [=](QPointF place) {
        const QPointF u = turned(place - point, -rotation) / size + middle;
        return point + size * turned(foldedInTriangle(u) - middle, rotation);
    });
    return isMapped && image.addPlacedStep([=](Pixel &pixel, QPointF place) {
        constexpr double inTriangle = 0.577;
        const double sides = std::max(0.0, length(place - point) / size - inTriangle);
        const auto light = float(std::pow(decay, sides));
        pixel = {pixel.r * light, pixel.g * light, pixel.b * light, pixel.a};
    });
}

const FilterTable kFilters{
    {"CIEightfoldReflectedTile",
     QT_TRANSLATE_NOOP("FilterLibrary", "Eightfold Reflected Tile"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Tiles the picture with squares mirrored eight ways."),
     {{"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputAngle", QT_TRANSLATE_NOOP("FilterLibrary", "Angle"), InputKind::Number, 0.0, {}, -kPi, kPi},
      {"inputWidth", QT_TRANSLATE_NOOP("FilterLibrary", "Width"), InputKind::Pixels, 100.0, {}, 1.0, 200.0}},
     eightfoldReflectedTile},
    {"CIFourfoldReflectedTile",
     QT_TRANSLATE_NOOP("FilterLibrary", "Fourfold Reflected Tile"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Tiles the picture with rectangles mirrored four ways."),
     {{"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputAngle", QT_TRANSLATE_NOOP("FilterLibrary", "Angle"), InputKind::Number, 0.0, {}, -kPi, kPi},
      {"inputAcuteAngle", QT_TRANSLATE_NOOP("FilterLibrary", "Acute Angle"), InputKind::Number, kPi / 2, {}, -kPi, kPi},
      {"inputWidth", QT_TRANSLATE_NOOP("FilterLibrary", "Width"), InputKind::Pixels, 100.0, {}, 1.0, 200.0}},
     fourfoldReflectedTile},
    {"CIFourfoldRotatedTile",
     QT_TRANSLATE_NOOP("FilterLibrary", "Fourfold Rotated Tile"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Tiles the picture with squares turned by quarter turns."),
     {{"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputAngle", QT_TRANSLATE_NOOP("FilterLibrary", "Angle"), InputKind::Number, 0.0, {}, -kPi, kPi},
      {"inputWidth", QT_TRANSLATE_NOOP("FilterLibrary", "Width"), InputKind::Pixels, 100.0, {}, 1.0, 200.0}},
     fourfoldRotatedTile},
    {"CIFourfoldTranslatedTile",
     QT_TRANSLATE_NOOP("FilterLibrary", "Fourfold Translated Tile"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Tiles the picture with shifted copies of one parallelogram."),
     {{"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputAngle", QT_TRANSLATE_NOOP("FilterLibrary", "Angle"), InputKind::Number, 0.0, {}, -kPi, kPi},
      {"inputAcuteAngle", QT_TRANSLATE_NOOP("FilterLibrary", "Acute Angle"), InputKind::Number, kPi / 2, {}, -kPi, kPi},
      {"inputWidth", QT_TRANSLATE_NOOP("FilterLibrary", "Width"), InputKind::Pixels, 100.0, {}, 1.0, 200.0}},
     fourfoldTranslatedTile},
    {"CIGlideReflectedTile",
     QT_TRANSLATE_NOOP("FilterLibrary", "Glide Reflected Tile"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Tiles the picture with squares, every second column turned upside down."),
     {{"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputAngle", QT_TRANSLATE_NOOP("FilterLibrary", "Angle"), InputKind::Number, 0.0, {}, -kPi, kPi},
      {"inputWidth", QT_TRANSLATE_NOOP("FilterLibrary", "Width"), InputKind::Pixels, 100.0, {}, 1.0, 200.0}},
     glideReflectedTile},
    {"CIKaleidoscope",
     QT_TRANSLATE_NOOP("FilterLibrary", "Kaleidoscope"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Mirrors one wedge of the picture around a point."),
     {{"inputCount", QT_TRANSLATE_NOOP("FilterLibrary", "Count"), InputKind::Number, 6.0, {}, 1.0, 64.0},
      {"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputAngle", QT_TRANSLATE_NOOP("FilterLibrary", "Angle"), InputKind::Number, 0.0, {}, -kPi, kPi}},
     kaleidoscope},
    {"CIOpTile",
     QT_TRANSLATE_NOOP("FilterLibrary", "Op Tile"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Cuts the picture into squares and scales and turns each of them."),
     {{"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputScale", QT_TRANSLATE_NOOP("FilterLibrary", "Scale"), InputKind::Number, 2.8, 1.0, 0.1, 10.0},
      {"inputAngle", QT_TRANSLATE_NOOP("FilterLibrary", "Angle"), InputKind::Number, 0.0, 0.0, -kPi, kPi},
      {"inputWidth", QT_TRANSLATE_NOOP("FilterLibrary", "Width"), InputKind::Pixels, 65.0, 65.0, 1.0, 1000.0}},
     opTile},
    {"CIParallelogramTile",
     QT_TRANSLATE_NOOP("FilterLibrary", "Parallelogram Tile"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Tiles the picture with a parallelogram mirrored in its own sides."),
     {{"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputAngle", QT_TRANSLATE_NOOP("FilterLibrary", "Angle"), InputKind::Number, 0.0, {}, -kPi, kPi},
      {"inputAcuteAngle", QT_TRANSLATE_NOOP("FilterLibrary", "Acute Angle"), InputKind::Number, kPi / 2, {}, -kPi, kPi},
      {"inputWidth", QT_TRANSLATE_NOOP("FilterLibrary", "Width"), InputKind::Pixels, 100.0, {}, 1.0, 200.0}},
     parallelogramTile},
    {"CISixfoldReflectedTile",
     QT_TRANSLATE_NOOP("FilterLibrary", "Sixfold Reflected Tile"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Tiles the picture with an equilateral triangle mirrored six ways."),
     {{"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputAngle", QT_TRANSLATE_NOOP("FilterLibrary", "Angle"), InputKind::Number, 0.0, {}, -kPi, kPi},
      {"inputWidth", QT_TRANSLATE_NOOP("FilterLibrary", "Width"), InputKind::Pixels, 100.0, {}, 1.0, 200.0}},
     sixfoldReflectedTile},
    {"CISixfoldRotatedTile",
     QT_TRANSLATE_NOOP("FilterLibrary", "Sixfold Rotated Tile"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Tiles the picture with wedges turned by sixths of a turn."),
     {{"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputAngle", QT_TRANSLATE_NOOP("FilterLibrary", "Angle"), InputKind::Number, 0.0, {}, -kPi, kPi},
      {"inputWidth", QT_TRANSLATE_NOOP("FilterLibrary", "Width"), InputKind::Pixels, 100.0, {}, 1.0, 200.0}},
     sixfoldRotatedTile},
    {"CITriangleKaleidoscope",
     QT_TRANSLATE_NOOP("FilterLibrary", "Triangle Kaleidoscope"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Mirrors one triangle of the picture over the plane, fading outwards."),
     {{"inputPoint", QT_TRANSLATE_NOOP("FilterLibrary", "Point"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputSize", QT_TRANSLATE_NOOP("FilterLibrary", "Size"), InputKind::Pixels, 700.0, {}, 0.0, 1000.0},
      {"inputRotation",
       QT_TRANSLATE_NOOP("FilterLibrary", "Rotation"),
       InputKind::Number,
       5.924285296593801,
       {},
       0.0,
       2 * kPi},
      {"inputDecay", QT_TRANSLATE_NOOP("FilterLibrary", "Decay"), InputKind::Number, 0.85, {}, 0.0, 1.0}},
     triangleKaleidoscope},
    {"CITriangleTile",
     QT_TRANSLATE_NOOP("FilterLibrary", "Triangle Tile"),
     QT_TRANSLATE_NOOP("FilterLibrary",
                       "Tiles the picture with copies of one triangle, alternately upright and inverted."),
     {{"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputAngle", QT_TRANSLATE_NOOP("FilterLibrary", "Angle"), InputKind::Number, 0.0, {}, -kPi, kPi},
      {"inputWidth", QT_TRANSLATE_NOOP("FilterLibrary", "Width"), InputKind::Pixels, 100.0, {}, 1.0, 200.0}},
     triangleTile},
    {"CITwelvefoldReflectedTile",
     QT_TRANSLATE_NOOP("FilterLibrary", "Twelvefold Reflected Tile"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Tiles the picture with a wedge mirrored twelve ways."),
     {{"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputAngle", QT_TRANSLATE_NOOP("FilterLibrary", "Angle"), InputKind::Number, 0.0, {}, -kPi, kPi},
      {"inputWidth", QT_TRANSLATE_NOOP("FilterLibrary", "Width"), InputKind::Pixels, 100.0, {}, 1.0, 200.0}},
     twelvefoldReflectedTile},
};

}

const FilterTable &tileFilters()
{
    return kFilters;
}
