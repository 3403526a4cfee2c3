#include "FilterReference.h"
#include "PixelMath.h"
#include "TestRunner.h"

#include <QTest>

#include <algorithm>
#include <cmath>
#include <map>

namespace {

using Pixel = ReferencePicture::Pixel;
using Picture = ReferencePicture;

/// Every pixel becomes the mean of those of the same cell.
FilterCase celled(const EffectEntry &entry, const std::function<std::pair<int, int>(double x, double y)> &cellAt)
{
    FilterCase one{entry, [cellAt](const Picture &in) {
                       std::map<std::pair<int, int>, std::vector<Pixel>> cells;
                       static_cast<void>(in.mapped([&](int x, int y) {
                           cells[cellAt(x + 0.5, y + 0.5)].push_back(in.at(x, y));
                           return Pixel{};
                       }));
                       return in.mapped([&](int x, int y) {
                           const auto &pixels = cells[cellAt(x + 0.5, y + 0.5)];
                           Pixel mean{};
                           for (const Pixel &pixel : pixels) {
                               for (size_t c = 0; c < 4; ++c)
                                   mean[c] += pixel[c] / double(pixels.size());
                           }
                           return mean;
                       });
                   }};
    one.isOpaque = true;
    return one;
}

/// A seed of the jittered grid, as brute force finds it.
struct Seed
{
    double x;
    double y;
    quint32 rank;
    Pixel mean;
};

/// All seeds near the sample picture, of a grid with a corner at (17.6, 9.6).
std::vector<Seed> seedsOf(const Picture &in, double pitch, double side)
{
    std::vector<Seed> seeds;
    for (int row = -8; row <= 8; ++row) {
        for (int column = -8; column <= 8; ++column) {
            const quint32 hash = PixelMath::cellHash(column, row);
            const quint32 more = PixelMath::scrambled(hash);
            Seed seed{17.6 + pitch * (column + double(PixelMath::unit(hash))),
                      9.6 + pitch * (row + double(PixelMath::unit(more))),
                      PixelMath::scrambled(more),
                      {}};
            constexpr int steps = 60; // of a square, finer than pixels
            for (int i = 0; i < steps * steps; ++i) {
                const double x = seed.x + side * ((i % steps + 0.5) / steps - 0.5);
                const double y = seed.y + side * ((i / steps + 0.5) / steps - 0.5);
                for (size_t c = 0; c < 4; ++c)
                    seed.mean[c] += in.at(int(std::floor(x)), int(std::floor(y)))[c] / (steps * steps);
            }
            seeds.push_back(seed);
        }
    }
    return seeds;
}

Pixel nearestOf(const std::vector<Seed> &seeds, double x, double y)
{
    return std::min_element(seeds.cbegin(), seeds.cend(),
                            [=](const Seed &a, const Seed &b) {
                                return std::hypot(a.x - x, a.y - y) < std::hypot(b.x - x, b.y - y);
                            })
        ->mean;
}

Pixel discsOf(const std::vector<Seed> &seeds, double radius, double x, double y)
{
    Pixel out{1, 1, 1, 1};
    for (const Seed &seed : seeds) {
        const double cover = std::clamp(radius + 0.5 - std::hypot(seed.x - x, seed.y - y), 0.0, 1.0);
        for (size_t c = 0; c < 4; ++c)
            out[c] += cover * (seed.mean[c] - out[c]);
    }
    return out;
}

/// A filter with its squares around (17.6, 9.6).
EffectEntry placed(const char *name, FilterSettings values)
{
    EffectEntry entry = effect(name, values);
    entry.setValue(QStringLiteral("inputCenter"), QPointF(0.1, -0.2));
    return entry;
}

/// Every pixel from all seeds, on colours into which alpha is multiplied.
FilterCase seeded(const EffectEntry &entry, double pitch, double side,
                  const std::function<Pixel(const std::vector<Seed> &seeds, double x, double y)> &function)
{
    return {entry,
            [=](Picture in) {
                in.multiplyAlpha();
                std::vector<Seed> seeds = seedsOf(in, pitch, side);
                std::sort(seeds.begin(), seeds.end(), [](const Seed &a, const Seed &b) { return a.rank < b.rank; });
                Picture out = in.mapped([&](int x, int y) { return function(seeds, x + 0.5, y + 0.5); });
                out.divideAlpha();
                return out;
            },
            2};
}

}

class TestMosaicFilters : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cellsTakeTheirMean()
    {
        const EffectEntry squares = placed("CIPixellate", {{"inputScale", 5.5}});
        const EffectEntry hexagons = placed("CIHexagonalPixellate", {{"inputScale", 6.0}});
        const auto hexagon = [](double x, double y) {
            std::pair<int, int> best;
            double least = 1e9;
            for (int row = -10; row <= 10; ++row) {
                for (int column = -20; column <= 20; ++column) {
                    const double distance =
                        std::hypot(x - 17.6 - 6 * (column + row / 2.0), y - 9.6 - 6 * row * std::sqrt(3) / 2);
                    if (distance < least) {
                        least = distance;
                        best = {column, row};
                    }
                }
            }
            return best;
        };
        const std::vector<FilterCase> cases{celled(squares,
                                                   [](double x, double y) {
                                                       return std::pair(int(std::floor((x - 17.6) / 5.5)),
                                                                        int(std::floor((y - 9.6) / 5.5)));
                                                   }),
                                            celled(hexagons, hexagon)};
        QCOMPARE(firstDifference(cases), QString());
    }

    void seedsPaintWithTheirMean()
    {
        const auto discs = [](const std::vector<Seed> &seeds, double x, double y) { return discsOf(seeds, 5, x, y); };
        QCOMPARE(firstDifference({seeded(placed("CICrystallize", {{"inputRadius", 8.0}}), 8, 8, nearestOf),
                                  seeded(placed("CIPointillize", {{"inputRadius", 5.0}}), 7.5, 5, discs)}),
                 QString());
    }
};

REGISTER_TEST(TestMosaicFilters)
#include "TestMosaicFilters.moc"
