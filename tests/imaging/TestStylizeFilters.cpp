#include "FilterReference.h"
#include "TestRunner.h"

#include <QTest>

#include <algorithm>
#include <cmath>

namespace {

using Pixel = ReferencePicture::Pixel;
using Picture = ReferencePicture;
using Rule = std::function<Pixel(const Picture &in, int x, int y)>;

/// Opaque, as these cases are about shapes.
FilterCase opaque(const EffectEntry &entry, const Rule &rule, int tolerance = 1)
{
    FilterCase one{entry, [rule](const Picture &in) { return in.mapped([&](int x, int y) { return rule(in, x, y); }); },
                   tolerance};
    one.isOpaque = true;
    return one;
}

using Prepare = std::function<Picture(const Picture &in)>;
using PreparedRule = std::function<Pixel(const Picture &in, const Picture &prepared, int x, int y)>;

/// The same beside a picture that is made from the given one first.
FilterCase prepared(const EffectEntry &entry, const Prepare &prepare, const PreparedRule &rule, int tolerance = 1)
{
    FilterCase one{entry,
                   [=](const Picture &in) {
                       const Picture other = prepare(in);
                       return in.mapped([&](int x, int y) { return rule(in, other, x, y); });
                   },
                   tolerance};
    one.isOpaque = true;
    return one;
}

Pixel ofColors(const Pixel &p, const std::function<double(double)> &function)
{
    return {function(p[0]), function(p[1]), function(p[2]), p[3]};
}

/// A bell cut at three deviations, in one direction and then in the other.
Picture blurred(const Picture &in, double sigma)
{
    const int reach = int(3 * sigma);
    const auto pass = [&](const Picture &from, int across, int up) {
        return from.mapped([&](int x, int y) {
            Pixel mean{};
            double sum = 0;
            for (int i = -reach; i <= reach; ++i) {
                const double weight = std::exp(-i * i / (2 * sigma * sigma));
                sum += weight;
                for (size_t c = 0; c < 4; ++c)
                    mean[c] += weight * from.at(x + i * across, y + i * up)[c];
            }
            for (double &component : mean)
                component /= sum;
            return mean;
        });
    };
    return pass(pass(in, 1, 0), 0, 1);
}

Picture lightnessOf(const Picture &in)
{
    return in.mapped([&](int x, int y) {
        const double light = srgbEncoded(luminanceOf(in.at(x, y)));
        return Pixel{light, light, light, 1};
    });
}

double smoothStep(double from, double to, double x)
{
    const double t = std::clamp((x - from) / (to - from), 0.0, 1.0);
    return 3 * t * t - 2 * t * t * t;
}

/// The sum of a kernel's products, with rows from the bottom upward.
template<size_t side>
double sumOf(const Picture &in, int x, int y, size_t channel, const std::array<double, side> &across,
             const std::array<double, side> &up)
{
    double sum = 0;
    const int reach = int(side) / 2;
    for (int row = -reach; row <= reach; ++row) {
        for (int column = -reach; column <= reach; ++column)
            sum += across[size_t(column + reach)] * up[size_t(row + reach)] * in.at(x + column, y + row)[channel];
    }
    return sum;
}

template<size_t side>
Pixel gradients(const Picture &in, int x, int y, const std::array<double, side> &slope,
                const std::array<double, side> &mean)
{
    double across = 0;
    double up = 0;
    for (size_t c = 0; c < 3; ++c) {
        const double a = sumOf(in, x, y, c, slope, mean);
        const double u = sumOf(in, x, y, c, mean, slope);
        across = std::abs(a) > std::abs(across) ? a : across;
        up = std::abs(u) > std::abs(up) ? u : up;
    }
    return {across, up, 0, 1};
}

}

