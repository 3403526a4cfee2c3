#pragma once

#include "WorkingImage.h"

#include <functional>

/// Where lengths are large, a smaller picture does.
namespace Reduction {

/// How many times smaller a picture may be, so that `length` becomes at most `enough`.
[[nodiscard]] int factorFor(double length, double enough);
/// What becomes of the pixels of a square.
enum class Merging { Mean, Least, Most };
/// Makes the image smaller: one pixel of every square of `factor` pixels, cut at the right and at the bottom.
[[nodiscard]] bool addSmaller(WorkingImage &image, int factor, Merging merging = Merging::Mean);
enum class Curve {
    Straight, ///< through the pixels
    Smooth,   ///< beside them: blurs as three means of one pixel's width do
};
/// Makes an image that has been made smaller by `factor` as large as it was.
[[nodiscard]] bool addLarger(WorkingImage &image, QSize size, int factor, Curve curve);
struct Manner
{
    int factor;
    Merging merging = Merging::Mean;
    Curve curve = Curve::Straight;
};
/// The image made smaller, `step` on that, and large again. The smaller image has a border of one pixel that repeats
/// the edges' pixels; it is not there when the factor is 1.
[[nodiscard]] bool addReduced(WorkingImage &image, const Manner &manner,
                              const std::function<bool(WorkingImage &)> &step);

}
