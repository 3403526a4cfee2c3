#pragma once

#include "SrgbCurve.h"
#include "WorkingImage.h"

#include <algorithm>

/// What the functions of filters have in common.
namespace PixelMath {

[[nodiscard]] inline float clamped(float value)
{
    return std::clamp(value, 0.0F, 1.0F);
}

/// 0 up to `from`, 1 beyond `to`, a smooth curve between.
[[nodiscard]] inline float smooth(float from, float to, float x)
{
    const float t = clamped((x - from) / (to - from));
    return t * t * (3 - 2 * t);
}

[[nodiscard]] inline Pixel grey(float value, float alpha)
{
    return {value, value, value, alpha};
}

[[nodiscard]] inline Pixel mixed(const Pixel &a, const Pixel &b, float share)
{
    return {a.r + share * (b.r - a.r), a.g + share * (b.g - a.g), a.b + share * (b.b - a.b), a.a + share * (b.a - a.a)};
}

/// Replaces red, green and blue by `function` of each.
template<typename Function>
void eachColor(Pixel &pixel, Function function)
{
    pixel.r = function(pixel.r);
    pixel.g = function(pixel.g);
    pixel.b = function(pixel.b);
}

/// Adds a step on pixels whose colours alpha is not multiplied into.
template<typename Function>
[[nodiscard]] bool addColorStep(WorkingImage &image, Function function)
{
    return image.setAlpha(WorkingImage::Alpha::Straight) && image.addPixelStep(function);
}

/// The same on the encoded values of sRGB.
template<typename Function>
[[nodiscard]] bool addEncodedStep(WorkingImage &image, Function function)
{
    return image.setEncoded() && image.addPixelStep(function);
}

/// A linear function of colours; alpha stays.
struct Matrix
{
    Pixel ofRed; ///< what red adds to the colours
    Pixel ofGreen;
    Pixel ofBlue;
    Pixel more; ///< is added to all

    [[nodiscard]] Pixel operator()(const Pixel &p) const
    {
        return {p.r * ofRed.r + p.g * ofGreen.r + p.b * ofBlue.r + more.r,
                p.r * ofRed.g + p.g * ofGreen.g + p.b * ofBlue.g + more.g,
                p.r * ofRed.b + p.g * ofGreen.b + p.b * ofBlue.b + more.b, p.a};
    }
};

/// One number from another, without visible relation.
[[nodiscard]] inline quint32 scrambled(quint32 n)
{
    n = (n ^ (n >> 16)) * 0x7feb352dU;
    n = (n ^ (n >> 15)) * 0x846ca68bU;
    return n ^ (n >> 16);
}

/// A number for a cell of a grid, the same on every machine.
[[nodiscard]] inline quint32 cellHash(int x, int y, quint32 salt = 0)
{
    return scrambled(scrambled(scrambled(quint32(x) + 0x9e3779b9U) ^ quint32(y)) + salt);
}

/// 0 up to, but not including, 1.
[[nodiscard]] inline float unit(quint32 hash)
{
    return float(hash >> 8) / float(1U << 24);
}

}
