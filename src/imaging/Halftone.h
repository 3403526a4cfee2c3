#pragma once

#include "PixelMath.h"

#include <QPointF>

#include <cmath>
#include <numbers>

/// Screens that print light as black and white.
namespace Halftone {

/// 1 at whole numbers, 0 between them.
[[nodiscard]] inline double wave(double x)
{
    return 0.5 + 0.5 * std::cos(2 * std::numbers::pi * x);
}

/// A screen of dots, one apart.
[[nodiscard]] inline double dots(QPointF u)
{
    return (wave(u.x()) + wave(u.y())) / 2;
}

/// How soft a screen's edges are, in levels of light; `width` in pixels.
[[nodiscard]] inline float edgeOf(double sharpness, double width)
{
    return float(std::max(0.5 * (1 - sharpness), 1 / (2 * width)));
}

/// What becomes of light where the screen lets through what is lighter than `level`.
[[nodiscard]] inline float printed(float light, float level, float edge)
{
    return PixelMath::smooth(level - edge, level + edge, PixelMath::clamped(light) * (1 + 2 * edge) - edge);
}

}
