#include "Blurring.h"
#include "FilmFilters.h"
#include "FilterValues.h"
#include "LabFilters.h"
#include "Neighbours.h"
#include "PixelMath.h"
#include "SrgbCurve.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace {

using PixelMath::addColorStep;
using PixelMath::addEncodedStep;
using PixelMath::clamped;
using PixelMath::eachColor;
using PixelMath::grey;
using PixelMath::mixed;
using PixelMath::smooth;

bool colorInvert(WorkingImage &image, const FilterValues &)
{
    return addColorStep(image, [](Pixel &pixel) { eachColor(pixel, [](float c) { return 1 - c; }); });
}

bool colorMonochrome(WorkingImage &image, const FilterValues &values)
{
    const Pixel color = values.color("inputColor");
    const auto intensity = float(values.number("inputIntensity"));
    return addColorStep(image, [=](Pixel &pixel) {
        const float light = luminance(pixel);
        pixel = mixed(pixel, {light * color.r, light * color.g, light * color.b, pixel.a}, intensity);
    });
}

bool colorPosterize(WorkingImage &image, const FilterValues &values)
{
    const auto steps = float(std::max(2.0, std::round(values.number("inputLevels"))) - 1);
    return addEncodedStep(image, [=](Pixel &pixel) {
        eachColor(pixel, [&](float c) { return std::round(clamped(c) * steps) / steps; });
    });
}

bool falseColor(WorkingImage &image, const FilterValues &values)
{
    const Pixel dark = values.color("inputColor0");
    const Pixel light = values.color("inputColor1");
    if (dark.a < 1 || light.a < 1)
        image.setMayBeClear();
    return addColorStep(image, [=](Pixel &pixel) {
        const float alpha = pixel.a;
        pixel = mixed(dark, light, clamped(luminance(pixel)));
        pixel.a *= alpha;
    });
}

bool maximumComponent(WorkingImage &image, const FilterValues &)
{
    return addColorStep(image, [](Pixel &pixel) { pixel = grey(std::max({pixel.r, pixel.g, pixel.b}), pixel.a); });
}

bool minimumComponent(WorkingImage &image, const FilterValues &)
{
    return addColorStep(image, [](Pixel &pixel) { pixel = grey(std::min({pixel.r, pixel.g, pixel.b}), pixel.a); });
}

bool sepiaTone(WorkingImage &image, const FilterValues &values)
{
    const auto intensity = float(values.number("inputIntensity"));
    constexpr PixelMath::Matrix brown{{0.393F, 0.349F, 0.272F}, {0.769F, 0.686F, 0.534F}, {0.189F, 0.168F, 0.131F}, {}};
    return addEncodedStep(image, [=](Pixel &pixel) {
        Pixel toned = brown(pixel);
        eachColor(toned, clamped);
        pixel = mixed(pixel, toned, intensity);
    });
}

// Darkens by `shade(squared distance from `center`)`.
template<typename Shade>
bool addShade(WorkingImage &image, QPointF center, Shade shade)
{
    return image.setAlpha(WorkingImage::Alpha::Straight) && image.addPlacedStep([=](Pixel &pixel, QPointF place) {
        const QPointF apart = place - center;
        const auto light = float(1 - shade(std::hypot(apart.x(), apart.y())));
        eachColor(pixel, [&](float c) { return c * light; });
    });
}

bool vignette(WorkingImage &image, const FilterValues &values)
{
    const QPointF center(image.size().width() / 2.0, image.size().height() / 2.0);
    const double reach = std::hypot(center.x(), center.y()) * std::max(values.number("inputRadius"), 0.01);
    const double intensity = values.number("inputIntensity");
    return addShade(image, center, [=](double distance) {
        const double part = std::min(distance / reach, 1.0);
        return intensity * part * part;
    });
}

bool vignetteEffect(WorkingImage &image, const FilterValues &values)
{
    const double radius = values.number("inputRadius");
    const double end = std::max(radius * (1 + 2 * values.number("inputFalloff")), radius + values.scale());
    const double intensity = values.number("inputIntensity");
    return addShade(image, values.point("inputCenter"), [=](double distance) {
        return intensity * double(smooth(float(radius), float(end), float(distance)));
    });
}

