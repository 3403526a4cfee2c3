#include "FilterReference.h"
#include "TestRunner.h"

#include <QTest>

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <utility>

namespace {

using Pixel = ReferencePicture::Pixel;
/// Places as complex numbers: turning is multiplying.
using Place = std::complex<double>;
using Map = std::function<Place(Place)>;

const QPointF kStored(0.1, -0.2); ///< as stored; on the sample picture:
const Place kCenter(17.6, 9.6);

enum class Edge { Clamp, Clear };

Pixel fetched(const ReferencePicture &in, Place place, Edge edge)
{
    const double x = place.real() - 0.5;
    const double y = place.imag() - 0.5;
    Pixel mean{};
    if (!(std::abs(x) < 1e6 && std::abs(y) < 1e6))
        return mean;
    const int left = int(std::floor(x));
    const int below = int(std::floor(y));
    for (int i = 0; i < 4; ++i) {
        const int column = left + i % 2;
        const int row = below + i / 2;
        const bool isInside = column >= 0 && row >= 0 && column < in.width() && row < in.height();
        if (edge == Edge::Clear && !isInside)
            continue;
        const double weight = (1 - std::abs(x - column)) * (1 - std::abs(y - row));
        for (size_t c = 0; c < 4; ++c)
            mean[c] += weight * in.at(column, row)[c];
    }
    return mean;
}

FilterCase mappedBy(const EffectEntry &entry, const Map &map, Edge edge = Edge::Clear, int tolerance = 2)
{
    const auto expected = [=](ReferencePicture in) {
        in.multiplyAlpha();
        ReferencePicture out = in.mapped([&](int x, int y) { return fetched(in, map(Place(x + 0.5, y + 0.5)), edge); });
        out.divideAlpha();
        return out;
    };
    return {entry, expected, tolerance};
}

/// A map of vectors from the centre.
FilterCase around(const char *filter, FilterSettings values, const Map &map, Edge edge = Edge::Clear)
{
    EffectEntry entry = effect(filter, values);
    entry.setValue(QStringLiteral("inputCenter"), kStored);
    return mappedBy(
        entry, [=](Place p) { return kCenter + map(p - kCenter); }, edge);
}

/// A fold of the plane in tiles of width 7, turned by 0.4.
FilterCase tiled(const char *filter, const Map &fold, double acute = 0)
{
    EffectEntry entry = effect(filter, {{"inputWidth", 7.0}, {"inputAngle", 0.4}});
    entry.setValue(QStringLiteral("inputCenter"), kStored);
    if (acute != 0)
        entry.setValue(QStringLiteral("inputAcuteAngle"), acute);
    const Place unit = std::polar(7.0, 0.4);
    return mappedBy(entry, [=](Place p) { return kCenter + unit * fold((p - kCenter) / unit); });
}

double lensShift(double share, double index)
{
    const double bent = std::asin(std::min(1.0, share / index));
    return std::clamp(std::sqrt(1 - share * share) * std::tan(std::asin(share) - bent), -2.0, 2.0);
}

double wrapped(double x, double period)
{
    double rest = std::fmod(x, period);
    return rest < 0 ? rest + period : rest;
}

double mirrored(double x, double period)
{
    const double rest = wrapped(x, 2 * period);
    return rest > period ? 2 * period - rest : rest;
}

/// Mirrors in the sides of the triangle over (0, 0) and (1, 0) until it lies inside, however often it takes.
Place inTriangle(Place u)
{
    const Place sixth = std::polar(1.0, kPi / 3);
    for (int i = 0; i < 1000; ++i) {
        if (u.imag() < -1e-12)
            u = std::conj(u);
        else if ((u / sixth).imag() > 1e-12)
            u = std::conj(u / sixth) * sixth;
        else if (((u - 1.0) / (sixth * sixth)).imag() < -1e-12)
            u = std::conj((u - 1.0) / (sixth * sixth)) * sixth * sixth + 1.0;
        else
            break;
    }
    return u;
}

/// The vector from the nearest point of the lattice of triangles, found among many.
Place fromLattice(Place u)
{
    Place best = u;
    for (int row = -20; row <= 20; ++row) {
        for (int column = -30; column <= 30; ++column) {
            const Place apart = u - Place(column + row / 2.0, row * std::sqrt(3) / 2);
            if (std::abs(apart) < std::abs(best))
                best = apart;
        }
    }
    return best;
}

double angleOf(Place p)
{
    return wrapped(std::arg(p), 2 * kPi);
}

}

