#include "Blurring.h"
#include "FilterValues.h"
#include "Neighbours.h"
#include "PixelMath.h"

#include <array>

namespace {

using Alpha = WorkingImage::Alpha;

bool sharpenLuminance(WorkingImage &image, const FilterValues &values)
{
    const auto sharpness = float(values.number("inputSharpness"));
    if (!image.setAlpha(Alpha::Straight) || !image.keepPieces(WorkingImage::Reading::Around))
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
    std::array<float, 16> more{}; // for each of as many numbers as are computed together
    for (size_t i = 0; i < more.size(); ++i)
        more[i] = i % 4 == 3 ? 0 : intensity; // not alpha
    const auto sharpen = [more](Pixel *row, const Pixel *mean, int count) {
        float *own = &row->r;
        const float *blurred = &mean->r;
        Wide::runFloats(4 * count, [=](int i, auto many) TAMSEL_WIDE {
            using Floats = typename decltype(many)::Floats;
            auto &value = *reinterpret_cast<Floats *>(own + i);
            const Floats apart = value - *reinterpret_cast<const Floats *>(blurred + i);
            value += *reinterpret_cast<const Floats *>(more.data()) * apart;
        });
    };
    return Blurring::addRowsWithGaussian(image, values.number("inputRadius"), sharpen);
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