/// Encoded colours from dark to light, evenly apart.
template<size_t count>
bool addRamp(WorkingImage &image, const std::array<Pixel, count> &ramp, bool isNegative)
{
    return addColorStep(image, [=](Pixel &pixel) {
        const float light = SrgbCurve::encoded(clamped(luminance(pixel)));
        const float place = (isNegative ? 1 - light : light) * float(count - 1);
        const float alpha = pixel.a;
        pixel = ramp[0];
        for (size_t i = 1; i < count; ++i) {
            const float share = clamped(place - float(i - 1));
            pixel.r += share * (ramp[i].r - ramp[i - 1].r);
            pixel.g += share * (ramp[i].g - ramp[i - 1].g);
            pixel.b += share * (ramp[i].b - ramp[i - 1].b);
        }
        eachColor(pixel, SrgbCurve::linear);
        pixel.a = alpha;
    });
}

bool thermal(WorkingImage &image, const FilterValues &)
{
    constexpr std::array<Pixel, 5> ramp{
        {{0, 0, 0.25F}, {0.1F, 0, 0.85F}, {0.85F, 0, 0.45F}, {1, 0.6F, 0}, {1, 1, 0.8F}}};
    return addRamp(image, ramp, /*isNegative=*/false);
}

bool xRay(WorkingImage &image, const FilterValues &)
{
    constexpr std::array<Pixel, 3> ramp{{{0, 0, 0.03F}, {0.35F, 0.5F, 0.6F}, {0.92F, 0.98F, 1}}};
    return addRamp(image, ramp, /*isNegative=*/true);
}

bool dither(WorkingImage &image, const FilterValues &values)
{
    const auto strength = float(values.number("inputIntensity", -5, 5) / 2);
    return image.setAlpha(WorkingImage::Alpha::Straight) && image.addPointStep([=](Pixel &pixel, int x, int y) {
        quint32 channel = 0;
        eachColor(pixel, [&](float c) {
            const quint32 cell = PixelMath::cellHash(x, y, channel++);
            const float noise = PixelMath::unit(cell) + PixelMath::unit(PixelMath::scrambled(cell)) - 1;
            return SrgbCurve::linear(SrgbCurve::encoded(c) + strength * noise);
        });
    });
}

// The light of the paper everywhere, encoded: of the lightest around, smoothed.
bool addPaper(WorkingImage &image)
{
    constexpr double parts = 60;
    constexpr double smoothParts = 40;
    const double side = std::max(image.size().width(), image.size().height());
    const int half = int(std::round(side / parts / 2));
    return addColorStep(image, [](Pixel &pixel) { pixel = grey(SrgbCurve::encoded(luminance(pixel)), pixel.a); }) &&
           Neighbours::addExtreme(image, Neighbours::Extreme::Most, {half}) &&
           Neighbours::addExtreme(image, Neighbours::Extreme::Most, std::vector<int>(size_t(2 * half + 1), 0)) &&
           Blurring::addGaussian(image, side / smoothParts) && image.setAlpha(WorkingImage::Alpha::Straight);
}

bool documentEnhancer(WorkingImage &image, const FilterValues &values)
{
    const auto amount = float(values.number("inputAmount", 0, 10));
    if (!image.setAlpha(WorkingImage::Alpha::Straight) || !image.keepPieces(WorkingImage::Reading::Around))
        return false;
    WorkingImage paper = image;
    return addPaper(paper) && image.combineWith(paper, [=](Pixel &own, const Pixel &light) {
        const float white = std::max(light.r, 0.1F);
        eachColor(own, [&](float c) {
            const float seen = SrgbCurve::encoded(c);
            const float clean = clamped((seen / white - 0.5F) * 1.25F + 0.5F);
            return SrgbCurve::linear(clamped(seen + amount * (clean - seen)));
        });
    });
}

bool maskToAlpha(WorkingImage &image, const FilterValues &)
{
    image.setMayBeClear();
    return addColorStep(image, [](Pixel &pixel) { pixel = {1, 1, 1, pixel.a * clamped(luminance(pixel))}; });
}

