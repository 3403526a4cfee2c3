#include "Blurring.h"
#include "FilterValues.h"
#include "Neighbours.h"
#include "PixelMath.h"

namespace {

using Alpha = WorkingImage::Alpha;

bool sharpenLuminance(WorkingImage &image, const FilterValues &values)
{
    const auto sharpness = float(values.number("inputSharpness"));
    if (!image.setAlpha(Alpha::Straight))
        return false;
    WorkingImage lightness = image;
    return lightness.addPixelStep([](Pixel &pixel) {
        PixelMath::eachColor(pixel, SrgbCurve::encoded);
        pixel = PixelMath::grey(luminance(pixel), pixel.a);
    }) && Blurring::addGaussian(lightness, values.number("inputRadius")) &&
           lightness.setAlpha(Alpha::Straight) && image.combineWith(lightness, [=](Pixel &own, const Pixel &mean) {
               PixelMath::eachColor(own, SrgbCurve::encoded);
               const float more = sharpness * (luminance(own) - mean.r);
               PixelMath::eachColor(own, [&](float c) { return SrgbCurve::linear(c + more); });
           });
}

bool unsharpMask(WorkingImage &image, const FilterValues &values)
{
    const auto intensity = float(values.number("inputIntensity"));
    return Blurring::addWithGaussian(image, values.number("inputRadius"), [=](Pixel &own, const Pixel &mean) {
        const float alpha = own.a;
        own = PixelMath::mixed(mean, own, 1 + intensity);
        own.a = alpha;
    });
}

const FilterTable kFilters{
    {"CISharpenLuminance",
     QT_TRANSLATE_NOOP("FilterLibrary", "Sharpen Luminance"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Sharpens the lightness of the picture and leaves its colours alone."),
     {{"inputSharpness", QT_TRANSLATE_NOOP("FilterLibrary", "Sharpness"), InputKind::Number, 0.4, 0.0, 0.0, 2.0},
      {"inputRadius", QT_TRANSLATE_NOOP("FilterLibrary", "Radius"), InputKind::Pixels, 1.69, 0.0, 0.0, 20.0}},
     sharpenLuminance},
    {"CIUnsharpMask",
     QT_TRANSLATE_NOOP("FilterLibrary", "Unsharp Mask"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Sharpens by strengthening the difference from a blurred copy."),
     {{"inputRadius", QT_TRANSLATE_NOOP("FilterLibrary", "Radius"), InputKind::Pixels, 2.5, 0.0, 0.0, 100.0},
      {"inputIntensity", QT_TRANSLATE_NOOP("FilterLibrary", "Intensity"), InputKind::Number, 0.5, 0.0, 0.0, 1.0}},
     unsharpMask},
};

}

const FilterTable &sharpenFilters()
{
    return kFilters;
}
