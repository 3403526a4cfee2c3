#include "LabFilters.h"

#include "FilterValues.h"
#include "PixelMath.h"

#include <cmath>

namespace {

using PixelMath::addColorStep;

// D65, of the linear colours' XYZ.
constexpr float kWhiteX = 0.95047F;
constexpr float kWhiteZ = 1.08883F;
constexpr float kLabEdge = 6.0F / 29;

float labRoot(float t)
{
    return t > kLabEdge * kLabEdge * kLabEdge ? std::cbrt(t) : t / (3 * kLabEdge * kLabEdge) + 4.0F / 29;
}

float labCube(float t)
{
    return t > kLabEdge ? t * t * t : 3 * kLabEdge * kLabEdge * (t - 4.0F / 29);
}

}

bool Lab::fromRgb(WorkingImage &image, const FilterValues &values)
{
    const bool isNormalized = values.number("inputNormalize") != 0;
    return addColorStep(image, [=](Pixel &pixel) {
        const auto [r, g, b, a] = pixel;
        const float x = labRoot((0.4124564F * r + 0.3575761F * g + 0.1804375F * b) / kWhiteX);
        const float y = labRoot(0.2126729F * r + 0.7151522F * g + 0.0721750F * b);
        const float z = labRoot((0.0193339F * r + 0.1191920F * g + 0.9503041F * b) / kWhiteZ);
        pixel = {116 * y - 16, 500 * (x - y), 200 * (y - z), a};
        if (isNormalized)
            pixel = {pixel.r / 100, (pixel.g + 128) / 256, (pixel.b + 128) / 256, a};
    });
}

bool Lab::toRgb(WorkingImage &image, const FilterValues &values)
{
    const bool isNormalized = values.number("inputNormalize") != 0;
    return addColorStep(image, [=](Pixel &pixel) {
        if (isNormalized)
            pixel = {pixel.r * 100, pixel.g * 256 - 128, pixel.b * 256 - 128, pixel.a};
        const float middle = (pixel.r + 16) / 116;
        const float x = kWhiteX * labCube(middle + pixel.g / 500);
        const float y = labCube(middle);
        const float z = kWhiteZ * labCube(middle - pixel.b / 200);
        pixel = {3.2404542F * x - 1.5371385F * y - 0.4985314F * z, -0.9692660F * x + 1.8760108F * y + 0.0415560F * z,
                 0.0556434F * x - 0.2040259F * y + 1.0572252F * z, pixel.a};
    });
}
