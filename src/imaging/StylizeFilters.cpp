#include "Cells.h"
#include "FilterValues.h"
#include "Neighbours.h"
#include "PixelMath.h"
#include "Sampling.h"

#include <algorithm>
#include <cmath>

namespace {

using Alpha = WorkingImage::Alpha;
using PixelMath::clamped;
using PixelMath::smooth;

// Adds part of what a blurred copy has more (or, with the other `limit`, less).
template<typename Limit>
bool addGlow(WorkingImage &image, const FilterValues &values, Limit limit)
{
    const auto intensity = float(values.number("inputIntensity"));
    if (!image.setAlpha(Alpha::Premultiplied))
        return false;
    WorkingImage blurred = image;
    return Neighbours::addGaussian(blurred, values.number("inputRadius")) && blurred.setAlpha(Alpha::Premultiplied) &&
           image.combineWith(blurred, [=](Pixel &own, const Pixel &mean) {
               own.r += intensity * limit(mean.r - own.r);
               own.g += intensity * limit(mean.g - own.g);
               own.b += intensity * limit(mean.b - own.b);
           });
}

bool bloom(WorkingImage &image, const FilterValues &values)
{
    return addGlow(image, values, [](float more) { return std::max(more, 0.0F); });
}

bool gloom(WorkingImage &image, const FilterValues &values)
{
    return addGlow(image, values, [](float more) { return std::min(more, 0.0F); });
}

// The encoded luminance of the image, blurred.
bool addLightness(WorkingImage &image, double deviation)
{
    return image.setAlpha(Alpha::Straight) && image.addPixelStep([](Pixel &pixel) {
        pixel = PixelMath::grey(SrgbCurve::encoded(luminance(pixel)), pixel.a);
    }) && Neighbours::addGaussian(image, deviation) &&
           image.setAlpha(Alpha::Straight);
}

bool edgeWork(WorkingImage &image, const FilterValues &values)
{
    const double radius = values.number("inputRadius");
    if (!image.setAlpha(Alpha::Straight))
        return false;
    WorkingImage spot = image;
    WorkingImage around = image;
    return addLightness(spot, radius / 3) && addLightness(around, 2 * radius) &&
           spot.combineWith(around, [](Pixel &own, const Pixel &mean) { own.r -= mean.r; }) &&
           image.combineWith(spot, [](Pixel &own, const Pixel &apart) {
               own = PixelMath::grey(smooth(-0.02F, 0.02F, apart.r + 0.02F), own.a);
           });
}

bool highlightShadowAdjust(WorkingImage &image, const FilterValues &values)
{
    const auto highlight = float(1 - values.number("inputHighlightAmount", 0, 10));
    const auto shadow = float(values.number("inputShadowAmount", -10, 10));
    if (!image.setAlpha(Alpha::Straight))
        return false;
    WorkingImage lightness = image;
    return addLightness(lightness, values.number("inputRadius")) &&
           image.combineWith(lightness, [=](Pixel &own, const Pixel &light) {
               const float dark = 1 - smooth(0, 0.5F, light.r);
               const float stops = 1.5F * (shadow * dark - highlight * smooth(0.5F, 1, light.r));
               const float factor = std::exp2(stops);
               PixelMath::eachColor(own, [&](float c) { return c * factor; });
           });
}

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

bool edges(WorkingImage &image, const FilterValues &values)
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

float strongest(const Pixel &pixel)
{
    const auto isWeaker = [](float a, float b) { return std::fabs(a) < std::fabs(b); };
    return std::max({pixel.r, pixel.g, pixel.b}, isWeaker);
}

Pixel asColors(const Slopes &slopes, float)
{
    return {strongest(slopes.across), strongest(slopes.up), 0, 1};
}

bool sobelGradients(WorkingImage &image, const FilterValues &)
{
    return addSlopes(image, kSobel, asColors);
}

bool gaborGradients(WorkingImage &image, const FilterValues &)
{
    constexpr float sixth = 1.0F / 6;
    constexpr SlopeKernel<5> kernel{{-sixth, -2 * sixth, 0, 2 * sixth, sixth},
                                    {1.0F / 16, 4.0F / 16, 6.0F / 16, 4.0F / 16, 1.0F / 16}};
    return addSlopes(image, kernel, asColors);
}

bool pixellate(WorkingImage &image, const FilterValues &values)
{
    const QPointF corner = values.point("inputCenter");
    const double side = std::max(values.number("inputScale"), values.scale());
    return Cells::addMeans(image, side, [=](QPointF place) {
        const QPointF cell = (place - corner) / side;
        return Cells::Cell{std::floor(cell.x()), std::floor(cell.y())};
    });
}

bool hexagonalPixellate(WorkingImage &image, const FilterValues &values)
{
    const QPointF center = values.point("inputCenter");
    const double pitch = values.number("inputScale");
    if (pitch <= values.scale())
        return true;
    return Cells::addMeans(image, pitch, [=](QPointF place) {
        const QPointF u = (place - center) / pitch;
        const double rowHeight = std::numbers::sqrt3 / 2;
        Cells::Cell best{};
        double least = 4;
        for (int i = 0; i < 2; ++i) {
            const double row = std::floor(u.y() / rowHeight) + i;
            const double column = std::round(u.x() - row / 2);
            const double distance = std::hypot(u.x() - column - row / 2, u.y() - row * rowHeight);
            if (distance < least) {
                least = distance;
                best = {column, row};
            }
        }
        return best;
    });
}

// The seed nearest to a place, of a grid with one seed somewhere in each square; in sides of squares.
QPointF nearestSeed(QPointF place)
{
    const int column = int(std::floor(place.x()));
    const int row = int(std::floor(place.y()));
    QPointF best;
    double least = 100;
    for (int j = row - 2; j <= row + 2; ++j) {
        for (int i = column - 2; i <= column + 2; ++i) {
            const quint32 hash = PixelMath::cellHash(i, j);
            const QPointF seed(i + double(PixelMath::unit(hash)),
                               j + double(PixelMath::unit(PixelMath::scrambled(hash))));
            const QPointF apart = place - seed;
            const double distance = QPointF::dotProduct(apart, apart);
            if (distance < least) {
                least = distance;
                best = seed;
            }
        }
    }
    return best;
}

bool crystallize(WorkingImage &image, const FilterValues &values)
{
    const double side = values.number("inputRadius");
    const QPointF center = values.point("inputCenter");
    if (side <= values.scale())
        return true;
    return Neighbours::addBox(image, side) && image.keepPieces() &&
           Sampling::addMapped(image, image.size(), Sampling::Edge::Clamp,
                               [=](QPointF place) { return center + side * nearestSeed((place - center) / side); });
}

const FilterTable kFilters{
    {"CIBloom",
     QT_TRANSLATE_NOOP("FilterLibrary", "Bloom"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Softens edges and lets light areas glow."),
     {{"inputRadius", QT_TRANSLATE_NOOP("FilterLibrary", "Radius"), InputKind::Pixels, 10.0, 0.0, 0.0, 100.0},
      {"inputIntensity", QT_TRANSLATE_NOOP("FilterLibrary", "Intensity"), InputKind::Number, 0.5, 0.0, 0.0, 1.0}},
     bloom},
    {"CICrystallize",
     QT_TRANSLATE_NOOP("FilterLibrary", "Crystallize"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Breaks the picture into one-coloured polygons."),
     {{"inputRadius", QT_TRANSLATE_NOOP("FilterLibrary", "Radius"), InputKind::Pixels, 20.0, 1.0, 1.0, 100.0},
      {"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}}},
     crystallize},
    {"CIEdges",
     QT_TRANSLATE_NOOP("FilterLibrary", "Edges"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Shows the edges of the picture in colour on black."),
     {{"inputIntensity", QT_TRANSLATE_NOOP("FilterLibrary", "Intensity"), InputKind::Number, 1.0, {}, 0.0, 10.0}},
     edges},
    {"CIEdgeWork",
     QT_TRANSLATE_NOOP("FilterLibrary", "Edge Work"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Renders the picture in black and white like a woodcut."),
     {{"inputRadius", QT_TRANSLATE_NOOP("FilterLibrary", "Radius"), InputKind::Pixels, 3.0, {}, 0.0, 20.0}},
     edgeWork},
    {"CIGloom",
     QT_TRANSLATE_NOOP("FilterLibrary", "Gloom"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Dulls the light areas of the picture."),
     {{"inputRadius", QT_TRANSLATE_NOOP("FilterLibrary", "Radius"), InputKind::Pixels, 10.0, 0.0, 0.0, 100.0},
      {"inputIntensity", QT_TRANSLATE_NOOP("FilterLibrary", "Intensity"), InputKind::Number, 0.5, 0.0, 0.0, 1.0}},
     gloom},
    {"CIHexagonalPixellate",
     QT_TRANSLATE_NOOP("FilterLibrary", "Hexagonal Pixelate"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Breaks the picture into one-coloured hexagons."),
     {{"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputScale", QT_TRANSLATE_NOOP("FilterLibrary", "Scale"), InputKind::Pixels, 8.0, 1.0, 1.0, 100.0}},
     hexagonalPixellate},
    {"CIHighlightShadowAdjust",
     QT_TRANSLATE_NOOP("FilterLibrary", "Highlight and Shadow Adjust"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Recovers highlights and lifts or deepens shadows."),
     {{"inputHighlightAmount", QT_TRANSLATE_NOOP("FilterLibrary", "Highlight Amount"), InputKind::Number, 1.0, 1.0, 0.3,
       1.0},
      {"inputShadowAmount", QT_TRANSLATE_NOOP("FilterLibrary", "Shadow Amount"), InputKind::Number, 0.0, 0.0, -1.0,
       1.0},
      {"inputRadius", QT_TRANSLATE_NOOP("FilterLibrary", "Radius"), InputKind::Pixels, 0.0, 0.0, 0.0, 10.0}},
     highlightShadowAdjust},
    {"CIPixellate",
     QT_TRANSLATE_NOOP("FilterLibrary", "Pixelate"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Breaks the picture into one-coloured squares."),
     {{"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputScale", QT_TRANSLATE_NOOP("FilterLibrary", "Scale"), InputKind::Pixels, 8.0, {}, 1.0, 100.0}},
     pixellate},
    {"CIGaborGradients",
     QT_TRANSLATE_NOOP("FilterLibrary", "Gabor Gradients"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Shows horizontal and vertical gradients in red and green."),
     {},
     gaborGradients},
    {"CISobelGradients",
     QT_TRANSLATE_NOOP("FilterLibrary", "Sobel Gradients"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Shows horizontal and vertical Sobel gradients in red and green."),
     {},
     sobelGradients},
};

}

const FilterTable &stylizeFilters()
{
    return kFilters;
}
