#include "TriangleTiles.h"

#include "Tiles.h"

#include <array>
#include <numbers>

namespace {

using Plane::length;
using Plane::turned;
using Tiles::addTiles;
using Tiles::fraction;
using Tiles::remainderOf;

constexpr double kHalfRoot3 = std::numbers::sqrt3 / 2;

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

}

bool TriangleTiles::sixfoldReflected(WorkingImage &image, const FilterValues &values)
{
    return addTiles(image, values, foldedInTriangle);
}

bool TriangleTiles::sixfoldRotated(WorkingImage &image, const FilterValues &values)
{
    return addSixths(image, values, [](double turn) { return turn; });
}

bool TriangleTiles::twelvefoldReflected(WorkingImage &image, const FilterValues &values)
{
    return addSixths(image, values, [](double turn) { return std::min(turn, kPi / 3 - turn); });
}

bool TriangleTiles::translated(WorkingImage &image, const FilterValues &values)
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

bool TriangleTiles::kaleidoscope(WorkingImage &image, const FilterValues &values)
{
    const QPointF point = values.point("inputPoint");
    const double size = std::max(values.number("inputSize"), values.scale());
    const double rotation = values.number("inputRotation");
    const double decay = values.number("inputDecay", 0, 1);
    const QPointF middle(0.5, kHalfRoot3 / 3);
    const bool isMapped = Sampling::addMapped(image, image.size(), Sampling::Edge::Clear, [=](QPointF place) {
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
