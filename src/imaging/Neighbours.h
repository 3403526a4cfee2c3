#pragma once

#include "WorkingImage.h"

#include <functional>
#include <vector>

/// Steps whose pixels depend on those around them. Beyond the edges the nearest pixel repeats; alpha weighs. Lengths
/// are in pixels of the rendering.
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
/// Cuts that off again.
[[nodiscard]] bool removeMargin(WorkingImage &image, int margin, QSize size);

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

}
