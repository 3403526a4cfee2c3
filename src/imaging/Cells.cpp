#include "Cells.h"

#include "Reduction.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>

namespace {

using Cells::Cell;

struct Sum
{
    std::array<double, 4> parts = {};
    double count = 0;

    void add(const Pixel &pixel)
    {
        parts = {parts[0] + double(pixel.r), parts[1] + double(pixel.g), parts[2] + double(pixel.b),
                 parts[3] + double(pixel.a)};
        ++count;
    }
    [[nodiscard]] Pixel mean() const
    {
        const auto part = [&](size_t i) { return float(parts[i] / count); };
        return {part(0), part(1), part(2), part(3)};
    }
};

/// The grid as it lies over a picture that may have been made smaller by `factor`.
struct Grid
{
    std::function<Cell(QPointF)> cellAt;
    QSize full;
    int factor;
    int reach; ///< pixels of the smaller picture to which a cell may extend

    [[nodiscard]] Cell cellOf(int x, int y, int scale) const
    {
        return cellAt(QPointF((x + 0.5) * scale, full.height() - (y + 0.5) * scale));
    }
};

std::map<Cell, Sum> sumsIn(VipsRegion &in, const VipsRect &area, const Grid &grid)
{
    std::map<Cell, Sum> sums;
    for (int y = area.top; y < VIPS_RECT_BOTTOM(&area); ++y) {
        const Pixel *row = pixelAt(in, area.left, y);
        Cell cell;
        Sum *sum = nullptr;
        for (int x = 0; x < area.width; ++x) {
            const Cell next = grid.cellOf(area.left + x, y, grid.factor);
            if (!sum || next != cell)
                sum = &sums[cell = next];
            sum->add(row[x]);
        }
    }
    return sums;
}

bool fillCells(VipsRegion &out, VipsRegion &in, const Grid &grid)
{
    const VipsRect &area = out.valid;
    const int left = area.left / grid.factor;
    const int top = area.top / grid.factor;
    const VipsRect around{left - grid.reach, top - grid.reach, area.width / grid.factor + 2 * grid.reach + 2,
                          area.height / grid.factor + 2 * grid.reach + 2};
    const VipsRect whole{0, 0, in.im->Xsize, in.im->Ysize};
    VipsRect wanted{};
    vips_rect_intersectrect(&around, &whole, &wanted);
    if (vips_region_prepare(&in, &wanted) != 0)
        return false;
    const std::map<Cell, Sum> sums = sumsIn(in, wanted, grid);
    for (int y = area.top; y < VIPS_RECT_BOTTOM(&area); ++y) {
        for (int x = area.left; x < VIPS_RECT_RIGHT(&area); ++x) {
            const auto found = sums.find(grid.cellOf(x, y, 1));
            // The smaller picture may have no pixel in the sliver of a cell at the edge.
            *pixelAt(out, x, y) =
                found != sums.end() ? found->second.mean() : *pixelAt(in, x / grid.factor, y / grid.factor);
        }
    }
    return true;
}

}

bool Cells::addMeans(WorkingImage &image, double size, const std::function<Cell(QPointF)> &cellAt)
{
    constexpr double enough = 32;
    const QSize full = image.size();
    const double extent = std::min(2 * size, 2.0 * std::max(full.width(), full.height()));
    const int factor = Reduction::factorFor(extent, 2 * enough);
    if (!image.setAlpha(WorkingImage::Alpha::Premultiplied) ||
        (factor > 1 && !(Reduction::addSmaller(image, factor) && image.keepPieces())))
        return false;
    const Grid grid{cellAt, full, factor, int(std::ceil(extent / factor)) + 1};
    return image.addStep(full, WorkingImage::Pieces::Tiles,
                         [grid](VipsRegion &out, VipsRegion *const *in) { return fillCells(out, *in[0], grid); });
}
