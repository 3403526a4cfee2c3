#include "EdgeFilters.h"

#include "FilterValues.h"
#include "Halftone.h"
#include "Neighbours.h"
#include "PixelMath.h"
#include "Plane.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

using Alpha = WorkingImage::Alpha;
using PixelMath::clamped;
using PixelMath::smooth;

struct Slopes
{
    Pixel across;
    Pixel up;
};

template<size_t side>
struct SlopeKernel
{
    std::array<float, side> slope;
    std::array<float, side> mean;
};

// `middle` is the pixel in the region of neighbours.
template<size_t side>
Slopes slopesAt(VipsRegion &in, int left, int top, const SlopeKernel<side> &kernel)
{
    Slopes slopes;
    const auto add = [](Pixel &sum, const Pixel &pixel, float weight) {
        sum = {sum.r + weight * pixel.r, sum.g + weight * pixel.g, sum.b + weight * pixel.b, 0};
    };
    for (size_t row = 0; row < side; ++row) {
        const Pixel *from = pixelAt(in, left, top + int(row));
        for (size_t column = 0; column < side; ++column) {
            add(slopes.across, from[column], kernel.slope[column] * kernel.mean[row]);
            add(slopes.up, from[column], -kernel.slope[row] * kernel.mean[column]);
        }
    }
    return slopes;
}

// Adds a step `function(slopes, alpha)`.
template<size_t side, typename Function>
bool addSlopes(WorkingImage &image, const SlopeKernel<side> &kernel, Function function)
{
    constexpr int margin = int(side) / 2;
    return Neighbours::addStep(image, margin, [=](VipsRegion &out, VipsRegion &in) {
        const VipsRect &area = out.valid;
        for (int y = area.top; y < VIPS_RECT_BOTTOM(&area); ++y) {
            for (int x = area.left; x < VIPS_RECT_RIGHT(&area); ++x) {
                const float alpha = pixelAt(in, x + margin, y + margin)->a;
                *pixelAt(out, x, y) = function(slopesAt(in, x, y, kernel), alpha);
            }
        }
    });
}

constexpr SlopeKernel<3> kSobel{{-1, 0, 1}, {1, 2, 1}};

}

bool Edges::edges(WorkingImage &image, const FilterValues &values)
{
    const auto strength = float(values.number("inputIntensity") / 4);
    const auto encode = [](Pixel &pixel) { PixelMath::eachColor(pixel, SrgbCurve::encoded); };
    const auto decode = [](Pixel &pixel) { PixelMath::eachColor(pixel, SrgbCurve::linear); };
    return PixelMath::addColorStep(image, encode) &&
           addSlopes(
               image, kSobel,
               [=](const Slopes &s, float alpha) {
                   const auto size = [=](float a, float b) { return clamped(strength * std::hypot(a, b)) * alpha; };
                   return Pixel{size(s.across.r, s.up.r), size(s.across.g, s.up.g), size(s.across.b, s.up.b), alpha};
               }) &&
           PixelMath::addColorStep(image, decode);
}

namespace {

float strongest(const Pixel &pixel)
{
    const auto isWeaker = [](float a, float b) { return std::fabs(a) < std::fabs(b); };
    return std::max({pixel.r, pixel.g, pixel.b}, isWeaker);
}

Pixel asColors(const Slopes &slopes, float)
{
    return {strongest(slopes.across), strongest(slopes.up), 0, 1};
}

}

bool Edges::sobelGradients(WorkingImage &image, const FilterValues &)
{
    return addSlopes(image, kSobel, asColors);
}

bool Edges::gaborGradients(WorkingImage &image, const FilterValues &)
{
    constexpr float sixth = 1.0F / 6;
    constexpr SlopeKernel<5> kernel{{-sixth, -2 * sixth, 0, 2 * sixth, sixth},
                                    {1.0F / 16, 4.0F / 16, 6.0F / 16, 4.0F / 16, 1.0F / 16}};
    return addSlopes(image, kernel, asColors);
}

bool Edges::edgeWork(WorkingImage &image, const FilterValues &values)
{
    const double radius = values.number("inputRadius");
    if (!image.setAlpha(Alpha::Straight) || !image.keepPieces(WorkingImage::Reading::Around))
        return false;
    WorkingImage spot = image;
    WorkingImage around = image;
    return Neighbours::addLightness(spot, radius / 3) && Neighbours::addLightness(around, 2 * radius) &&
           spot.combineWith(around, [](Pixel &own, const Pixel &mean) { own.r -= mean.r; }) &&
           image.combineWith(spot, [](Pixel &own, const Pixel &apart) {
               own = PixelMath::grey(smooth(-0.02F, 0.02F, apart.r + 0.02F), own.a);
           });
}

namespace {

// The ink of outlines: 1 where the light changes abruptly.
bool addOutlines(WorkingImage &image)
{
    return Neighbours::addLightness(image, 0) &&
           addSlopes(image, kSobel,
                     [](const Slopes &slopes, float alpha) {
                         const float steepness = std::hypot(slopes.across.r, slopes.up.r) / 4;
                         return PixelMath::grey(smooth(0.15F, 0.25F, steepness) * alpha, alpha);
                     }) &&
           image.setAlpha(Alpha::Straight);
}

// The share of light that printed dots leave in the shadows.
bool addDots(WorkingImage &image, double width)
{
    constexpr double sharpness = 0.9;
    const float edge = Halftone::edgeOf(sharpness, width);
    return image.setAlpha(Alpha::Straight) && image.addPlacedStep([=](Pixel &pixel, QPointF place) {
        const float light = luminance(pixel);
        const auto level = float(Halftone::dots(Plane::turned(place, -kPi / 4) / width));
        const float dots = 1 - 0.35F * (1 - Halftone::printed(light, level, edge));
        pixel = PixelMath::grey(SrgbCurve::encoded(light) < 0.6F ? dots : 1, pixel.a);
    });
}

// Few and strong encoded colours.
void flatten(Pixel &pixel)
{
    constexpr float steps = 5;
    PixelMath::eachColor(pixel, SrgbCurve::encoded);
    PixelMath::eachColor(pixel, [](float c) { return std::round(clamped(c) * steps) / steps; });
    pixel = PixelMath::mixed(PixelMath::grey(luminance(pixel), pixel.a), pixel, 1.2F);
}

}

bool Edges::comicEffect(WorkingImage &image, const FilterValues &values)
{
    if (!image.setAlpha(Alpha::Straight) || !image.keepPieces(WorkingImage::Reading::Around))
        return false;
    WorkingImage outlines = image;
    WorkingImage dots = image;
    const double width = 6 * values.scale();
    return addOutlines(outlines) && addDots(dots, width) && Neighbours::addMedian(image) &&
           PixelMath::addColorStep(image, flatten) &&
           image.combineWith(dots,
                             [](Pixel &own, const Pixel &share) {
                                 PixelMath::eachColor(own, [&](float c) { return c * share.r; });
                             }) &&
           image.combineWith(outlines, [](Pixel &own, const Pixel &ink) {
               PixelMath::eachColor(own, [&](float c) { return SrgbCurve::linear(c * (1 - ink.r)); });
           });
}
