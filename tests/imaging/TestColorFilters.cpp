#include "FilterReference.h"
#include "TestRunner.h"

#include <QTest>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

using Pixel = ReferencePicture::Pixel;

/// A case whose pixels depend on nothing but themselves.
FilterCase ofPixels(const EffectEntry &entry, const std::function<void(Pixel &)> &function, int tolerance = 1)
{
    const auto expected = [function](const ReferencePicture &in) {
        return in.mapped([&](int x, int y) {
            Pixel pixel = in.at(x, y);
            function(pixel);
            return pixel;
        });
    };
    return {entry, expected, tolerance};
}

/// The same of components.
FilterCase ofComponents(const EffectEntry &entry, const std::function<double(double)> &function)
{
    return ofPixels(entry, [function](Pixel &p) { p = {function(p[0]), function(p[1]), function(p[2]), p[3]}; });
}

Pixel mixed(const Pixel &a, const Pixel &b, double share)
{
    const auto mix = [&](size_t i) { return a[i] + (b[i] - a[i]) * share; };
    return {mix(0), mix(1), mix(2), a[3]};
}

Pixel grey(double value, double alpha)
{
    return {value, value, value, alpha};
}

/// The same on encoded values.
FilterCase ofEncoded(const EffectEntry &entry, const std::function<void(Pixel &)> &function)
{
    return ofPixels(entry, [function](Pixel &p) {
        p = {srgbEncoded(p[0]), srgbEncoded(p[1]), srgbEncoded(p[2]), p[3]};
        function(p);
        p = {srgbDecoded(p[0]), srgbDecoded(p[1]), srgbDecoded(p[2]), p[3]};
    });
}

/// The colour at `place` of encoded colours evenly apart.
Pixel ramp(const std::vector<Pixel> &colors, double place, double alpha)
{
    const double step = place * double(colors.size() - 1);
    const size_t below = std::min(size_t(step), colors.size() - 2);
    const Pixel p = mixed(colors[below], colors[below + 1], step - double(below));
    return {srgbDecoded(p[0]), srgbDecoded(p[1]), srgbDecoded(p[2]), alpha};
}

double hueInDegrees(const Pixel &p)
{
    const double most = std::max({p[0], p[1], p[2]});
    const double spread = most - std::min({p[0], p[1], p[2]});
    if (spread == 0)
        return 0;
    const double sixth = most == p[0]   ? (p[1] - p[2]) / spread
                         : most == p[1] ? 2 + (p[2] - p[0]) / spread
                                        : 4 + (p[0] - p[1]) / spread;
    return 60 * (sixth < 0 ? sixth + 6 : sixth);
}

Pixel vivid(const Pixel &p, double amount)
{
    const double most = std::max({p[0], p[1], p[2]});
    const double saturation = most > 0 ? (most - std::min({p[0], p[1], p[2]})) / most : 0;
    double apart = std::abs(hueInDegrees(p) - 25);
    apart = std::min(apart, 360 - apart);
    const double skin = std::exp(-std::pow(apart / 20, 2));
    const double k = amount * (1 - saturation) * (amount > 0 ? 1 - 0.6 * skin : 1);
    return mixed(grey(luminanceOf(p), p[3]), p, 1 + k);
}

}

