#include "FilterValues.h"
#include "PixelMath.h"
#include "SrgbCurve.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <mutex>

namespace {

using PixelMath::addColorStep;
using PixelMath::eachColor;

bool colorControls(WorkingImage &image, const FilterValues &values)
{
    const auto saturation = float(values.number("inputSaturation"));
    const auto contrast = float(values.number("inputContrast", 0, 1000));
    const auto brightness = float(values.number("inputBrightness"));
    const auto part = [=](float weight) {
        const float grey = contrast * (1 - saturation) * weight;
        return Pixel{grey, grey, grey};
    };
    const float more = 0.5F - 0.5F * contrast + brightness;
    PixelMath::Matrix matrix{part(0.2126F), part(0.7152F), part(0.0722F), {more, more, more}};
    matrix.ofRed.r += contrast * saturation;
    matrix.ofGreen.g += contrast * saturation;
    matrix.ofBlue.b += contrast * saturation;
    return addColorStep(image, [=](Pixel &pixel) { pixel = matrix(pixel); });
}

bool exposureAdjust(WorkingImage &image, const FilterValues &values)
{
    const auto factor = float(std::exp2(values.number("inputEV", -60, 60)));
    return addColorStep(image, [=](Pixel &pixel) { eachColor(pixel, [&](float c) { return c * factor; }); });
}

bool gammaAdjust(WorkingImage &image, const FilterValues &values)
{
    const auto power = float(values.number("inputPower", -100, 100));
    const float ofZero = std::pow(0.0F, power);
    return addColorStep(image, [=](Pixel &pixel) {
        eachColor(pixel, [&](float c) {
            const float size = std::fabs(c);
            const float result = SrgbCurve::powerOf(size, power);
            return std::copysign(size > 0 ? result : ofZero, c);
        });
    });
}

bool hueAdjust(WorkingImage &image, const FilterValues &values)
{
    const double angle = values.number("inputAngle");
    const auto cosine = float(std::cos(angle));
    const auto sine = float(std::sin(angle) / std::numbers::sqrt3);
    return addColorStep(image, [=](Pixel &pixel) {
        const auto [r, g, b, a] = pixel;
        const float mean = (1 - cosine) * (r + g + b) / 3;
        pixel = {cosine * r + mean + sine * (b - g), cosine * g + mean + sine * (r - b),
                 cosine * b + mean + sine * (g - r), a};
    });
}

bool linearToSRGBToneCurve(WorkingImage &image, const FilterValues &)
{
    return addColorStep(image, [](Pixel &pixel) { eachColor(pixel, SrgbCurve::encoded); });
}

bool sRGBToneCurveToLinear(WorkingImage &image, const FilterValues &)
{
    return addColorStep(image, [](Pixel &pixel) { eachColor(pixel, SrgbCurve::linear); });
}

// In degrees from red; 0 for greys.
float hueOf(const Pixel &p, float most, float spread)
{
    if (spread <= 0)
        return 0;
    if (most == p.r)
        return 60 * (p.g - p.b) / spread;
    return most == p.g ? 120 + 60 * (p.b - p.r) / spread : 240 + 60 * (p.r - p.g) / spread;
}

// 1 for the hue of skin, falling to 0 beside it.
float likenessToSkin(float hue)
{
    const float distance = std::remainder(hue - 25, 360.0F) / 20;
    return std::exp(-distance * distance);
}

bool vibrance(WorkingImage &image, const FilterValues &values)
{
    const auto amount = float(values.number("inputAmount", -1000, 1000));
    return addColorStep(image, [=](Pixel &pixel) {
        const float most = std::max({pixel.r, pixel.g, pixel.b});
        const float spread = most - std::min({pixel.r, pixel.g, pixel.b});
        const float weakness = most > 0 ? 1 - spread / most : 1;
        const float spared = amount > 0 ? 1 - 0.6F * likenessToSkin(hueOf(pixel, most, spread)) : 1;
        const float factor = 1 + amount * weakness * spared;
        const float grey = luminance(pixel);
        eachColor(pixel, [&](float c) { return grey + (c - grey) * factor; });
    });
}

bool whitePointAdjust(WorkingImage &image, const FilterValues &values)
{
    const Pixel white = values.color("inputColor");
    return addColorStep(image, [=](Pixel &pixel) {
        pixel = {pixel.r * white.r, pixel.g * white.g, pixel.b * white.b, pixel.a};
    });
}

bool addThreshold(WorkingImage &image, float threshold)
{
    return addColorStep(image,
                        [=](Pixel &pixel) { eachColor(pixel, [&](float c) { return c > threshold ? 1.0F : 0.0F; }); });
}

bool colorThreshold(WorkingImage &image, const FilterValues &values)
{
    return addThreshold(image, float(values.number("inputThreshold")));
}

using Histogram = std::array<qint64, 256>;

// How many pixels have each lightness; nothing when the picture could not be computed.
std::optional<Histogram> histogramOf(const WorkingImage &image)
{
    Histogram histogram = {};
    std::mutex mutex;
    const bool isDone = image.visitPieces([&](VipsRegion &piece) {
        Histogram part = {};
        const VipsRect &area = piece.valid;
        for (int y = area.top; y < VIPS_RECT_BOTTOM(&area); ++y) {
            const Pixel *row = pixelAt(piece, area.left, y);
            for (int x = 0; x < area.width; ++x) {
                const float light = std::clamp(luminance(row[x]), 0.0F, 1.0F);
                ++part[size_t(SrgbCurve::encoded(light) * 255 + 0.5F)];
            }
        }
        const std::lock_guard lock(mutex);
        std::transform(part.cbegin(), part.cend(), histogram.cbegin(), histogram.begin(), std::plus<>());
        return true;
    });
    return isDone ? std::optional(histogram) : std::nullopt;
}

// The last lightness of the darker class, when the two classes are as different as they can be.
int otsuThreshold(const Histogram &histogram)
{
    double total = 0;
    double sum = 0;
    for (size_t i = 0; i < histogram.size(); ++i) {
        total += double(histogram[i]);
        sum += double(i) * double(histogram[i]);
    }
    double darker = 0;
    double darkerSum = 0;
    double most = 0;
    int best = 0;
    for (size_t i = 0; i + 1 < histogram.size(); ++i) {
        darker += double(histogram[i]);
        darkerSum += double(i) * double(histogram[i]);
        if (darker <= 0 || darker >= total)
            continue;
        const double distance = darkerSum / darker - (sum - darkerSum) / (total - darker);
        const double variance = darker * (total - darker) * distance * distance;
        if (variance > most) {
            most = variance;
            best = int(i);
        }
    }
    return best;
}

bool colorThresholdOtsu(WorkingImage &image, const FilterValues &)
{
    if (!image.setAlpha(WorkingImage::Alpha::Straight))
        return false;
    const auto histogram = histogramOf(image);
    return histogram && addThreshold(image, SrgbCurve::linear((float(otsuThreshold(*histogram)) + 0.5F) / 255));
}

bool addReciprocal(WorkingImage &image)
{
    return addColorStep(image, [](Pixel &pixel) { eachColor(pixel, [](float c) { return 1 / std::max(c, 1e-4F); }); });
}

bool depthToDisparity(WorkingImage &image, const FilterValues &)
{
    return addReciprocal(image);
}

bool disparityToDepth(WorkingImage &image, const FilterValues &)
{
    return addReciprocal(image);
}

// There are no controls for limits of four components, so the filter is not offered for choosing; in a stored chain
// it works with its defaults.
bool colorClamp(WorkingImage &image, const FilterValues &)
{
    return addColorStep(image, [](Pixel &pixel) { eachColor(pixel, PixelMath::clamped); });
}

const FilterTable kFilters{
    {"CIColorControls",
     QT_TRANSLATE_NOOP("FilterLibrary", "Color Controls"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Adjusts saturation, brightness and contrast together."),
     {{"inputSaturation", QT_TRANSLATE_NOOP("FilterLibrary", "Saturation"), InputKind::Number, 1.0, 1.0, 0.0, 2.0},
      {"inputBrightness", QT_TRANSLATE_NOOP("FilterLibrary", "Brightness"), InputKind::Number, 0.0, 0.0, -1.0, 1.0},
      {"inputContrast", QT_TRANSLATE_NOOP("FilterLibrary", "Contrast"), InputKind::Number, 1.0, 1.0, 0.25, 4.0}},
     colorControls},
    {"CIExposureAdjust",
     QT_TRANSLATE_NOOP("FilterLibrary", "Exposure Adjust"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Brightens or darkens like a change of camera exposure, in stops."),
     {{"inputEV", QT_TRANSLATE_NOOP("FilterLibrary", "EV"), InputKind::Number, 0.0, 0.0, -10.0, 10.0}},
     exposureAdjust},
    {"CIGammaAdjust",
     QT_TRANSLATE_NOOP("FilterLibrary", "Gamma Adjust"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Changes mid-tone brightness with a power curve."),
     {{"inputPower", QT_TRANSLATE_NOOP("FilterLibrary", "Power"), InputKind::Number, 1.0, 1.0, 0.25, 4.0}},
     gammaAdjust},
    {"CIHueAdjust",
     QT_TRANSLATE_NOOP("FilterLibrary", "Hue Adjust"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Turns all hues by one angle."),
     {{"inputAngle", QT_TRANSLATE_NOOP("FilterLibrary", "Angle"), InputKind::Angle, 0.0, 0.0, -kPi, kPi}},
     hueAdjust},
    {"CILinearToSRGBToneCurve",
     QT_TRANSLATE_NOOP("FilterLibrary", "Linear to sRGB Tone Curve"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Applies the sRGB encoding curve to the working values."),
     {},
     linearToSRGBToneCurve},
    {"CISRGBToneCurveToLinear",
     QT_TRANSLATE_NOOP("FilterLibrary", "sRGB Tone Curve to Linear"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Applies the sRGB decoding curve to the working values."),
     {},
     sRGBToneCurveToLinear},
    {"CIVibrance",
     QT_TRANSLATE_NOOP("FilterLibrary", "Vibrance"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Changes saturation mostly where it is weak and spares skin tones."),
     {{"inputAmount", QT_TRANSLATE_NOOP("FilterLibrary", "Amount"), InputKind::Number, 0.0, 0.0, -1.0, 1.0}},
     vibrance},
    {"CIWhitePointAdjust",
     QT_TRANSLATE_NOOP("FilterLibrary", "White Point Adjust"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Re-maps colours so that white becomes the chosen colour."),
     {{"inputColor",
       QT_TRANSLATE_NOOP("FilterLibrary", "Color"),
       InputKind::Color,
       EffectColor{1, 1, 1, 1},
       EffectColor{1, 1, 1, 1},
       {},
       {}}},
     whitePointAdjust},
    {"CIColorThreshold",
     QT_TRANSLATE_NOOP("FilterLibrary", "Color Threshold"),
     QT_TRANSLATE_NOOP("FilterLibrary",
                       "Makes every colour channel either empty or full by comparing it with a threshold."),
     {{"inputThreshold", QT_TRANSLATE_NOOP("FilterLibrary", "Threshold"), InputKind::Number, 0.5, {}, 0.0, 1.0}},
     colorThreshold},
    {"CIColorThresholdOtsu",
     QT_TRANSLATE_NOOP("FilterLibrary", "Color Threshold Otsu"),
     QT_TRANSLATE_NOOP("FilterLibrary",
                       "Makes every colour channel empty or full with a threshold found from the picture itself."),
     {},
     colorThresholdOtsu},
    {"CIDepthToDisparity",
     QT_TRANSLATE_NOOP("FilterLibrary", "Depth To Disparity"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Turns depth values into disparity values."),
     {},
     depthToDisparity},
    {"CIDisparityToDepth",
     QT_TRANSLATE_NOOP("FilterLibrary", "Disparity To Depth"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Turns disparity values into depth values."),
     {},
     disparityToDepth},
    {"CIColorClamp",
     QT_TRANSLATE_NOOP("FilterLibrary", "Color Clamp"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Limits every colour channel to a range."),
     {{"inputMinComponents",
       QT_TRANSLATE_NOOP("FilterLibrary", "Minimum Components"),
       InputKind::FourNumbers,
       QPointF(0, 0),
       {},
       {},
       {}},
      {"inputMaxComponents",
       QT_TRANSLATE_NOOP("FilterLibrary", "Maximum Components"),
       InputKind::FourNumbers,
       QPointF(1, 1),
       {},
       {},
       {}}},
     colorClamp},
};

}

const FilterTable &colorAdjustmentFilters()
{
    return kFilters;
}
