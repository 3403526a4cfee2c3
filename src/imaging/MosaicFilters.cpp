#include "MosaicFilters.h"

#include "Cells.h"
#include "FilterValues.h"
#include "PixelMath.h"
#include "Seeds.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

bool Mosaic::pixellate(WorkingImage &image, const FilterValues &values)
{
    const QPointF corner = values.point("inputCenter");
    const double side = std::max(values.number("inputScale"), values.scale());
    return Cells::addMeans(image, side, [=](QPointF place) {
        const QPointF cell = (place - corner) / side;
        return Cells::Cell{std::floor(cell.x()), std::floor(cell.y())};
    });
}

bool Mosaic::hexagonalPixellate(WorkingImage &image, const FilterValues &values)
{
    const QPointF center = values.point("inputCenter");
    const double pitch = values.number("inputScale");
    if (pitch <= values.scale())
        return true;
    return Cells::addMeans(image, pitch, [=](QPointF place) {
        const QPointF u = (place - center) / pitch;
        const double rowHeight = std::numbers::sqrt3 / 2;
        Cells::Cell best{};
        double least = 4;
        for (int i = 0; i < 2; ++i) {
            const double row = std::floor(u.y() / rowHeight) + i;
            const double column = std::round(u.x() - row / 2);
            const double distance = std::hypot(u.x() - column - row / 2, u.y() - row * rowHeight);
            if (distance < least) {
                least = distance;
                best = {column, row};
            }
        }
        return best;
    });
}

namespace {

// Every pixel takes the colour of the nearest seed.
void paintNearest(const Seeds::Run &run)
{
    constexpr int most = 64;
    std::array<float, most> least;
    std::array<int, most> nearest;
    for (int from = 0; from < run.count; from += most) {
        const int count = std::min(run.count - from, most);
        std::fill_n(least.begin(), count, std::numeric_limits<float>::max());
        float farthest = std::numeric_limits<float>::max(); // of the nearest ones
        for (size_t i = 0; i < run.seeds.size(); ++i) {
            const Seeds::Seed &seed = *run.seeds[i];
            const float left = run.x + float(from) - seed.x;
            const float down = (run.y - seed.y) * (run.y - seed.y);
            const float beside = std::max({left, -left - float(count - 1), 0.0F});
            if (down + beside * beside >= farthest)
                continue;
            for (int x = 0; x < count; ++x) {
                const float across = left + float(x);
                const float distance = across * across + down;
                nearest[size_t(x)] = distance < least[size_t(x)] ? int(i) : nearest[size_t(x)];
                least[size_t(x)] = std::min(distance, least[size_t(x)]);
            }
            farthest = *std::max_element(least.begin(), least.begin() + count);
        }
        for (int x = 0; x < count; ++x)
            run.row[from + x] = run.seeds[size_t(nearest[size_t(x)])]->color;
    }
}

// Every seed is a disc on white; those of higher rank lie above.
void paintDiscs(const Seeds::Run &run, float radius)
{
    std::vector<const Seeds::Seed *> seeds = run.seeds;
    std::sort(seeds.begin(), seeds.end(), [](const auto *a, const auto *b) { return a->rank < b->rank; });
    std::fill_n(run.row, run.count, Pixel{1, 1, 1, 1});
    const float rim = radius + 0.5F;
    for (const Seeds::Seed *seed : seeds) {
        const float down = run.y - seed->y;
        if (std::fabs(down) >= rim)
            continue;
        const float reach = std::sqrt(rim * rim - down * down);
        const int from = std::max(int(std::floor(seed->x - reach - run.x)), 0);
        const int to = std::min(int(std::ceil(seed->x + reach - run.x)) + 1, run.count);
        for (int x = from; x < to; ++x) {
            const float across = run.x + float(x) - seed->x;
            const float cover = PixelMath::clamped(rim - std::sqrt(across * across + down * down));
            run.row[x] = PixelMath::mixed(run.row[x], seed->color, cover);
        }
    }
}

}

namespace {

/// Cells that nobody would see; a grid of them would be endless.
bool isTooSmall(double side, const FilterValues &values)
{
    return side <= std::max(values.scale(), 0.5);
}

}

bool Mosaic::crystallize(WorkingImage &image, const FilterValues &values)
{
    const double side = values.number("inputRadius");
    const QPointF center = values.point("inputCenter");
    if (isTooSmall(side, values))
        return true;
    return Seeds::addPainted(image, {center, side, side, 2}, paintNearest);
}

bool Mosaic::pointillize(WorkingImage &image, const FilterValues &values)
{
    const double radius = values.number("inputRadius");
    const QPointF center = values.point("inputCenter");
    if (isTooSmall(radius, values))
        return true;
    return Seeds::addPainted(image, {center, 1.5 * radius, radius, 1},
                             [=](const Seeds::Run &run) { paintDiscs(run, float(radius)); });
}
