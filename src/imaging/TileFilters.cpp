#include "Tiles.h"
#include "TriangleTiles.h"

namespace {

using Plane::length;
using Plane::turned;
using Sampling::Edge;
using Tiles::addTiles;
using Tiles::fraction;
using Tiles::remainderOf;

// From one even number to the next: up to 1 and back.
double triangleWave(double x)
{
    return std::abs(x - 2 * std::floor(x / 2 + 0.5));
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

const FilterTable kFilters{
    {"CIEightfoldReflectedTile",
     QT_TRANSLATE_NOOP("FilterLibrary", "Eightfold Reflected Tile"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Tiles the picture with squares mirrored eight ways."),
     {{"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputAngle", QT_TRANSLATE_NOOP("FilterLibrary", "Angle"), InputKind::Angle, 0.0, {}, -kPi, kPi},
      {"inputWidth", QT_TRANSLATE_NOOP("FilterLibrary", "Width"), InputKind::Pixels, 100.0, {}, 1.0, 200.0}},
     eightfoldReflectedTile},
    {"CIFourfoldReflectedTile",
     QT_TRANSLATE_NOOP("FilterLibrary", "Fourfold Reflected Tile"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Tiles the picture with rectangles mirrored four ways."),
     {{"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputAngle", QT_TRANSLATE_NOOP("FilterLibrary", "Angle"), InputKind::Angle, 0.0, {}, -kPi, kPi},
      {"inputAcuteAngle", QT_TRANSLATE_NOOP("FilterLibrary", "Acute Angle"), InputKind::Angle, kPi / 2, {}, -kPi, kPi},
      {"inputWidth", QT_TRANSLATE_NOOP("FilterLibrary", "Width"), InputKind::Pixels, 100.0, {}, 1.0, 200.0}},
     fourfoldReflectedTile},
    {"CIFourfoldRotatedTile",
     QT_TRANSLATE_NOOP("FilterLibrary", "Fourfold Rotated Tile"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Tiles the picture with squares turned by quarter turns."),
     {{"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputAngle", QT_TRANSLATE_NOOP("FilterLibrary", "Angle"), InputKind::Angle, 0.0, {}, -kPi, kPi},
      {"inputWidth", QT_TRANSLATE_NOOP("FilterLibrary", "Width"), InputKind::Pixels, 100.0, {}, 1.0, 200.0}},
     fourfoldRotatedTile},
    {"CIFourfoldTranslatedTile",
     QT_TRANSLATE_NOOP("FilterLibrary", "Fourfold Translated Tile"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Tiles the picture with shifted copies of one parallelogram."),
     {{"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputAngle", QT_TRANSLATE_NOOP("FilterLibrary", "Angle"), InputKind::Angle, 0.0, {}, -kPi, kPi},
      {"inputAcuteAngle", QT_TRANSLATE_NOOP("FilterLibrary", "Acute Angle"), InputKind::Angle, kPi / 2, {}, -kPi, kPi},
      {"inputWidth", QT_TRANSLATE_NOOP("FilterLibrary", "Width"), InputKind::Pixels, 100.0, {}, 1.0, 200.0}},
     fourfoldTranslatedTile},
    {"CIGlideReflectedTile",
     QT_TRANSLATE_NOOP("FilterLibrary", "Glide Reflected Tile"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Tiles the picture with squares, every second column turned upside down."),
     {{"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputAngle", QT_TRANSLATE_NOOP("FilterLibrary", "Angle"), InputKind::Angle, 0.0, {}, -kPi, kPi},
      {"inputWidth", QT_TRANSLATE_NOOP("FilterLibrary", "Width"), InputKind::Pixels, 100.0, {}, 1.0, 200.0}},
     glideReflectedTile},
    {"CIKaleidoscope",
     QT_TRANSLATE_NOOP("FilterLibrary", "Kaleidoscope"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Mirrors one wedge of the picture around a point."),
     {{"inputCount", QT_TRANSLATE_NOOP("FilterLibrary", "Count"), InputKind::Number, 6.0, {}, 1.0, 64.0},
      {"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputAngle", QT_TRANSLATE_NOOP("FilterLibrary", "Angle"), InputKind::Angle, 0.0, {}, -kPi, kPi}},
     kaleidoscope},
    {"CIOpTile",
     QT_TRANSLATE_NOOP("FilterLibrary", "Op Tile"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Cuts the picture into squares and scales and turns each of them."),
     {{"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputScale", QT_TRANSLATE_NOOP("FilterLibrary", "Scale"), InputKind::Number, 2.8, 1.0, 0.1, 10.0},
      {"inputAngle", QT_TRANSLATE_NOOP("FilterLibrary", "Angle"), InputKind::Angle, 0.0, 0.0, -kPi, kPi},
      {"inputWidth", QT_TRANSLATE_NOOP("FilterLibrary", "Width"), InputKind::Pixels, 65.0, 65.0, 1.0, 1000.0}},
     opTile},
    {"CIParallelogramTile",
     QT_TRANSLATE_NOOP("FilterLibrary", "Parallelogram Tile"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Tiles the picture with a parallelogram mirrored in its own sides."),
     {{"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputAngle", QT_TRANSLATE_NOOP("FilterLibrary", "Angle"), InputKind::Angle, 0.0, {}, -kPi, kPi},
      {"inputAcuteAngle", QT_TRANSLATE_NOOP("FilterLibrary", "Acute Angle"), InputKind::Angle, kPi / 2, {}, -kPi, kPi},
      {"inputWidth", QT_TRANSLATE_NOOP("FilterLibrary", "Width"), InputKind::Pixels, 100.0, {}, 1.0, 200.0}},
     parallelogramTile},
    {"CISixfoldReflectedTile",
     QT_TRANSLATE_NOOP("FilterLibrary", "Sixfold Reflected Tile"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Tiles the picture with an equilateral triangle mirrored six ways."),
     {{"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputAngle", QT_TRANSLATE_NOOP("FilterLibrary", "Angle"), InputKind::Angle, 0.0, {}, -kPi, kPi},
      {"inputWidth", QT_TRANSLATE_NOOP("FilterLibrary", "Width"), InputKind::Pixels, 100.0, {}, 1.0, 200.0}},
     TriangleTiles::sixfoldReflected},
    {"CISixfoldRotatedTile",
     QT_TRANSLATE_NOOP("FilterLibrary", "Sixfold Rotated Tile"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Tiles the picture with wedges turned by sixths of a turn."),
     {{"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputAngle", QT_TRANSLATE_NOOP("FilterLibrary", "Angle"), InputKind::Angle, 0.0, {}, -kPi, kPi},
      {"inputWidth", QT_TRANSLATE_NOOP("FilterLibrary", "Width"), InputKind::Pixels, 100.0, {}, 1.0, 200.0}},
     TriangleTiles::sixfoldRotated},
    {"CITriangleKaleidoscope",
     QT_TRANSLATE_NOOP("FilterLibrary", "Triangle Kaleidoscope"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Mirrors one triangle of the picture over the plane, fading outwards."),
     {{"inputPoint", QT_TRANSLATE_NOOP("FilterLibrary", "Point"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputSize", QT_TRANSLATE_NOOP("FilterLibrary", "Size"), InputKind::Pixels, 700.0, {}, 0.0, 1000.0},
      {"inputRotation",
       QT_TRANSLATE_NOOP("FilterLibrary", "Rotation"),
       InputKind::Angle,
       5.924285296593801,
       {},
       0.0,
       2 * kPi},
      {"inputDecay", QT_TRANSLATE_NOOP("FilterLibrary", "Decay"), InputKind::Number, 0.85, {}, 0.0, 1.0}},
     TriangleTiles::kaleidoscope},
    {"CITriangleTile",
     QT_TRANSLATE_NOOP("FilterLibrary", "Triangle Tile"),
     QT_TRANSLATE_NOOP("FilterLibrary",
                       "Tiles the picture with copies of one triangle, alternately upright and inverted."),
     {{"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputAngle", QT_TRANSLATE_NOOP("FilterLibrary", "Angle"), InputKind::Angle, 0.0, {}, -kPi, kPi},
      {"inputWidth", QT_TRANSLATE_NOOP("FilterLibrary", "Width"), InputKind::Pixels, 100.0, {}, 1.0, 200.0}},
     TriangleTiles::translated},
    {"CITwelvefoldReflectedTile",
     QT_TRANSLATE_NOOP("FilterLibrary", "Twelvefold Reflected Tile"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Tiles the picture with a wedge mirrored twelve ways."),
     {{"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputAngle", QT_TRANSLATE_NOOP("FilterLibrary", "Angle"), InputKind::Angle, 0.0, {}, -kPi, kPi},
      {"inputWidth", QT_TRANSLATE_NOOP("FilterLibrary", "Width"), InputKind::Pixels, 100.0, {}, 1.0, 200.0}},
     TriangleTiles::twelvefoldReflected},
};

}

const FilterTable &tileFilters()
{
    return kFilters;
}