class TestStylizeFilters : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void glowsAndShadowsComeFromBlurs()
    {
        const auto glow = [](const char *name, bool isMore) {
            const EffectEntry entry = effect(name, {{"inputRadius", 2.0}, {"inputIntensity", 0.8}});
            const auto blur = [](const Picture &in) { return blurred(in, 2); };
            return prepared(entry, blur, [=](const Picture &in, const Picture &soft, int x, int y) {
                const Pixel mean = soft.at(x, y);
                Pixel out = in.at(x, y);
                for (size_t c = 0; c < 3; ++c) {
                    const double more = mean[c] - out[c];
                    out[c] += 0.8 * (isMore == (more > 0) ? more : 0);
                }
                return out;
            });
        };
        const auto spots = [](const Picture &in) {
            const Picture small = blurred(lightnessOf(in), 1);
            const Picture wide = blurred(lightnessOf(in), 6);
            return in.mapped([&](int x, int y) { return Pixel{small.at(x, y)[0] - wide.at(x, y)[0] + 0.02}; });
        };
        const auto work = [](const Picture &in, const Picture &apart, int x, int y) {
            return ofColors(in.at(x, y), [&](double) { return smoothStep(-0.02, 0.02, apart.at(x, y)[0]); });
        };
        const auto softLight = [](const Picture &in) { return blurred(lightnessOf(in), 2); };
        const auto adjusted = [](const Picture &in, const Picture &soft, int x, int y) {
            const double light = soft.at(x, y)[0];
            const double stops = 0.9 * (1 - smoothStep(0, 0.5, light)) - 0.9 * smoothStep(0.5, 1, light);
            return ofColors(in.at(x, y), [&](double c) { return c * std::pow(2, stops); });
        };
        const FilterSettings values{{"inputHighlightAmount", 0.4}, {"inputShadowAmount", 0.6}, {"inputRadius", 2.0}};
        const std::vector<FilterCase> cases{glow("CIBloom", true), glow("CIGloom", false),
                                            prepared(effect("CIEdgeWork", {{"inputRadius", 3.0}}), spots, work, 3),
                                            prepared(effect("CIHighlightShadowAdjust", values), softLight, adjusted)};
        QCOMPARE(firstDifference(cases), QString());
    }

    void slopesShowEdges()
    {
        const std::array<double, 3> slope{-1, 0, 1};
        const std::array<double, 3> mean{1, 2, 1};
        const auto encode = [](const Picture &in) {
            return in.mapped([&](int x, int y) { return ofColors(in.at(x, y), srgbEncoded); });
        };
        const auto edges = [=](const Picture &in, const Picture &encoded, int x, int y) {
            Pixel out = in.at(x, y);
            for (size_t c = 0; c < 3; ++c)
                out[c] = srgbDecoded(std::min(
                    2 * std::hypot(sumOf(encoded, x, y, c, slope, mean), sumOf(encoded, x, y, c, mean, slope)) / 4,
                    1.0));
            return out;
        };
        const auto sobel = [=](const Picture &in, int x, int y) { return gradients(in, x, y, slope, mean); };
        const auto gabor = [](const Picture &in, int x, int y) {
            return gradients<5>(in, x, y, {-1 / 6., -2 / 6., 0, 2 / 6., 1 / 6.},
                                {1 / 16., 4 / 16., 6 / 16., 4 / 16., 1 / 16.});
        };
        const std::vector<FilterCase> cases{prepared(effect("CIEdges", {{"inputIntensity", 2.0}}), encode, edges),
                                            opaque(effect("CISobelGradients"), sobel),
                                            opaque(effect("CIGaborGradients"), gabor)};
        QCOMPARE(firstDifference(cases), QString());
    }

    void paperBecomesWhite()
    {
        const auto paper = [](const Picture &in) { return blurred(lightnessOf(in), 32 / 40.); };
        const auto rule = [](const Picture &in, const Picture &light, int x, int y) {
            return ofColors(in.at(x, y), [&](double linear) {
                const double c = srgbEncoded(linear);
                const double clean = std::clamp((c / light.at(x, y)[0] - 0.5) * 1.25 + 0.5, 0.0, 1.0);
                return srgbDecoded(std::clamp(c + 0.8 * (clean - c), 0.0, 1.0));
            });
        };
        QCOMPARE(firstDifference({prepared(effect("CIDocumentEnhancer", {{"inputAmount", 0.8}}), paper, rule)}),
                 QString());
        // In the shadow that lies over half of a sheet as well.
        QImage sheet(240, 180, QImage::Format_RGB32);
        for (int i = 0; i < 240 * 180; ++i) {
            const int light = 210 - i % 240 / 3;
            sheet.setPixel(i % 240, i / 240, qRgb(light, light, light));
        }
        const QImage white = filtered({effect("CIDocumentEnhancer")}, sheet);
        for (const int x : {5, 120, 235})
            QVERIFY(qGreen(white.pixel(x, 90)) >= 250);
    }

    void comicsAreFlatWithOutlinesAndDots()
    {
        const auto flat = [](const Picture &in) {
            return in.mapped([&](int x, int y) {
                Pixel out{0, 0, 0, 1};
                for (size_t c = 0; c < 3; ++c) {
                    std::vector<double> around;
                    for (int i = 0; i < 9; ++i)
                        around.push_back(in.at(x + i % 3 - 1, y + i / 3 - 1)[c]);
                    std::sort(around.begin(), around.end());
                    out[c] = std::round(srgbEncoded(around[4]) * 5) / 5;
                }
                return out;
            });
        };
        const auto rule = [](const Picture &in, const Picture &base, int x, int y) {
            const Picture light = lightnessOf(in);
            const double across = sumOf<3>(light, x, y, 0, {-1, 0, 1}, {1, 2, 1}) / 4;
            const double up = sumOf<3>(light, x, y, 0, {1, 2, 1}, {-1, 0, 1}) / 4;
            const double ink = smoothStep(0.15, 0.25, std::hypot(across, up));
            const double turn = 2 * M_PI / 6 / std::sqrt(2);
            const double level =
                0.5 + 0.25 * (std::cos(turn * (x + y + 1)) + std::cos(turn * (y - x))); // in widths of 6 pixels
            const double edge = 1 / 12.0;
            const double y1 = std::clamp(luminanceOf(in.at(x, y)), 0.0, 1.0) * (1 + 2 * edge) - edge;
            const double dots = smoothStep(level - edge, level + edge, y1);
            const double share = light.at(x, y)[0] < 0.6 ? 1 - 0.35 * (1 - dots) : 1;
            const Pixel own = base.at(x, y);
            const double grey = luminanceOf(own);
            return ofColors(own, [&](double c) { return srgbDecoded((grey + 1.2 * (c - grey)) * share * (1 - ink)); });
        };
        QCOMPARE(firstDifference({prepared(effect("CIComicEffect"), flat, rule, 2)}), QString());
    }
};

REGISTER_TEST(TestStylizeFilters)
#include "TestStylizeFilters.moc"
