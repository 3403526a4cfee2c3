#include "FilterReference.h"
#include "TestPictures.h"
#include "TestRunner.h"

#include <QTest>

#include <algorithm>
#include <cmath>

namespace {

using Pixel = ReferencePicture::Pixel;
using Weight = std::function<double(int x, int y)>;

/// Pixel by pixel on colours into which alpha is multiplied.
FilterCase ofNeighbours(const EffectEntry &entry,
                        const std::function<Pixel(const ReferencePicture &in, int x, int y)> &function,
                        int tolerance = 1)
{
    const auto expected = [function](ReferencePicture in) {
        in.multiplyAlpha();
        ReferencePicture out = in.mapped([&](int x, int y) { return function(in, x, y); });
        out.divideAlpha();
        return out;
    };
    return {entry, expected, tolerance};
}

Pixel weightedMean(const ReferencePicture &in, int x, int y, int reach, const Weight &weight)
{
    Pixel mean{};
    double sum = 0;
    for (int down = -reach; down <= reach; ++down) {
        for (int across = -reach; across <= reach; ++across) {
            const double share = weight(across, down);
            sum += share;
            for (size_t i = 0; i < 4; ++i)
                mean[i] += share * in.at(x + across, y + down)[i];
        }
    }
    for (double &component : mean)
        component /= sum;
    return mean;
}

FilterCase weighted(const EffectEntry &entry, int reach, const Weight &weight, int tolerance = 1)
{
    return ofNeighbours(
        entry, [=](const ReferencePicture &in, int x, int y) { return weightedMean(in, x, y, reach, weight); },
        tolerance);
}

/// A bell, cut at three deviations.
Weight bell(double sigma)
{
    return [sigma](int x, int y) {
        const bool isInside = std::max(std::abs(x), std::abs(y)) <= 3 * sigma;
        return isInside ? std::exp(-(x * x + y * y) / (2 * sigma * sigma)) : 0;
    };
}

double smoothStep(double from, double to, double x)
{
    const double t = std::clamp((x - from) / (to - from), 0.0, 1.0);
    return 3 * t * t - 2 * t * t * t;
}

/// The component in the middle or at the ends of those of neighbours for which `weight` is not 0.
Pixel ranked(const ReferencePicture &in, int x, int y, int reach, const Weight &weight, double rank)
{
    Pixel result{};
    for (size_t i = 0; i < 4; ++i) {
        std::vector<double> values;
        for (int down = -reach; down <= reach; ++down) {
            for (int across = -reach; across <= reach; ++across) {
                if (weight(across, down) > 0)
                    values.push_back(in.at(x + across, y + down)[i]);
            }
        }
        std::sort(values.begin(), values.end());
        result[i] = values[size_t(rank * double(values.size() - 1))];
    }
    return result;
}

FilterCase ranking(const EffectEntry &entry, int reach, const Weight &weight, double rank)
{
    return ofNeighbours(
        entry, [=](const ReferencePicture &in, int x, int y) { return ranked(in, x, y, reach, weight, rank); });
}

/// Between pixels, which are counted from the middle of the first.
Pixel between(const ReferencePicture &in, double x, double y)
{
    const int left = int(std::floor(x));
    const int below = int(std::floor(y));
    Pixel result{};
    for (size_t i = 0; i < 4; ++i) {
        const double low = std::lerp(in.at(left, below)[i], in.at(left + 1, below)[i], x - left);
        const double high = std::lerp(in.at(left, below + 1)[i], in.at(left + 1, below + 1)[i], x - left);
        result[i] = std::lerp(low, high, y - below);
    }
    return result;
}

/// From where to where the streak of a pixel leads.
using Ends = std::function<std::pair<QPointF, QPointF>(double x, double y)>;

Pixel meanOfStreak(const ReferencePicture &in, const std::pair<QPointF, QPointF> &ends)
{
    constexpr int steps = 800;
    const auto [from, to] = ends;
    Pixel mean{};
    for (int step = 0; step < steps; ++step) {
        const QPointF place = from + (to - from) * ((step + 0.5) / steps);
        const Pixel pixel = between(in, place.x(), place.y());
        for (size_t i = 0; i < 4; ++i)
            mean[i] += pixel[i] / steps;
    }
    return mean;
}

FilterCase streaked(const EffectEntry &entry, const Ends &ends, int tolerance = 1)
{
    return ofNeighbours(
        entry, [=](const ReferencePicture &in, int x, int y) { return meanOfStreak(in, ends(x, y)); }, tolerance);
}

}

