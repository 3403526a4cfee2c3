#include "Blurring.h"
#include "FilterValues.h"
#include "MorphologyFilters.h"
#include "Neighbours.h"
#include "PixelMath.h"
#include "Reduction.h"
#include "StreakBlurs.h"

#include <algorithm>
#include <cmath>

namespace {

using Neighbours::Tap;
using PixelMath::smooth;

// A length that no picture needs longer.
double within(const WorkingImage &image, double length)
{
    return std::min(length, 2.0 * std::max(image.size().width(), image.size().height()));
}

bool boxBlur(WorkingImage &image, const FilterValues &values)
{
    const double side = 2 * std::round(values.number("inputRadius") / values.scale()) + 1;
    return Neighbours::addBox(image, side * values.scale());
}

// What the pixels of a square of `factor` pixels weigh, whose middle is (x, y) such squares away, in the mean.
template<typename Weight>
float meanWeight(int x, int y, int factor, Weight weight)
{
    const int points = std::min(factor, 8); // either way
    double sum = 0;
    for (int i = 0; i < points * points; ++i) {
        const double across = x + (i % points + 0.5) / points - 0.5;
        const double down = y + (i / points + 0.5) / points - 0.5;
        sum += weight(std::hypot(across, down) * factor);
    }
    return float(sum / (points * points));
}

// Blurs with a disc; `weight(distance)`, `soft` pixels beyond the radius nothing.
template<typename Weight>
bool addDisc(WorkingImage &image, double radius, double soft, Weight weight)
{
    constexpr double least = 0.5;
    constexpr double enough = 10;
    if (radius < least)
        return true;
    const int factor = Reduction::factorFor(radius, enough);
    return Reduction::addReduced(image, {factor}, [=](WorkingImage &reduced) {
        std::vector<Tap> taps;
        const int reach = int(std::ceil((radius + soft) / factor)) + 1;
        for (int y = -reach; y <= reach; ++y) {
            for (int x = -reach; x <= reach; ++x) {
                const float share = meanWeight(x, y, factor, weight);
                if (share > 0)
                    taps.push_back({x, y, share});
            }
        }
        return Neighbours::addWeighted(reduced, taps);
    });
}

bool discBlur(WorkingImage &image, const FilterValues &values)
{
    const double radius = within(image, values.number("inputRadius"));
    return addDisc(image, radius, 0.5, [=](double distance) { return std::clamp(radius - distance + 0.5, 0.0, 1.0); });
}

bool bokehBlur(WorkingImage &image, const FilterValues &values)
{
    const double ring = 4 * values.number("inputRingAmount", 0, 100);
    const double ringSize = values.number("inputRingSize", 0, 1);
    const double softness = std::max(values.number("inputSoftness", 0, 10), 0.5) * values.scale();
    const double radius = within(image, values.number("inputRadius"));
    return addDisc(image, radius, softness / 2, [=](double distance) {
        const double half = softness / 2;
        const double inside = 1 - double(smooth(float(radius - half), float(radius + half), float(distance)));
        return inside * (1 + (distance > radius * (1 - ringSize) ? ring : 0));
    });
}

bool gaussianBlur(WorkingImage &image, const FilterValues &values)
{
    return Blurring::addGaussian(image, values.number("inputRadius"));
}

bool medianFilter(WorkingImage &image, const FilterValues &)
{
    return Neighbours::addMedian(image);
}

// Of the eight pixels around it and the pixel itself.
Pixel binomialMean(VipsRegion &in, int x, int y)
{
    Pixel sum;
    for (int row = 0; row < 3; ++row) {
        const Pixel *from = pixelAt(in, x, y + row);
        const float weight = row == 1 ? 2 : 1;
        sum.r += weight * (from[0].r + 2 * from[1].r + from[2].r);
        sum.g += weight * (from[0].g + 2 * from[1].g + from[2].g);
        sum.b += weight * (from[0].b + 2 * from[1].b + from[2].b);
        sum.a += weight * (from[0].a + 2 * from[1].a + from[2].a);
    }
    return {sum.r / 16, sum.g / 16, sum.b / 16, sum.a / 16};
}

// Encoded colours with alpha multiplied in, for filters that mix neighbours by how they look.
bool addEncoding(WorkingImage &image, bool isBack)
{
    return image.setAlpha(WorkingImage::Alpha::Straight) && image.addPixelStep([isBack](Pixel &pixel) {
        PixelMath::eachColor(pixel, isBack ? SrgbCurve::linear : SrgbCurve::encoded);
    });
}

bool noiseReduction(WorkingImage &image, const FilterValues &values)
{
    const auto level = float(values.number("inputNoiseLevel", 0, 1000));
    const auto sharpness = float(values.number("inputSharpness"));
    const auto reduce = [=](VipsRegion &out, VipsRegion &in) {
        const VipsRect &area = out.valid;
        for (int y = area.top; y < VIPS_RECT_BOTTOM(&area); ++y) {
            for (int x = area.left; x < VIPS_RECT_RIGHT(&area); ++x) {
                const Pixel own = *pixelAt(in, x + 1, y + 1);
                const Pixel mean = binomialMean(in, x, y);
                const float apart = std::fabs(luminance(own) - luminance(mean));
                const float share = level > 0 ? smooth(level, 2 * level, apart) : 1;
                *pixelAt(out, x, y) = PixelMath::mixed(mean, PixelMath::mixed(mean, own, 1 + sharpness), share);
            }
        }
    };
    return addEncoding(image, /*isBack=*/false) && Neighbours::addStep(image, 1, reduce) &&
           addEncoding(image, /*isBack=*/true);
}

const FilterTable kFilters{
    {"CIBoxBlur",
     QT_TRANSLATE_NOOP("FilterLibrary", "Box Blur"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Blurs by averaging the square neighbourhood of every pixel."),
     {{"inputRadius", QT_TRANSLATE_NOOP("FilterLibrary", "Radius"), InputKind::Pixels, 10.0, {}, 1.0, 100.0}},
     boxBlur},
    {"CIDiscBlur",
     QT_TRANSLATE_NOOP("FilterLibrary", "Disc Blur"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Blurs by averaging the disc around every pixel, like an out-of-focus lens."),
     {{"inputRadius", QT_TRANSLATE_NOOP("FilterLibrary", "Radius"), InputKind::Pixels, 8.0, {}, 0.0, 100.0}},
     discBlur},
    {"CIGaussianBlur",
     QT_TRANSLATE_NOOP("FilterLibrary", "Gaussian Blur"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Blurs with a bell-shaped weight that falls off with distance."),
     {{"inputRadius", QT_TRANSLATE_NOOP("FilterLibrary", "Radius"), InputKind::Pixels, 10.0, 0.0, 0.0, 100.0}},
     gaussianBlur},
    {"CIMedianFilter",
     QT_TRANSLATE_NOOP("FilterLibrary", "Median"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Replaces every pixel by the median of its "
                                        "neighbourhood, removing isolated specks."),
     {},
     medianFilter},
    {"CIMotionBlur",
     QT_TRANSLATE_NOOP("FilterLibrary", "Motion Blur"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Smears the image along one direction, as if the camera "
                                        "had moved during the exposure."),
     {{"inputRadius", QT_TRANSLATE_NOOP("FilterLibrary", "Radius"), InputKind::Pixels, 20.0, 0.0, 0.0, 100.0},
      {"inputAngle", QT_TRANSLATE_NOOP("FilterLibrary", "Angle"), InputKind::Angle, 0.0, 0.0, -kPi, kPi}},
     StreakBlurs::motion},
    {"CINoiseReduction",
     QT_TRANSLATE_NOOP("FilterLibrary", "Noise Reduction"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Smooths small luminance differences as noise and "
                                        "sharpens larger ones as edges."),
     {{"inputNoiseLevel", QT_TRANSLATE_NOOP("FilterLibrary", "Noise Level"), InputKind::Number, 0.02, 0.0, 0.0, 0.1},
      {"inputSharpness", QT_TRANSLATE_NOOP("FilterLibrary", "Sharpness"), InputKind::Number, 0.4, 0.0, 0.0, 2.0}},
     noiseReduction},
    {"CIZoomBlur",
     QT_TRANSLATE_NOOP("FilterLibrary", "Zoom Blur"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Smears the image towards or away from a point, as if "
                                        "the lens had zoomed during the exposure."),
     {{"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputAmount", QT_TRANSLATE_NOOP("FilterLibrary", "Amount"), InputKind::SignedPixels, 20.0, 0.0, -200.0, 200.0}},
     StreakBlurs::zoom},
    {"CIBokehBlur",
     QT_TRANSLATE_NOOP("FilterLibrary", "Bokeh Blur"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Blurs with a disc whose rim can be emphasised, "
                                        "imitating out-of-focus highlights."),
     {{"inputRadius", QT_TRANSLATE_NOOP("FilterLibrary", "Radius"), InputKind::Pixels, 20.0, {}, 0.0, 100.0},
      {"inputRingAmount", QT_TRANSLATE_NOOP("FilterLibrary", "Ring Amount"), InputKind::Number, 0.0, {}, 0.0, 1.0},
      {"inputRingSize", QT_TRANSLATE_NOOP("FilterLibrary", "Ring Size"), InputKind::Number, 0.1, {}, 0.0, 0.2},
      {"inputSoftness", QT_TRANSLATE_NOOP("FilterLibrary", "Softness"), InputKind::Number, 1.0, {}, 0.0, 10.0}},
     bokehBlur},
    {"CIMorphologyGradient",
     QT_TRANSLATE_NOOP("FilterLibrary", "Morphology Gradient"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Shows edges as the difference between the local "
                                        "maximum and the local minimum."),
     {{"inputRadius", QT_TRANSLATE_NOOP("FilterLibrary", "Radius"), InputKind::Pixels, 5.0, {}, 0.0, 50.0}},
     Morphology::gradient},
    {"CIMorphologyMaximum",
     QT_TRANSLATE_NOOP("FilterLibrary", "Morphology Maximum"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Grows light areas by taking the local maximum in a disc."),
     {{"inputRadius", QT_TRANSLATE_NOOP("FilterLibrary", "Radius"), InputKind::Pixels, 0.0, 0.0, 0.0, 50.0}},
     Morphology::maximum},
    {"CIMorphologyMinimum",
     QT_TRANSLATE_NOOP("FilterLibrary", "Morphology Minimum"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Grows dark areas by taking the local minimum in a disc."),
     {{"inputRadius", QT_TRANSLATE_NOOP("FilterLibrary", "Radius"), InputKind::Pixels, 0.0, 0.0, 0.0, 50.0}},
     Morphology::minimum},
    {"CIMorphologyRectangleMaximum",
     QT_TRANSLATE_NOOP("FilterLibrary", "Morphology Rectangle Maximum"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Grows light areas by taking the local maximum in a rectangle."),
     {{"inputWidth", QT_TRANSLATE_NOOP("FilterLibrary", "Width"), InputKind::WholePixels, 5.0, 1.0, 1.0, 49.0},
      {"inputHeight", QT_TRANSLATE_NOOP("FilterLibrary", "Height"), InputKind::WholePixels, 5.0, 1.0, 1.0, 49.0}},
     Morphology::rectangleMaximum},
    {"CIMorphologyRectangleMinimum",
     QT_TRANSLATE_NOOP("FilterLibrary", "Morphology Rectangle Minimum"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Grows dark areas by taking the local minimum in a rectangle."),
     {{"inputWidth", QT_TRANSLATE_NOOP("FilterLibrary", "Width"), InputKind::WholePixels, 5.0, 1.0, 1.0, 49.0},
      {"inputHeight", QT_TRANSLATE_NOOP("FilterLibrary", "Height"), InputKind::WholePixels, 5.0, 1.0, 1.0, 49.0}},
     Morphology::rectangleMinimum},
};

}

const FilterTable &blurFilters()
{
    return kFilters;
}
