#pragma once

#include "WorkingImage.h"

#include <functional>
#include <vector>

/// Steps whose pixels depend on those around them. Beyond the edges the nearest pixel repeats; alpha weighs.
/// Lengths are in pixels of the rendering; where they are large, a smaller picture does.
namespace Neighbours {

/// A pixel beside another, rows downward, and its weight.
struct Tap
{
    int x;
    int y;
    float weight;
};

/// Repeats the edges' pixels on all sides.
[[nodiscard]] bool addMargin(WorkingImage &image, int margin);

/// `function(out, in)` finds pixel (x, y) and those around it in `in` at (x + margin, y + margin).
using Function = std::function<void(VipsRegion &out, VipsRegion &in)>;
[[nodiscard]] bool addStep(WorkingImage &image, int margin, Function function);

/// The mean of a square with that side.
[[nodiscard]] bool addBox(WorkingImage &image, double side);
/// The weighted mean of taps.
[[nodiscard]] bool addWeighted(WorkingImage &image, std::vector<Tap> taps);

enum class Extreme { Least, Most };
/// The least or most, component by component, of the rows around a pixel: as far to either side as `halfWidths` tells,
/// from the highest row to the lowest.
[[nodiscard]] bool addExtreme(WorkingImage &image, Extreme extreme, std::vector<int> halfWidths);

/// Component by component, the value in the middle of those of a pixel and the eight around it.
[[nodiscard]] bool addMedian(WorkingImage &image);

/// Turns the image into its encoded luminance, in all colours, and blurs that.
[[nodiscard]] bool addLightness(WorkingImage &image, double deviation);

/// How many times smaller a picture may be, so that `length` becomes at most `enough`.
[[nodiscard]] int reductionFor(double length, double enough);
/// Makes the image smaller: the mean of squares of `factor` pixels, cut at the right and at the bottom.
[[nodiscard]] bool addSmaller(WorkingImage &image, int factor);
enum class Curve {
    Straight, ///< through the pixels
    Smooth,   ///< beside them: blurs as three means of one pixel's width do
};
/// Makes an image that has been made smaller by `factor` as large as it was.
[[nodiscard]] bool addLarger(WorkingImage &image, QSize size, int factor, Curve curve);
/// The image made smaller, `step` on that, and large again.
[[nodiscard]] bool addReduced(WorkingImage &image, int factor, const std::function<bool(WorkingImage &)> &step);

}