class TestBlurFilters : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void blursWeighNeighbours()
    {
        const auto disc = [](int x, int y) { return std::clamp(4.2 + 0.5 - std::hypot(x, y), 0.0, 1.0); };
        const auto bokeh = [](int x, int y) {
            const double distance = std::hypot(x, y);
            return (1 - smoothStep(3, 5, distance)) * (distance > 4 * 0.85 ? 3 : 1);
        };
        const std::vector<FilterCase> cases{
            weighted(effect("CIBoxBlur", {{"inputRadius", 2.6}}), 3, [](int, int) { return 1; }),
            weighted(effect("CIDiscBlur", {{"inputRadius", 4.2}}), 5, disc),
            weighted(
                effect(
                    "CIBokehBlur",
                    {{"inputRadius", 4.0}, {"inputRingAmount", 0.5}, {"inputRingSize", 0.15}, {"inputSoftness", 2.0}}),
                6, bokeh),
            weighted(effect("CIGaussianBlur", {{"inputRadius", 0.8}}), 2, bell(0.8)),
            weighted(effect("CIGaussianBlur", {{"inputRadius", 5.0}}), 15, bell(5))};
        QCOMPARE(firstDifference(cases), QString());
        FilterCase wide = weighted(effect("CIGaussianBlur", {{"inputRadius", 12.5}}), 37, bell(12.5), 3);
        wide.isOpaque = true;
        QCOMPARE(firstDifference({wide}), QString());
    }

    void streaksRunAlongALineOrFromTheCentre()
    {
        const auto line = [](double x, double y) {
            const QPointF half(6 * std::cos(0.5), 6 * std::sin(0.5));
            return std::pair(QPointF(x, y) - half, QPointF(x, y) + half);
        };
        const auto ray = [](double x, double y) { // the centre at (8, 18), half the diagonal is 20
            const QPointF apart(x + 0.5 - 8, y + 0.5 - 18);
            return std::pair(QPointF(x, y), QPointF(x, y) - apart * (5.0 / 20));
        };
        const std::vector<FilterCase> cases{
            streaked(effect("CIMotionBlur", {{"inputRadius", 6.0}, {"inputAngle", 0.5}}), line, 3),
            streaked(effect("CIZoomBlur", {{"inputCenter", QPointF(-0.5, 0.5)}, {"inputAmount", 5.0}}), ray, 3)};
        QCOMPARE(firstDifference(cases), QString());
    }

    void ranksAreTakenFromNeighbours()
    {
        const auto square = [](int, int) { return 1; };
        const auto disc = [](int x, int y) { return std::hypot(x, y) <= 3.3 ? 1 : 0; };
        const auto rectangle = [](int x, int y) { return std::abs(x) <= 3 && std::abs(y) <= 1 ? 1 : 0; };
        const std::vector<FilterCase> cases{
            ranking(effect("CIMedianFilter"), 1, square, 0.5),
            ranking(effect("CIMorphologyMaximum", {{"inputRadius", 3.3}}), 3, disc, 1),
            ranking(effect("CIMorphologyMinimum", {{"inputRadius", 3.3}}), 3, disc, 0),
            ranking(effect("CIMorphologyRectangleMaximum", {{"inputWidth", 7.4}, {"inputHeight", 3.0}}), 3, rectangle,
                    1),
            ranking(effect("CIMorphologyRectangleMinimum", {{"inputWidth", 7.4}, {"inputHeight", 2.0}}), 3, rectangle,
                    0)};
        QCOMPARE(firstDifference(cases), QString());
        const auto apart = [&](const ReferencePicture &in, int x, int y) {
            const Pixel most = ranked(in, x, y, 3, disc, 1);
            const Pixel least = ranked(in, x, y, 3, disc, 0);
            return Pixel{most[0] - least[0], most[1] - least[1], most[2] - least[2], in.at(x, y)[3]};
        };
        QCOMPARE(firstDifference({ofNeighbours(effect("CIMorphologyGradient", {{"inputRadius", 3.3}}), apart)}),
                 QString());
    }

    void nothingIsLostAmongManyNeighbours()
    {
        QImage dark(500, 400, QImage::Format_RGB32);
        dark.fill(qRgb(10, 20, 30));
        dark.setPixel(250, 200, qRgb(250, 250, 250));
        QImage light = dark;
        light.invertPixels();
        const auto [most, least] = std::pair(effect("CIMorphologyMaximum", {{"inputRadius", 150.0}}),
                                             effect("CIMorphologyMinimum", {{"inputRadius", 150.0}}));
        const auto [wide, low] =
            std::pair(effect("CIMorphologyRectangleMaximum", {{"inputWidth", 301.0}, {"inputHeight", 3.0}}),
                      effect("CIMorphologyRectangleMinimum", {{"inputWidth", 301.0}, {"inputHeight", 3.0}}));
        for (const auto &[entry, picture] :
             {std::pair(most, dark), std::pair(least, light), std::pair(wide, dark), std::pair(low, light)}) {
            const QImage result = filtered({entry}, picture);
            for (const int x : {106, 250, 394})
                QCOMPARE(result.pixel(x, 200), picture.pixel(250, 200));
            for (const int x : {88, 412})
                QCOMPARE(result.pixel(x, 200), picture.pixel(0, 0));
        }
    }

    /// Where a smaller picture does, it looks the same, up to the edges. Fine grain across the rays of a zoom is
    /// softer.
    void wideLengthsAreAsPreciseAsNarrowOnes()
    {
        const auto disc = [](int x, int y) { return std::clamp(63.5 + 0.5 - std::hypot(x, y), 0.0, 1.0); };
        const auto bokeh = [](int x, int y) {
            const double distance = std::hypot(x, y);
            return (1 - smoothStep(38, 42, distance)) * (distance > 40 * 0.8 ? 5 : 1);
        };
        const auto wide = [](const EffectEntry &entry, int reach, const Weight &weight, double mean, int most) {
            return WideCase{
                entry, [=](const ReferencePicture &in, int x, int y) { return weightedMean(in, x, y, reach, weight); },
                mean, most};
        };
        const auto streak = [](const EffectEntry &entry, const Ends &ends, double mean, int most) {
            return WideCase{entry,
                            [=](const ReferencePicture &in, int x, int y) { return meanOfStreak(in, ends(x, y)); },
                            mean, most};
        };
        const auto line = [](double x, double y) {
            const QPointF half(90 * std::cos(0.5), 90 * std::sin(0.5));
            return std::pair(QPointF(x, y) - half, QPointF(x, y) + half);
        };
        const QPointF center(555, 198); // of one of the pixels that are looked at
        const auto ray = [=](double x, double y) {
            const double diagonal = std::hypot(704, 496) / 2;
            return std::pair(QPointF(x, y), QPointF(x, y) - (QPointF(x, y) - center) * (150 / diagonal));
        };
        const QPointF stored((center.x() + 0.5) / 352 - 1, (center.y() + 0.5) / 248 - 1);
        const std::vector<WideCase> cases{
            wide(
                effect("CIBoxBlur", {{"inputRadius", 70.0}}), 70, [](int, int) { return 1; }, 0.5, 2),
            wide(effect("CIDiscBlur", {{"inputRadius", 63.5}}), 65, disc, 0.6, 2),
            wide(effect(
                     "CIBokehBlur",
                     {{"inputRadius", 40.0}, {"inputRingAmount", 1.0}, {"inputRingSize", 0.2}, {"inputSoftness", 4.0}}),
                 43, bokeh, 1, 3),
            wide(effect("CIGaussianBlur", {{"inputRadius", 2.5}}), 7, bell(2.5), 0.5, 1),
            wide(effect("CIGaussianBlur", {{"inputRadius", 7.9}}), 23, bell(7.9), 0.5, 1),
            wide(effect("CIGaussianBlur", {{"inputRadius", 31.0}}), 93, bell(31), 0.5, 2),
            streak(effect("CIMotionBlur", {{"inputRadius", 90.0}, {"inputAngle", 0.5}}), line, 0.8, 2),
            streak(effect("CIZoomBlur", {{"inputCenter", stored}, {"inputAmount", 150.0}}), ray, 4, 24)};
        QCOMPARE(firstWideDifference(cases), QString());
    }

    void noiseIsToldFromEdges()
    {
        const double level = 0.01;
        const auto binomial = [](int x, int y) { return (x == 0 ? 2 : 1) * (y == 0 ? 2 : 1); };
        FilterCase reduced{effect("CINoiseReduction", {{"inputNoiseLevel", level}, {"inputSharpness", 0.7}}),
                           [&](ReferencePicture in) {
                               in = in.mapped([&](int x, int y) {
                                   const Pixel p = in.at(x, y);
                                   return Pixel{srgbEncoded(p[0]), srgbEncoded(p[1]), srgbEncoded(p[2]), p[3]};
                               });
                               return in.mapped([&](int x, int y) {
                                   const Pixel own = in.at(x, y);
                                   const Pixel mean = weightedMean(in, x, y, 1, binomial);
                                   const double apart = std::abs(luminanceOf(own) - luminanceOf(mean));
                                   const double share = smoothStep(level, 2 * level, apart);
                                   Pixel out{0, 0, 0, own[3]};
                                   for (size_t i = 0; i < 3; ++i)
                                       out[i] =
                                           srgbDecoded(std::lerp(mean[i], own[i] + 0.7 * (own[i] - mean[i]), share));
                                   return out;
                               });
                           }};
        reduced.isOpaque = true;
        QCOMPARE(firstDifference({reduced}), QString());
    }

    void sharpeningAddsWhatABlurTakes()
    {
        const auto unsharp = [](const ReferencePicture &in, int x, int y) {
            const Pixel mean = weightedMean(in, x, y, 6, bell(2));
            Pixel out = in.at(x, y);
            for (size_t i = 0; i < 3; ++i)
                out[i] += 0.8 * (out[i] - mean[i]);
            return out;
        };
        FilterCase luminance{
            effect("CISharpenLuminance", {{"inputSharpness", 0.9}, {"inputRadius", 1.5}}),
            [](const ReferencePicture &in) {
                const ReferencePicture light = in.mapped([&](int x, int y) {
                    const Pixel p = in.at(x, y);
                    const double grey = luminanceOf({srgbEncoded(p[0]), srgbEncoded(p[1]), srgbEncoded(p[2]), p[3]});
                    return Pixel{grey, grey, grey, p[3]};
                });
                return in.mapped([&](int x, int y) {
                    Pixel p = in.at(x, y);
                    const double mean = weightedMean(light, x, y, 5, bell(1.5))[0];
                    const double more = 0.9 * (light.at(x, y)[0] - mean);
                    for (size_t i = 0; i < 3; ++i)
                        p[i] = srgbDecoded(srgbEncoded(p[i]) + more);
                    return p;
                });
            }};
        luminance.isOpaque = true;
        QCOMPARE(firstDifference(
                     {ofNeighbours(effect("CIUnsharpMask", {{"inputRadius", 2.0}, {"inputIntensity", 0.8}}), unsharp),
                      luminance}),
                 QString());
    }

    /// An even picture stays even up to its edges, whatever the radius and however much it is made smaller for it.
    void edgesDoNotDarken()
    {
        QImage even(101, 63, QImage::Format_ARGB32_Premultiplied);
        even.fill(qPremultiply(qRgba(200, 120, 40, 100)));
        for (const double radius : {40.0, 1e9}) {
            for (const char *name :
                 {"CIGaussianBlur", "CIBoxBlur", "CIDiscBlur", "CIBokehBlur", "CIMotionBlur", "CIMorphologyMinimum"}) {
                const QImage blurred = filtered({effect(name, {{"inputRadius", radius}})}, even);
                QVERIFY2(TestPictures::largestDifference(blurred, even) <= 1, name);
            }
        }
    }
};

REGISTER_TEST(TestBlurFilters)
#include "TestBlurFilters.moc"