class TestMappingFilters : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void distortionsFetchFromElsewhere()
    {
        const auto inside = [](double radius, const std::function<Place(Place, double)> &map) {
            return [=](Place d) { return std::abs(d) < radius ? map(d, 1 - std::abs(d) / radius) : d; };
        };
        const std::vector<FilterCase> cases{
            around("CIBumpDistortion", {{"inputRadius", 9.0}, {"inputScale", 0.6}},
                   inside(9, [](Place d, double rest) { return d * (1 - 0.6 * rest * rest); })),
            around("CIPinchDistortion", {{"inputRadius", 9.0}, {"inputScale", 0.6}},
                   inside(9, [](Place d, double rest) { return d * (1 + 0.6 * rest * rest); })),
            around("CITwirlDistortion", {{"inputRadius", 9.0}, {"inputAngle", 2.0}},
                   inside(9, [](Place d, double rest) { return d * std::polar(1.0, -2 * rest * rest); })),
            around("CIVortexDistortion", {{"inputRadius", 11.0}, {"inputAngle", 1.3}},
                   inside(11, [](Place d, double rest) { return d * std::polar(1.0, -1.3 * std::pow(rest, 4)); })),
            around("CIBumpDistortionLinear", {{"inputRadius", 6.0}, {"inputAngle", 0.5}, {"inputScale", 0.7}},
                   [](Place d) {
                       const Place turned = d * std::polar(1.0, -0.5);
                       const double rest = std::max(0.0, 1 - std::abs(turned.imag()) / 6);
                       const double side = turned.imag() * (1 - 0.7 * rest * rest);
                       return Place(turned.real(), side) * std::polar(1.0, 0.5);
                   }),
            around(
                "CICircleSplashDistortion", {{"inputRadius", 5.0}},
                [](Place d) { return std::abs(d) <= 5 ? d : std::polar(5.0, std::arg(d)); }, Edge::Clamp),
            around("CIHoleDistortion", {{"inputRadius", 5.0}},
                   [](Place d) { return std::abs(d) < 5 ? Place(1e9, 1e9) : d * (1 - 25 / std::norm(d)); }),
            around("CILightTunnel", {{"inputRadius", 5.0}, {"inputRotation", 0.6}},
                   [](Place d) {
                       const double radii = std::abs(d) / 5;
                       return radii <= 1 ? d : d / radii / radii * std::polar(1.0, 0.6 * (radii - 1));
                   }),
            around("CITorusLensDistortion", {{"inputRadius", 10.0}, {"inputWidth", 6.0}, {"inputRefraction", 1.6}},
                   [](Place d) {
                       const double share = (std::abs(d) - 7) / 3;
                       if (std::abs(share) >= 1)
                           return d;
                       const double shift = 3 * lensShift(std::abs(share), 1.6) * (share < 0 ? -1 : 1);
                       return d - std::polar(shift, std::arg(d));
                   }),
            mappedBy(effect("CIGlassLozenge", {{"inputPoint0", QPointF(-0.3, 0)},
                                               {"inputPoint1", QPointF(0.5, 0.25)},
                                               {"inputRadius", 6.0},
                                               {"inputRefraction", 1.5}}),
                     [](Place p) { // the rod leads from (11.2, 12) to (24, 15)
                         const Place rod(12.8, 3);
                         const double along = ((p - Place(11.2, 12)) * std::conj(rod)).real() / std::norm(rod);
                         const Place side = p - Place(11.2, 12) - rod * std::clamp(along, 0.0, 1.0);
                         const double share = std::abs(side) / 6;
                         return share < 1 ? p - std::polar(lensShift(share, 1.5) * 6, std::arg(side)) : p;
                     })};
        QCOMPARE(firstDifference(cases), QString());
    }

    /// A pixel of a crowded turn is the mean of nine places; straightening takes what cubic curves through the pixels
    /// tell.
    void finePlacesAreFoundBetweenPixels()
    {
        const auto vortex = [](Place p) {
            const double rest = std::max(0.0, 1 - std::abs(p - kCenter) / 11);
            return kCenter + (p - kCenter) * std::polar(1.0, -60 * std::pow(rest, 4));
        };
        const auto meanOfNine = [=](ReferencePicture in) {
            in.multiplyAlpha();
            ReferencePicture out = in.mapped([&](int x, int y) {
                const Place middle(x + 0.5, y + 0.5);
                const double rest = std::max(0.0, 1 - std::abs(middle - kCenter) / 11);
                if (240 * std::pow(rest, 3) <= 5.5)
                    return fetched(in, vortex(middle), Edge::Clear);
                Pixel mean{};
                for (int i = 0; i < 9; ++i) {
                    const Pixel part = fetched(in, vortex(middle + Place(i % 3 - 1, i / 3 - 1) / 3.0), Edge::Clear);
                    for (size_t c = 0; c < 4; ++c)
                        mean[c] += part[c] / 9;
                }
                return mean;
            });
            out.divideAlpha();
            return out;
        };
        EffectEntry turned = effect("CIVortexDistortion", {{"inputRadius", 11.0}, {"inputAngle", 60.0}});
        turned.setValue(QStringLiteral("inputCenter"), kStored);
        const auto cubic = [](double t, const std::array<double, 4> &p) { // through the second and the third
            return p[1] + t / 2 *
                              (p[2] - p[0] +
                               t * (2 * p[0] - 5 * p[1] + 4 * p[2] - p[3] + t * (3 * (p[1] - p[2]) + p[3] - p[0])));
        };
        const auto straight = [=](ReferencePicture in) {
            in.multiplyAlpha();
            const double enlarged = std::cos(0.3) + std::sin(0.3) * 32 / 24;
            ReferencePicture out = in.mapped([&](int x, int y) {
                const Place p = Place(16, 12) + Place(x + 0.5 - 16, y + 0.5 - 12) * std::polar(1 / enlarged, -0.3);
                const int left = int(std::floor(p.real() - 0.5));
                const int below = int(std::floor(p.imag() - 0.5));
                Pixel result{};
                for (size_t c = 0; c < 4; ++c) {
                    std::array<double, 4> rows;
                    for (int row = 0; row < 4; ++row) {
                        const auto at = [&](int i) { return std::as_const(in).at(left + i - 1, below + row - 1)[c]; };
                        rows[size_t(row)] = cubic(p.real() - 0.5 - left, {at(0), at(1), at(2), at(3)});
                    }
                    result[c] = cubic(p.imag() - 0.5 - below, rows);
                }
                return result;
            });
            out.divideAlpha();
            return out;
        };
        const std::vector<FilterCase> cases{{turned, meanOfNine, 2},
                                            {effect("CIStraightenFilter", {{"inputAngle", 0.3}}), straight, 2}};
        QCOMPARE(firstDifference(cases), QString());
    }

    void tilesFoldThePlane()
    {
        const double acute = 1.1;
        const double height = std::tan(acute / 2);
        const auto skewed = [=](Place u, const std::function<double(double)> &fold) {
            const double b = u.imag() / std::sin(acute);
            return fold(u.real() - b * std::cos(acute)) + fold(b) * std::polar(1.0, acute);
        };
        const auto fraction = [](double x) { return wrapped(x, 1); };
        const auto there = [](double x) { return mirrored(x, 1); };
        const std::vector<FilterCase> cases{
            tiled("CIEightfoldReflectedTile",
                  [](Place u) {
                      const double x = mirrored(u.real(), 0.5);
                      const double y = mirrored(u.imag(), 0.5);
                      return Place(std::max(x, y), std::min(x, y));
                  }),
            tiled(
                "CIFourfoldReflectedTile",
                [=](Place u) { return Place(mirrored(u.real(), 1), mirrored(u.imag(), height)); }, acute),
            tiled("CIFourfoldRotatedTile",
                  [](Place u) {
                      const Place half(0.5, 0.5);
                      const int column = int(wrapped(std::floor(u.real()), 2));
                      const int row = int(wrapped(std::floor(u.imag()), 2));
                      const int quarters[2][2] = {{0, 1}, {3, 2}};
                      const Place in = Place(wrapped(u.real(), 1), wrapped(u.imag(), 1)) - half;
                      return in * std::polar(1.0, -kPi / 2 * quarters[row][column]) + half;
                  }),
            tiled(
                "CIFourfoldTranslatedTile", [=](Place u) { return skewed(u, fraction); }, acute),
            tiled(
                "CIParallelogramTile", [=](Place u) { return skewed(u, there); }, acute),
            tiled("CIGlideReflectedTile",
                  [](Place u) {
                      const double y = wrapped(u.imag(), 1);
                      return Place(wrapped(u.real(), 1), wrapped(u.real(), 2) < 1 ? y : 1 - y);
                  }),
            tiled("CISixfoldReflectedTile", inTriangle),
            tiled("CISixfoldRotatedTile",
                  [](Place u) {
                      const Place apart = fromLattice(u);
                      return std::polar(std::abs(apart), wrapped(angleOf(apart), kPi / 3));
                  }),
            tiled("CITwelvefoldReflectedTile",
                  [](Place u) {
                      const Place apart = fromLattice(u);
                      return std::polar(std::abs(apart), mirrored(angleOf(apart), kPi / 6));
                  }),
            tiled("CITriangleTile",
                  [=](Place u) {
                      const double b = 2 * u.imag() / std::sqrt(3);
                      const double a = wrapped(u.real() - b / 2, 1);
                      const double rest = wrapped(b, 1);
                      const bool isUpper = a + rest > 1;
                      return (isUpper ? 1 - a : a) + (isUpper ? 1 - rest : rest) * std::polar(1.0, kPi / 3);
                  }),
            around("CIKaleidoscope", {{"inputCount", 5.0}, {"inputAngle", 0.3}},
                   [](Place d) {
                       const double turn = mirrored(angleOf(d * std::polar(1.0, -0.3)), kPi / 5);
                       return std::polar(std::abs(d), turn + 0.3);
                   }),
            around("CIOpTile", {{"inputScale", 1.7}, {"inputAngle", 0.3}, {"inputWidth", 8.0}}, [](Place d) {
                const Place middle(8 * std::floor(d.real() / 8) + 4, 8 * std::floor(d.imag() / 8) + 4);
                return middle + 1.7 * std::polar(1.0, -0.3) * (d - middle);
            })};
        QCOMPARE(firstDifference(cases), QString());
    }

    void theKaleidoscopeOfTrianglesFadesOutwards()
    {
        const FilterSettings values{
            {"inputPoint", kStored}, {"inputSize", 8.0}, {"inputRotation", 0.4}, {"inputDecay", 0.7}};
        const Place middle(0.5, std::sqrt(3) / 6);
        const Place unit = std::polar(8.0, 0.4);
        FilterCase one = mappedBy(effect("CITriangleKaleidoscope", values), [=](Place p) {
            return kCenter + unit * (inTriangle((p - kCenter) / unit + middle) - middle);
        });
        one.expected = [fold = one.expected](const ReferencePicture &in) {
            const ReferencePicture folded = fold(in);
            return folded.mapped([&](int x, int y) {
                const double distance = std::abs(Place(x + 0.5, y + 0.5) - kCenter) / 8;
                Pixel p = folded.at(x, y);
                for (size_t i = 0; i < 3; ++i)
                    p[i] *= std::pow(0.7, std::max(0.0, distance - 0.577));
                return p;
            });
        };
        QCOMPARE(firstDifference({one}), QString());
    }

    void screensPrintInBlackAndWhite()
    {
        using Screen = std::function<double(Place)>;
        const auto screened = [](const char *filter, const Screen &screen) {
            EffectEntry entry = effect(filter, {{"inputWidth", 5.0}, {"inputSharpness", 0.6}});
            entry.setValue(QStringLiteral("inputCenter"), kStored);
            if (entry.filterName() != u"CICircularScreen")
                entry.setValue(QStringLiteral("inputAngle"), 0.4);
            return FilterCase{entry, [=](const ReferencePicture &in) {
                                  return in.mapped([&](int x, int y) {
                                      const double edge = 0.2;
                                      const Place u = (Place(x + 0.5, y + 0.5) - kCenter) / std::polar(5.0, 0.4);
                                      const double light = luminanceOf(in.at(x, y)) * (1 + 2 * edge) - edge;
                                      const double t = std::clamp((light - screen(u) + edge) / (2 * edge), 0.0, 1.0);
                                      const double grey = 3 * t * t - 2 * t * t * t;
                                      return Pixel{grey, grey, grey, in.at(x, y)[3]};
                                  });
                              }};
        };
        const auto wave = [](double x) { return std::pow(std::cos(kPi * x), 2); };
        const std::vector<FilterCase> cases{
            screened("CICircularScreen", [=](Place u) { return wave(std::abs(u)); }),
            screened("CIDotScreen", [=](Place u) { return (wave(u.real()) + wave(u.imag())) / 2; }),
            screened("CIHatchedScreen", [=](Place u) { return std::max(wave(u.real()), wave(u.imag())); }),
            screened("CILineScreen", [=](Place u) { return wave(u.imag()); })};
        QCOMPARE(firstDifference(cases), QString());
    }
};

REGISTER_TEST(TestMappingFilters)
#include "TestMappingFilters.moc"