const FilterTable kFilters{
    {"CIColorInvert",
     QT_TRANSLATE_NOOP("FilterLibrary", "Color Invert"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Inverts the colours."),
     {},
     colorInvert},
    {"CIColorMonochrome",
     QT_TRANSLATE_NOOP("FilterLibrary", "Color Monochrome"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Reduces the picture to shades of one colour."),
     {{"inputColor",
       QT_TRANSLATE_NOOP("FilterLibrary", "Color"),
       InputKind::Color,
       EffectColor{0.6, 0.45, 0.3, 1},
       {},
       {},
       {}},
      {"inputIntensity", QT_TRANSLATE_NOOP("FilterLibrary", "Intensity"), InputKind::Number, 1.0, 0.0, 0.0, 1.0}},
     colorMonochrome},
    {"CIColorPosterize",
     QT_TRANSLATE_NOOP("FilterLibrary", "Color Posterize"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Reduces each colour channel to a few levels."),
     {{"inputLevels", QT_TRANSLATE_NOOP("FilterLibrary", "Levels"), InputKind::Number, 6.0, 300.0, 2.0, 30.0}},
     colorPosterize},
    {"CIFalseColor",
     QT_TRANSLATE_NOOP("FilterLibrary", "False Color"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Maps luminance onto a ramp between two colours."),
     {{"inputColor0",
       QT_TRANSLATE_NOOP("FilterLibrary", "Color 1"),
       InputKind::Color,
       EffectColor{0.3, 0, 0, 1},
       {},
       {},
       {}},
      {"inputColor1",
       QT_TRANSLATE_NOOP("FilterLibrary", "Color 2"),
       InputKind::Color,
       EffectColor{1, 0.9, 0.8, 1},
       {},
       {},
       {}}},
     falseColor},
    {"CIMaximumComponent",
     QT_TRANSLATE_NOOP("FilterLibrary", "Maximum Component"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Turns the picture grey using the largest colour component."),
     {},
     maximumComponent},
    {"CIMinimumComponent",
     QT_TRANSLATE_NOOP("FilterLibrary", "Minimum Component"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Turns the picture grey using the smallest colour component."),
     {},
     minimumComponent},
    {"CIPhotoEffectChrome",
     QT_TRANSLATE_NOOP("FilterLibrary", "Photo Effect Chrome"),
     QT_TRANSLATE_NOOP("FilterLibrary", "A film look with strengthened colours."),
     {},
     Film::chrome},
    {"CIPhotoEffectFade",
     QT_TRANSLATE_NOOP("FilterLibrary", "Photo Effect Fade"),
     QT_TRANSLATE_NOOP("FilterLibrary", "A film look with weakened colours."),
     {},
     Film::fade},
    {"CIPhotoEffectInstant",
     QT_TRANSLATE_NOOP("FilterLibrary", "Photo Effect Instant"),
     QT_TRANSLATE_NOOP("FilterLibrary", "A look of instant film with shifted colours."),
     {},
     Film::instant},
    {"CIPhotoEffectMono",
     QT_TRANSLATE_NOOP("FilterLibrary", "Photo Effect Mono"),
     QT_TRANSLATE_NOOP("FilterLibrary", "A soft black-and-white film look with low contrast."),
     {},
     Film::mono},
    {"CIPhotoEffectNoir",
     QT_TRANSLATE_NOOP("FilterLibrary", "Photo Effect Noir"),
     QT_TRANSLATE_NOOP("FilterLibrary", "A hard black-and-white film look with high contrast."),
     {},
     Film::noir},
    {"CIPhotoEffectProcess",
     QT_TRANSLATE_NOOP("FilterLibrary", "Photo Effect Process"),
     QT_TRANSLATE_NOOP("FilterLibrary", "A film look that stresses cool colours."),
     {},
     Film::process},
    {"CIPhotoEffectTonal",
     QT_TRANSLATE_NOOP("FilterLibrary", "Photo Effect Tonal"),
     QT_TRANSLATE_NOOP("FilterLibrary", "A black-and-white film look with unchanged contrast."),
     {},
     Film::tonal},
    {"CIPhotoEffectTransfer",
     QT_TRANSLATE_NOOP("FilterLibrary", "Photo Effect Transfer"),
     QT_TRANSLATE_NOOP("FilterLibrary", "A film look that stresses warm colours."),
     {},
     Film::transfer},
    {"CISepiaTone",
     QT_TRANSLATE_NOOP("FilterLibrary", "Sepia Tone"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Tints the picture in browns like an old print."),
     {{"inputIntensity", QT_TRANSLATE_NOOP("FilterLibrary", "Intensity"), InputKind::Number, 1.0, 0.0, 0.0, 1.0}},
     sepiaTone},
    {"CIVignette",
     QT_TRANSLATE_NOOP("FilterLibrary", "Vignette"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Darkens the picture towards its corners."),
     {{"inputRadius", QT_TRANSLATE_NOOP("FilterLibrary", "Radius"), InputKind::Number, 1.0, {}, 0.0, 2.0},
      {"inputIntensity", QT_TRANSLATE_NOOP("FilterLibrary", "Intensity"), InputKind::Number, 0.0, 0.0, -1.0, 1.0}},
     vignette},
    {"CIVignetteEffect",
     QT_TRANSLATE_NOOP("FilterLibrary", "Vignette Effect"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Darkens the picture outside a circle."),
     {{"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputIntensity", QT_TRANSLATE_NOOP("FilterLibrary", "Intensity"), InputKind::Number, 1.0, 0.0, -1.0, 1.0},
      {"inputRadius", QT_TRANSLATE_NOOP("FilterLibrary", "Radius"), InputKind::Pixels, 150.0, {}, 0.0, 2000.0},
      {"inputFalloff", QT_TRANSLATE_NOOP("FilterLibrary", "Falloff"), InputKind::Number, 0.5, {}, 0.0, 1.0}},
     vignetteEffect},
    {"CIThermal",
     QT_TRANSLATE_NOOP("FilterLibrary", "Thermal"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Shows brightness in the colours of a heat camera."),
     {},
     thermal},
    {"CIXRay",
     QT_TRANSLATE_NOOP("FilterLibrary", "X-Ray"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Shows the picture like an X-ray plate."),
     {},
     xRay},
    {"CIDither",
     QT_TRANSLATE_NOOP("FilterLibrary", "Dither"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Adds fine random noise to hide banding."),
     {{"inputIntensity", QT_TRANSLATE_NOOP("FilterLibrary", "Intensity"), InputKind::Number, 0.1, 0.0, 0.0, 1.0}},
     dither},
    {"CIDocumentEnhancer",
     QT_TRANSLATE_NOOP("FilterLibrary", "Document Enhancer"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Whitens the paper of a photographed document and removes shadows."),
     {{"inputAmount", QT_TRANSLATE_NOOP("FilterLibrary", "Amount"), InputKind::Number, 1.0, {}, 0.0, 2.0}},
     documentEnhancer},
    {"CIConvertRGBtoLab",
     QT_TRANSLATE_NOOP("FilterLibrary", "Convert RGB to Lab"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Replaces the red, green and blue values by CIE L*, a*, b* values."),
     {{"inputNormalize", QT_TRANSLATE_NOOP("FilterLibrary", "Normalize"), InputKind::YesOrNo, 0.0, {}, 0.0, 1.0}},
     Lab::fromRgb},
    {"CIConvertLabToRGB",
     QT_TRANSLATE_NOOP("FilterLibrary", "Convert Lab to RGB"),
     QT_TRANSLATE_NOOP("FilterLibrary",
                       "Reads the channels as CIE L*, a*, b* and turns them into red, green and blue."),
     {{"inputNormalize", QT_TRANSLATE_NOOP("FilterLibrary", "Normalize"), InputKind::YesOrNo, 0.0, {}, 0.0, 1.0}},
     Lab::toRgb},
    {"CIMaskToAlpha",
     QT_TRANSLATE_NOOP("FilterLibrary", "Mask to Alpha"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Turns a grey picture into a white one that is clear where it was dark."),
     {},
     maskToAlpha},
};

}

const FilterTable &colorEffectFilters()
{
    return kFilters;
}
