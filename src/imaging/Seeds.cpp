#include "Seeds.h"

#include "PixelMath.h"
#include "Reduction.h"

#include <algorithm>
#include <cmath>

namespace {

using Seeds::Grid;
using Seeds::Run;
using Seeds::Seed;

/// A grid over a picture that is read from a smaller one.
struct Plan
{
    Grid grid;
    int height; ///< of the picture
    int factor;
};

/// A stretch of pixels, and what the first and the last count.
struct Stretch
{
    int first;
    int last;
    double firstShare;
    double lastShare;
};

Stretch stretchAround(double middle, double length)
{
    const double from = middle - length / 2;
    const double to = middle + length / 2;
    const int first = int(std::floor(from));
    const int last = std::max(int(std::ceil(to)) - 1, first);
    return {first, last, first == last ? 1 : first + 1 - from, to - last};
}

double shareOf(const Stretch &stretch, int i)
{
    return i == stretch.first ? stretch.firstShare : i == stretch.last ? stretch.lastShare : 1;
}

/// The seeds that matter to a piece, from the grid's squares around it.
class Patch
{
public:
    Patch(const VipsRect &area, const Plan &plan)
        : m_plan(plan)
        , m_area(area)
        , m_left(columnAt(area.left) - plan.grid.reach)
        , m_right(columnAt(VIPS_RECT_RIGHT(&area) - 1) + plan.grid.reach)
        , m_bottom(rowAt(VIPS_RECT_BOTTOM(&area) - 1) - plan.grid.reach)
        , m_top(rowAt(area.top) + plan.grid.reach)
    {
        for (int row = m_bottom; row <= m_top; ++row) {
            for (int column = m_left; column <= m_right; ++column)
                m_seeds.push_back(seedIn(column, row));
        }
    }

    [[nodiscard]] int columnAt(int x) const
    {
        return int(std::floor((x + 0.5 - m_plan.grid.corner.x()) / m_plan.grid.pitch));
    }
    [[nodiscard]] int rowAt(int y) const
    {
        return int(std::floor((m_plan.height - y - 0.5 - m_plan.grid.corner.y()) / m_plan.grid.pitch));
    }

    bool takeColors(VipsRegion &in)
    {
        const double side = m_plan.grid.meanSide / m_plan.factor;
        std::vector<Stretch> across;
        std::vector<Stretch> down;
        VipsRect wanted{};
        for (const Seed &seed : m_seeds) {
            across.push_back(stretchAround((double(seed.x) + m_area.left) / m_plan.factor, side));
            down.push_back(stretchAround((double(seed.y) + m_area.top) / m_plan.factor, side));
            const VipsRect around{across.back().first, down.back().first, across.back().last - across.back().first + 1,
                                  down.back().last - down.back().first + 1};
            vips_rect_unionrect(&wanted, &around, &wanted);
        }
        const VipsRect whole{0, 0, in.im->Xsize, in.im->Ysize};
        const VipsRect corner{std::clamp(wanted.left, 0, whole.width - 1), std::clamp(wanted.top, 0, whole.height - 1),
                              1, 1};
        vips_rect_intersectrect(&wanted, &whole, &wanted);
        vips_rect_unionrect(&wanted, &corner, &wanted); // beyond an edge that edge's pixels are read
        if (vips_region_prepare(&in, &wanted) != 0)
            return false;
        for (size_t i = 0; i < m_seeds.size(); ++i)
            m_seeds[i].color = meanOf(in, across[i], down[i]);
        return true;
    }

    void findAround(int column, int row, std::vector<const Seed *> &seeds) const
    {
        seeds.clear();
        for (int ring = 0; ring <= m_plan.grid.reach; ++ring) {
            for (int j = -ring; j <= ring; ++j) {
                for (int i = -ring; i <= ring; ++i) {
                    if (std::max(std::abs(i), std::abs(j)) == ring)
                        seeds.push_back(&m_seeds[size_t((row + j - m_bottom) * (m_right - m_left + 1)) +
                                                 size_t(column + i - m_left)]);
                }
            }
        }
    }

private:
    [[nodiscard]] Seed seedIn(int column, int row) const
    {
        const quint32 hash = PixelMath::cellHash(column, row);
        const quint32 more = PixelMath::scrambled(hash);
        const QPointF place = m_plan.grid.corner + m_plan.grid.pitch * QPointF(column + double(PixelMath::unit(hash)),
                                                                               row + double(PixelMath::unit(more)));
        return {float(place.x() - m_area.left),
                float(m_plan.height - place.y() - m_area.top),
                PixelMath::scrambled(more),
                {}};
    }
    [[nodiscard]] static Pixel meanOf(VipsRegion &in, const Stretch &across, const Stretch &down)
    {
        std::array<double, 4> sum{};
        double weights = 0;
        for (int y = down.first; y <= down.last; ++y) {
            const int inY = std::clamp(y, 0, in.im->Ysize - 1);
            for (int x = across.first; x <= across.last; ++x) {
                const Pixel &pixel = *pixelAt(in, std::clamp(x, 0, in.im->Xsize - 1), inY);
                const double weight = shareOf(across, x) * shareOf(down, y);
                sum = {sum[0] + weight * double(pixel.r), sum[1] + weight * double(pixel.g),
                       sum[2] + weight * double(pixel.b), sum[3] + weight * double(pixel.a)};
                weights += weight;
            }
        }
        const auto part = [&](size_t i) { return float(sum[i] / weights); };
        return {part(0), part(1), part(2), part(3)};
    }

    const Plan &m_plan;
    VipsRect m_area;
    int m_left;
    int m_right;
    int m_bottom;
    int m_top;
    std::vector<Seed> m_seeds; // row by row, upward
};

bool fillPiece(VipsRegion &out, VipsRegion &in, const Plan &plan, const std::function<void(const Run &)> &paint)
{
    const VipsRect &area = out.valid;
    Patch patch(area, plan);
    if (!patch.takeColors(in))
        return false;
    std::vector<const Seed *> seeds;
    for (int y = area.top; y < VIPS_RECT_BOTTOM(&area); ++y) {
        const int row = patch.rowAt(y);
        for (int x = area.left, end = x; x < VIPS_RECT_RIGHT(&area); x = end) {
            const int column = patch.columnAt(x);
            for (end = x + 1; end < VIPS_RECT_RIGHT(&area) && patch.columnAt(end) == column;)
                ++end;
            patch.findAround(column, row, seeds);
            paint({pixelAt(out, x, y), end - x, float(x - area.left) + 0.5F, float(y - area.top) + 0.5F, seeds});
        }
    }
    return true;
}

}

bool Seeds::addPainted(WorkingImage &image, const Grid &grid, const std::function<void(const Run &run)> &paint)
{
    constexpr double enough = 5;
    const QSize size = image.size();
    Grid limited = grid;
    limited.meanSide = std::min(grid.meanSide, 2.0 * std::max(size.width(), size.height()));
    const Plan plan{limited, size.height(), Reduction::factorFor(limited.meanSide, enough)};
    return image.setAlpha(WorkingImage::Alpha::Premultiplied) &&
           (plan.factor <= 1 || Reduction::addSmaller(image, plan.factor)) && image.keepPieces() &&
           image.addStep(size, WorkingImage::Pieces::Tiles,
                         [=](VipsRegion &out, VipsRegion *const *in) { return fillPiece(out, *in[0], plan, paint); });
}
