#pragma once

#include "WorkingImage.h"

#include <functional>

/// Steps that make an image larger or smaller by any factor.
namespace Resampling {

/// How a pixel weighs at a distance, in pixels of the smaller of both images.
struct Kernel
{
    std::function<double(double distance)> weight;
    double reach; ///< from there on it weighs nothing
};

[[nodiscard]] Kernel lanczos();
/// The family of cubic curves with these two parameters.
[[nodiscard]] Kernel cubic(double b, double c);

/// Scales the image to that size, at least 1 x 1. Beyond the edges the nearest pixel repeats. Of an image that becomes
/// far larger than the frame no more is kept, from the left bottom corner, than filters behind may make use of.
[[nodiscard]] bool addScaled(WorkingImage &image, double width, double height, const Kernel &kernel);

}