class TestColorFilters : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void adjustmentsFollowTheirRules()
    {
        const double turn = 0.7;
        const EffectValue ochre = EffectColor{0.8, 0.6, 0.2, 1};
        const std::vector<FilterCase> cases{
            ofPixels(
                effect("CIColorControls", {{"inputSaturation", 1.4}, {"inputBrightness", 0.1}, {"inputContrast", 1.3}}),
                [](Pixel &p) {
                    p = mixed(grey(luminanceOf(p), p[3]), p, 1.4);
                    for (size_t i = 0; i < 3; ++i)
                        p[i] = (p[i] - 0.5) * 1.3 + 0.6;
                }),
            ofComponents(effect("CIExposureAdjust", {{"inputEV", -1.5}}), [](double c) { return c * 0.35355339; }),
            ofComponents(effect("CIGammaAdjust", {{"inputPower", 0.6}}), [](double c) { return std::pow(c, 0.6); }),
            ofPixels(effect("CIHueAdjust", {{"inputAngle", turn}}),
                     [&](Pixel &p) { // by the formula for turning about an axis, here that of the greys
                         const Pixel v = p;
                         const double mean = (v[0] + v[1] + v[2]) / 3;
                         for (size_t i = 0; i < 3; ++i) {
                             const double across = (v[(i + 2) % 3] - v[(i + 1) % 3]) / std::sqrt(3);
                             p[i] = mean + (v[i] - mean) * std::cos(turn) + across * std::sin(turn);
                         }
                     }),
            ofComponents(effect("CILinearToSRGBToneCurve"), srgbEncoded),
            ofComponents(effect("CISRGBToneCurveToLinear"), srgbDecoded),
            ofPixels(effect("CIVibrance", {{"inputAmount", 0.8}}), [](Pixel &p) { p = vivid(p, 0.8); }),
            ofPixels(effect("CIVibrance", {{"inputAmount", -0.8}}), [](Pixel &p) { p = vivid(p, -0.8); }),
            ofPixels(effect("CIWhitePointAdjust", {{"inputColor", ochre}}),
                     [](Pixel &p) {
                         p = {p[0] * srgbDecoded(0.8), p[1] * srgbDecoded(0.6), p[2] * srgbDecoded(0.2), p[3]};
                     }),
            ofComponents(effect("CIColorThreshold", {{"inputThreshold", 0.3}}),
                         [](double c) { return c > 0.3 ? 1 : 0; }),
            ofComponents(effect("CIDepthToDisparity"), [](double c) { return 1 / std::max(c, 1e-4); }),
            ofComponents(effect("CIDisparityToDepth"), [](double c) { return 1 / std::max(c, 1e-4); })};
        QCOMPARE(firstDifference(cases), QString());
    }

    void effectsFollowTheirRules()
    {
        const EffectValue ochre = EffectColor{0.8, 0.6, 0.2, 1};
        const EffectValue clearBlue = EffectColor{0.1, 0.2, 0.9, 0.5};
        const Pixel linearOchre{srgbDecoded(0.8), srgbDecoded(0.6), srgbDecoded(0.2), 1};
        const std::vector<FilterCase> cases{
            ofComponents(effect("CIColorInvert"), [](double c) { return 1 - c; }),
            ofPixels(effect("CIColorMonochrome", {{"inputColor", ochre}, {"inputIntensity", 0.7}}),
                     [&](Pixel &p) {
                         const double light = luminanceOf(p);
                         for (size_t i = 0; i < 3; ++i)
                             p[i] = 0.3 * p[i] + 0.7 * light * linearOchre[i];
                     }),
            ofPixels(effect("CIFalseColor", {{"inputColor0", clearBlue}, {"inputColor1", ochre}}),
                     [&](Pixel &p) {
                         const double share = luminanceOf(p);
                         const Pixel blue{srgbDecoded(0.1), srgbDecoded(0.2), srgbDecoded(0.9)};
                         const double alpha = p[3] * (0.5 + 0.5 * share);
                         p = mixed(blue, linearOchre, share);
                         p[3] = alpha;
                     }),
            ofPixels(effect("CIMaximumComponent"),
                     [](Pixel &p) {
                         p = grey(std::max({p[0], p[1], p[2]}), p[3]);
                     }),
            ofPixels(effect("CIMinimumComponent"),
                     [](Pixel &p) {
                         p = grey(std::min({p[0], p[1], p[2]}), p[3]);
                     }),
            ofEncoded(effect("CISepiaTone", {{"inputIntensity", 0.8}}),
                      [](Pixel &p) {
                          const Pixel brown{p[0] * .393 + p[1] * .769 + p[2] * .189,
                                            p[0] * .349 + p[1] * .686 + p[2] * .168,
                                            p[0] * .272 + p[1] * .534 + p[2] * .131};
                          for (size_t i = 0; i < 3; ++i)
                              p[i] = 0.2 * p[i] + 0.8 * std::min(brown[i], 1.0);
                      }),
            ofPixels(effect("CIThermal"),
                     [](Pixel &p) {
                         p = ramp({{0, 0, .25}, {.1, 0, .85}, {.85, 0, .45}, {1, .6, 0}, {1, 1, .8}},
                                  srgbEncoded(luminanceOf(p)), p[3]);
                     }),
            ofPixels(effect("CIXRay"),
                     [](Pixel &p) {
                         p = ramp({{0, 0, .03}, {.35, .5, .6}, {.92, .98, 1}}, 1 - srgbEncoded(luminanceOf(p)), p[3]);
                     }),
            ofPixels(effect("CIMaskToAlpha"), [](Pixel &p) {
                p = {1, 1, 1, p[3] * luminanceOf(p)};
            })};
        QCOMPARE(firstDifference(cases), QString());
        FilterCase levels = ofEncoded(effect("CIColorPosterize", {{"inputLevels", 8.4}}), [](Pixel &p) {
            for (size_t i = 0; i < 3; ++i)
                p[i] = std::floor(p[i] * 7 + 0.5) / 7;
        });
        levels.isOpaque = true; // halves of alpha would lie on the edge between levels
        QCOMPARE(firstDifference({levels}), QString());
    }

    void filmsFollowTheirCurves()
    {
        using Curve = std::function<double(double)>;
        const auto film = [](const char *name, double saturation, const Curve &red, const Curve &green,
                             const Curve &blue) {
            return ofEncoded(effect(name), [=](Pixel &p) {
                const double light = (299 * p[0] + 587 * p[1] + 114 * p[2]) / 1000;
                p = mixed(grey(light, p[3]), p, saturation);
                p = {std::clamp(red(p[0]), 0.0, 1.0), std::clamp(green(p[1]), 0.0, 1.0),
                     std::clamp(blue(p[2]), 0.0, 1.0), p[3]};
            });
        };
        const auto power = [](double factor, double exponent, double base) {
            return [=](double x) { return base + factor * std::pow(std::max(x, 0.0), exponent); };
        };
        const auto steep = [](double share, double contrast) {
            return [=](double x) {
                const double t = std::clamp(x, 0.0, 1.0);
                return (x * (1 - share) + share * t * t * (3 - 2 * t) - 0.5) * contrast + 0.5;
            };
        };
        const Curve chrome = steep(0.35, 1);
        const Curve fade = power(0.86, 1, 0.07);
        const Curve mono = power(0.88, 1, 0.05);
        const Curve noir = steep(1, 1.1);
        const Curve tonal = power(1, 1, 0);
        const std::vector<FilterCase> cases{
            film("CIPhotoEffectChrome", 1.25, chrome, chrome, chrome),
            film("CIPhotoEffectFade", 0.7, fade, fade, fade),
            film("CIPhotoEffectInstant", 0.85, power(0.94, 0.9, 0.04), power(0.92, 1, 0.03), power(0.80, 1.05, 0.10)),
            film("CIPhotoEffectMono", 0, mono, mono, mono),
            film("CIPhotoEffectNoir", 0, noir, noir, noir),
            film("CIPhotoEffectProcess", 0.9, power(1, 1.1, 0), power(0.98, 1, 0.01), power(0.94, 0.92, 0.06)),
            film("CIPhotoEffectTonal", 0, tonal, tonal, tonal),
            film("CIPhotoEffectTransfer", 0.95, power(0.95, 0.92, 0.05), power(0.95, 1, 0.02),
                 power(0.88, 1.08, 0.02))};
        QCOMPARE(firstDifference(cases), QString());
    }

    void vignettesDarkenWithTheDistance()
    {
        const auto shaded = [](const EffectEntry &entry, double x, double y,
                               const std::function<double(double)> &light) {
            return FilterCase{entry, [=](const ReferencePicture &in) {
                                  return in.mapped([&](int column, int row) {
                                      Pixel p = in.at(column, row);
                                      const double factor = light(std::hypot(column + 0.5 - x, row + 0.5 - y));
                                      for (size_t i = 0; i < 3; ++i)
                                          p[i] *= factor;
                                      return p;
                                  });
                              }};
        };
        const std::vector<FilterCase> cases{
            shaded(effect("CIVignette", {{"inputRadius", 0.8}, {"inputIntensity", 0.9}}), 16, 12,
                   [](double r) { return 1 - 0.9 * std::pow(std::min(r / 16, 1.0), 2); }),
            shaded(effect("CIVignetteEffect", {{"inputCenter", QPointF(-0.5, 0.5)},
                                               {"inputRadius", 6.0},
                                               {"inputIntensity", 0.8},
                                               {"inputFalloff", 0.75}}),
                   8, 18, [](double r) {
                       const double t = std::clamp((r - 6) / 9, 0.0, 1.0);
                       return 1 - 0.8 * (3 * t * t - 2 * t * t * t);
                   })};
        QCOMPARE(firstDifference(cases), QString());
    }

    void ditherIsFaintEvenNoise()
    {
        QImage even(200, 100, QImage::Format_RGB32);
        even.fill(qRgb(128, 128, 128));
        const EffectChain chain{effect("CIDither", {{"inputIntensity", 0.2}})};
        const QImage noisy = filtered(chain, even);
        QCOMPARE(filtered(chain, even), noisy);
        QVERIFY(noisy != even);
        double sum = 0;
        double squares = 0;
        for (int i = 0; i < 200 * 100; ++i) {
            const int apart = qRed(noisy.pixel(i % 200, i / 200)) - 128;
            QVERIFY(std::abs(apart) <= 26);
            sum += apart;
            squares += apart * apart;
        }
        QVERIFY(std::abs(sum / 20000) < 0.5);
        // Two evenly spread numbers: their sum's standard deviation is 1/sqrt(6).
        QVERIFY(std::abs(std::sqrt(squares / 20000) - 0.1 * 255 / std::sqrt(6)) < 0.5);
    }

    void labIsTheOneOfTheTextbooksAndComesBack()
    {
        QImage red(4, 4, QImage::Format_RGB32);
        red.fill(qRgb(255, 0, 0));
        const EffectValue yes = 1.0;
        const QImage lab = filtered({effect("CIConvertRGBtoLab", {{"inputNormalize", yes}})}, red);
        const auto byte = [](double value) { return int(std::lround(srgbEncoded(value) * 255)); };
        // L* a* b* of full red: 53.24, 80.09, 67.20.
        QCOMPARE(lab.pixel(1, 1), qRgb(byte(0.5324), byte((80.09 + 128) / 256), byte((67.20 + 128) / 256)));
        for (const double normalize : {0.0, 1.0}) {
            const EffectValue value = normalize;
            QCOMPARE(filtered({effect("CIConvertRGBtoLab", {{"inputNormalize", value}}),
                               effect("CIConvertLabToRGB", {{"inputNormalize", value}})},
                              samplePicture(false)),
                     samplePicture(false));
        }
    }

    /// A reciprocal of what lies above 1 comes back into the picture.
    void valuesAreNotCutBetweenFilters()
    {
        const QImage sample = samplePicture(false);
        const QImage result = filtered({effect("CIExposureAdjust", {{"inputEV", 4.0}}), effect("CIDepthToDisparity"),
                                        effect("CIDisparityToDepth"), effect("CIExposureAdjust", {{"inputEV", -4.0}})},
                                       sample);
        QCOMPARE(result, sample);
    }

    void theThresholdIsFoundBetweenTwoLightnesses()
    {
        QImage image(30, 20, QImage::Format_RGB32);
        for (int y = 0; y < 20; ++y) {
            for (int x = 0; x < 30; ++x) {
                const int noise = (x * 7 + y * 3) % 9;
                const int light = x < 12 ? 50 + noise : 120 + noise;
                image.setPixel(x, y, qRgb(light, light, light));
            }
        }
        const QImage result = filtered({effect("CIColorThresholdOtsu")}, image);
        for (int x = 0; x < 30; ++x)
            QCOMPARE(result.pixel(x, 7), x < 12 ? qRgb(0, 0, 0) : qRgb(255, 255, 255));

        // Whatever parts the picture best: the classes' sizes times the square of how far their means are apart.
        const auto parted = [](const ReferencePicture &in) {
            double most = 0;
            double threshold = 0;
            for (int candidate = 0; candidate < 255; ++candidate) {
                std::array<double, 2> count{};
                std::array<double, 2> sum{};
                for (int i = 0; i < in.width() * in.height(); ++i) {
                    const double light = srgbEncoded(luminanceOf(in.at(i % in.width(), i / in.width())));
                    const auto bin = std::lround(light * 255);
                    count[bin > candidate ? 1 : 0] += 1;
                    sum[bin > candidate ? 1 : 0] += double(bin);
                }
                const double apart = sum[1] / count[1] - sum[0] / count[0];
                const double variance = count[0] * count[1] * apart * apart;
                if (variance > most) { // also false where a class is empty
                    most = variance;
                    threshold = (candidate + 0.5) / 255;
                }
            }
            return in.mapped([&](int x, int y) {
                ReferencePicture::Pixel out = in.at(x, y);
                for (size_t c = 0; c < 3; ++c)
                    out[c] = srgbEncoded(out[c]) > threshold ? 1 : 0;
                return out;
            });
        };
        QCOMPARE(firstDifference({{effect("CIColorThresholdOtsu"), parted, 1, /*isOpaque=*/true}}), QString());
    }
};

REGISTER_TEST(TestColorFilters)
#include "TestColorFilters.moc"
