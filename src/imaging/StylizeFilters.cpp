#include "Blurring.h"
#include "EdgeFilters.h"
#include "FilterValues.h"
#include "MosaicFilters.h"
#include "Neighbours.h"
#include "PixelMath.h"

#include <algorithm>
#include <cmath>

namespace {

using Alpha = WorkingImage::Alpha;
using PixelMath::smooth;

// Adds part of what a blurred copy has more (or, with the other `limit`, less).
template<typename Limit>
bool addGlow(WorkingImage &image, const FilterValues &values, Limit limit)
{
    const auto intensity = float(values.number("inputIntensity"));
    return Blurring::addWithGaussian(image, values.number("inputRadius"), [=](Pixel &own, const Pixel &mean) {
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

bool highlightShadowAdjust(WorkingImage &image, const FilterValues &values)
{
    const auto highlight = float(1 - values.number("inputHighlightAmount", 0, 10));
    const auto shadow = float(values.number("inputShadowAmount", -10, 10));
    if (!image.setAlpha(Alpha::Straight) || !image.keepPieces(WorkingImage::Reading::Around))
        return false;
    WorkingImage lightness = image;
    return Neighbours::addLightness(lightness, values.number("inputRadius")) &&
           image.combineWith(lightness, [=](Pixel &own, const Pixel &light) {
               const float dark = 1 - smooth(0, 0.5F, light.r);
               const float stops = 1.5F * (shadow * dark - highlight * smooth(0.5F, 1, light.r));
               const float factor = std::exp2(stops);
               PixelMath::eachColor(own, [&](float c) { return c * factor; });
           });
}

bool sampleNearest(WorkingImage &image, const FilterValues &)
{
    image.sampleNearestNext();
    return true;
}

const FilterTable kFilters{
    {"CIBloom",
     QT_TRANSLATE_NOOP("FilterLibrary", "Bloom"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Softens edges and lets light areas glow."),
     {{"inputRadius", QT_TRANSLATE_NOOP("FilterLibrary", "Radius"), InputKind::Pixels, 10.0, 0.0, 0.0, 100.0},
      {"inputIntensity", QT_TRANSLATE_NOOP("FilterLibrary", "Intensity"), InputKind::Number, 0.5, 0.0, 0.0, 1.0}},
     bloom},
    {"CIComicEffect",
     QT_TRANSLATE_NOOP("FilterLibrary", "Comic Effect"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Redraws the picture like a printed comic with outlines and dots."),
     {},
     Edges::comicEffect},
    {"CICrystallize",
     QT_TRANSLATE_NOOP("FilterLibrary", "Crystallize"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Breaks the picture into one-coloured polygons."),
     {{"inputRadius", QT_TRANSLATE_NOOP("FilterLibrary", "Radius"), InputKind::Pixels, 20.0, 1.0, 1.0, 100.0},
      {"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}}},
     Mosaic::crystallize},
    {"CIEdges",
     QT_TRANSLATE_NOOP("FilterLibrary", "Edges"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Shows the edges of the picture in colour on black."),
     {{"inputIntensity", QT_TRANSLATE_NOOP("FilterLibrary", "Intensity"), InputKind::Number, 1.0, {}, 0.0, 10.0}},
     Edges::edges},
    {"CIEdgeWork",
     QT_TRANSLATE_NOOP("FilterLibrary", "Edge Work"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Renders the picture in black and white like a woodcut."),
     {{"inputRadius", QT_TRANSLATE_NOOP("FilterLibrary", "Radius"), InputKind::Pixels, 3.0, {}, 0.0, 20.0}},
     Edges::edgeWork},
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
     Mosaic::hexagonalPixellate},
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
     Mosaic::pixellate},
    {"CIPointillize",
     QT_TRANSLATE_NOOP("FilterLibrary", "Pointillize"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Redraws the picture with round dots of paint."),
     {{"inputRadius", QT_TRANSLATE_NOOP("FilterLibrary", "Radius"), InputKind::Pixels, 20.0, 1.0, 1.0, 100.0},
      {"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}}},
     Mosaic::pointillize},
    {"CISampleNearest",
     QT_TRANSLATE_NOOP("FilterLibrary", "Sample Nearest"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Makes the next geometric filter sample without interpolation."),
     {},
     sampleNearest},
    {"CIGaborGradients",
     QT_TRANSLATE_NOOP("FilterLibrary", "Gabor Gradients"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Shows horizontal and vertical gradients in red and green."),
     {},
     Edges::gaborGradients},
    {"CISobelGradients",
     QT_TRANSLATE_NOOP("FilterLibrary", "Sobel Gradients"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Shows horizontal and vertical Sobel gradients in red and green."),
     {},
     Edges::sobelGradients},
};

}

const FilterTable &stylizeFilters()
{
    return kFilters;
}
