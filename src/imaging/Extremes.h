#pragma once

#include "WorkingImage.h"

#include <algorithm>

/// The least or the most of pixels, component by component.
namespace Extremes {

using Better = float (*)(float, float);

[[nodiscard]] inline Better betterOf(bool isMost)
{
    return isMost ? [](float a, float b) { return std::max(a, b); } : [](float a, float b) { return std::min(a, b); };
}

[[nodiscard]] inline Pixel better(const Pixel &a, const Pixel &b, Better choose)
{
    return {choose(a.r, b.r), choose(a.g, b.g), choose(a.b, b.b), choose(a.a, b.a)};
}

}
