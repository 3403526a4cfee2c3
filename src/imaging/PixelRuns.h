#pragma once

#include "WorkingImage.h"

#include <algorithm>
#include <exception>
#include <vector>

/// How the pixels of working images are computed.
namespace PixelRuns {

/// What libvips is told of `run`. It is C: nothing may be thrown through it.
template<typename Run>
int guarded(Run run)
{
    try {
        return run() ? 0 : -1;
    } catch (const std::exception &) {
        return -1; // memory is short
    }
}

/// Takes the pixels of an area, a block at a time, from `read(block, count, x, y)` through the steps to
/// `finish(block, count, x, y)`.
template<typename Read, typename Finish>
void run(const VipsRect &area, const std::vector<WorkingImage::PointStep> &steps, Read read, Finish finish)
{
    PixelBlock block{}; // what is behind the last pixels is computed with, too
    for (int y = area.top; y < VIPS_RECT_BOTTOM(&area); ++y) {
        for (int x = area.left; x < VIPS_RECT_RIGHT(&area); x += PixelBlock::kMost) {
            const int count = std::min(PixelBlock::kMost, VIPS_RECT_RIGHT(&area) - x);
            read(block, count, x, y);
            for (const WorkingImage::PointStep &step : steps)
                step(block, count, x, y);
            finish(block, count, x, y);
        }
    }
}

void load(PixelBlock &to, const Pixel *from, int count);
/// What is no number, or larger than makes sense, becomes what can be computed with.
void store(Pixel *to, const PixelBlock &from, int count);

/// For a row: the same as storing does.
void makeSane(Pixel *row, int count);

/// Reads from a piece for `run`.
[[nodiscard]] inline auto from(VipsRegion &in)
{
    return [&in](PixelBlock &block, int count, int x, int y) { load(block, pixelAt(in, x, y), count); };
}

/// Finishes into a piece.
[[nodiscard]] inline auto into(VipsRegion &out)
{
    return [&out](const PixelBlock &block, int count, int x, int y) { store(pixelAt(out, x, y), block, count); };
}

}
