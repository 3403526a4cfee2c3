#include "Blurring.h"

#include "Neighbours.h"
#include "Reduction.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

using Alpha = WorkingImage::Alpha;
using Combine = WorkingImage::RowCombination;

/// The weights of a pixel and of those to either side of it.
std::vector<float> bell(double deviation)
{
    std::vector<double> heights;
    for (int i = 0; i <= int(3 * deviation); ++i)
        heights.push_back(std::exp(-double(i) * i / (2 * deviation * deviation)));
    double sum = heights.front();
    for (size_t i = 1; i < heights.size(); ++i)
        sum += 2 * heights[i];
    std::vector<float> weights;
    for (const double height : heights)
        weights.push_back(float(height / sum));
    return weights;
}

// What such weights spread: the mean of the squared distances.
double varianceOf(const std::vector<float> &weights)
{
    double sum = 0;
    for (size_t i = 1; i < weights.size(); ++i)
        sum += 2 * double(weights[i]) * double(i * i);
    return sum;
}

// Weighs floats with those `step` floats and its multiples to either side.
void weigh(float *to, const float *middle, int count, ptrdiff_t step, const std::vector<float> &weights)
{
    const float *weight = weights.data();
    const size_t reach = weights.size();
    const auto weighAt = [=](int i, auto many) TAMSEL_WIDE {
        using Floats = typename decltype(many)::Floats;
        constexpr size_t sums = sizeof(Floats) > sizeof(Wide::Four::Floats) ? 4 : 1; // side by side, as each waits
        const auto *own = reinterpret_cast<const Floats *>(middle + i);
        Floats sum[sums];
        for (size_t n = 0; n < sums; ++n)
            sum[n] = weight[0] * own[n];
        for (size_t k = 1; k < reach; ++k) {
            const auto *before = reinterpret_cast<const Floats *>(middle + i - ptrdiff_t(k) * step);
            const auto *behind = reinterpret_cast<const Floats *>(middle + i + ptrdiff_t(k) * step);
            for (size_t n = 0; n < sums; ++n)
                sum[n] += weight[k] * (before[n] + behind[n]);
        }
        for (size_t n = 0; n < sums; ++n)
            reinterpret_cast<Floats *>(to + i)[n] = sum[n];
    };
    Wide::runMany([=](auto many) TAMSEL_WIDE {
        constexpr int most = 4 * sizeof(typename decltype(many)::Floats) / sizeof(float);
        int i = 0;
        for (; i + most <= count; i += most)
            weighAt(i, many);
        for (; i < count; i += 4)
            weighAt(i, Wide::Four());
    });
}

// Writes a row: the blurred pixels, or what combining makes of the picture's own and them.
void finishRow(Pixel *row, const Pixel *own, const Pixel *blurred, int count, const Combine &combine)
{
    std::copy_n(combine ? own : blurred, count, row);
    if (combine)
        combine(row, blurred, count);
}

bool addDirectly(WorkingImage &image, double deviation, const Combine &combine)
{
    const std::vector<float> weights = bell(deviation);
    const int margin = int(weights.size()) - 1;
    return Neighbours::addStep(image, margin, [=](VipsRegion &out, VipsRegion &in) {
        const VipsRect &area = out.valid;
        const int width = area.width + 2 * margin;
        std::vector<Pixel> line(static_cast<size_t>(width));
        std::vector<Pixel> blurred(static_cast<size_t>(area.width));
        const ptrdiff_t below = ptrdiff_t(in.bpl / int(sizeof(float)));
        for (int y = area.top; y < VIPS_RECT_BOTTOM(&area); ++y) {
            weigh(&line[0].r, &pixelAt(in, area.left, y + margin)->r, width * 4, below, weights);
            weigh(&blurred[0].r, &line[size_t(margin)].r, area.width * 4, 4, weights);
            finishRow(pixelAt(out, area.left, y), pixelAt(in, area.left + margin, y + margin), blurred.data(),
                      area.width, combine);
        }
    });
}

// What remains to be blurred of a bell in a picture made smaller by `factor`: making it so from means of squares, and
// large again with smooth curves, blurs as well.
double restOf(double deviation, int factor)
{
    constexpr double cut = 0.9733; // what cutting a bell leaves of its variance
    const double square = double(factor) * factor;
    const double wanted = varianceOf(bell(deviation)) / square;
    const double ofMeans = (1 - 1 / square) / 12;
    const double ofCurves = 1.0 / 3;
    return std::sqrt(std::max(wanted - ofMeans - ofCurves, 0.1) / cut);
}

using Four = Wide::Four::Floats;

/// A part of a picture at half its size, where pixel (x, y) stands for (2 x, 2 y) and those to the right and below.
struct Half
{
    int left;
    int top;
    int width;
    int height;
    std::vector<Pixel> pixels{size_t(width) * size_t(height)};

    [[nodiscard]] Pixel *at(int x, int y) { return &pixels[size_t(y - top) * size_t(width) + size_t(x - left)]; }
    [[nodiscard]] Half around(int reach) const
    {
        return {left - reach, top - reach, width + 2 * reach, height + 2 * reach};
    }
};

void fillMeans(Half &half, VipsRegion &in, int margin)
{
    for (int y = 0; y < half.height; ++y) {
        const int line = 2 * (half.top + y) + margin;
        const auto *upper = reinterpret_cast<const Four *>(pixelAt(in, 2 * half.left + margin, line));
        const auto *lower = reinterpret_cast<const Four *>(pixelAt(in, 2 * half.left + margin, line + 1));
        auto *to = reinterpret_cast<Four *>(half.at(half.left, half.top + y));
        Wide::run([=, width = half.width]() TAMSEL_WIDE {
            for (int x = 0; x < width; ++x)
                to[x] = 0.25F * (upper[2 * x] + upper[2 * x + 1] + (lower[2 * x] + lower[2 * x + 1]));
        });
    }
}

void fillBlurred(Half &blurred, Half &half, const std::vector<float> &weights)
{
    std::vector<Pixel> line(static_cast<size_t>(half.width));
    for (int y = blurred.top; y < blurred.top + blurred.height; ++y) {
        weigh(&line[0].r, &half.at(half.left, y)->r, half.width * 4, half.width * 4, weights);
        weigh(&blurred.at(blurred.left, y)->r, &line[size_t(blurred.left - half.left)].r, blurred.width * 4, 4,
              weights);
    }
}

// Of the four pixels around one of the first of two that a pixel stands for; those of the second are reversed.
constexpr std::array<float, 4> kCurve{1 / 384.0F, 121 / 384.0F, 235 / 384.0F, 27 / 384.0F};

// A row of the large picture, still half as wide.
void fillLine(std::vector<Pixel> &line, Half &blurred, int y)
{
    const int first = y / 2 - 2 + y % 2;
    const auto weightOf = [y](size_t i) { return kCurve[y % 2 == 0 ? i : 3 - i]; };
    const auto rowOf = [&](int i) { return &blurred.at(blurred.left, first + i)->r; };
    Wide::run([to = &line[0].r, count = 4 * blurred.width, a = rowOf(0), b = rowOf(1), c = rowOf(2), d = rowOf(3),
               ofA = weightOf(0), ofB = weightOf(1), ofC = weightOf(2), ofD = weightOf(3)]() TAMSEL_WIDE {
#pragma GCC ivdep
        for (int i = 0; i < count; ++i)
            to[i] = ofA * a[i] + ofB * b[i] + ofC * c[i] + ofD * d[i];
    });
}

// Two pixels for each but two on either side.
void fillTwice(std::vector<Pixel> &row, const std::vector<Pixel> &line)
{
    Wide::run([to = reinterpret_cast<Four *>(row.data()), from = reinterpret_cast<const Four *>(line.data()),
               count = int(line.size()) - 4]() TAMSEL_WIDE {
        constexpr auto curve = kCurve;
        for (int i = 0; i < count; ++i) {
            const Four *p = from + i;
            to[2 * i] = curve[0] * p[0] + curve[1] * p[1] + curve[2] * p[2] + curve[3] * p[3];
            to[2 * i + 1] = curve[3] * p[1] + curve[2] * p[2] + curve[1] * p[3] + curve[0] * p[4];
        }
    });
}

// The same on pixels half as many either way, where no one can tell.
bool addHalved(WorkingImage &image, double deviation, const Combine &combine)
{
    const std::vector<float> weights = bell(restOf(deviation, 2));
    const int reach = int(weights.size()) - 1;
    const int margin = 2 * reach + 5;
    return Neighbours::addStep(image, margin, [=](VipsRegion &out, VipsRegion &in) {
        const VipsRect &area = out.valid;
        const int left = area.left / 2 - 2;
        const int top = area.top / 2 - 2;
        Half blurred{left, top, (VIPS_RECT_RIGHT(&area) - 1) / 2 + 3 - left,
                     (VIPS_RECT_BOTTOM(&area) - 1) / 2 + 3 - top};
        Half half = blurred.around(reach);
        fillMeans(half, in, margin);
        fillBlurred(blurred, half, weights);
        std::vector<Pixel> line(static_cast<size_t>(blurred.width));
        std::vector<Pixel> row(2 * line.size());
        for (int y = area.top; y < VIPS_RECT_BOTTOM(&area); ++y) {
            fillLine(line, blurred, y);
            fillTwice(row, line);
            finishRow(pixelAt(out, area.left, y), pixelAt(in, area.left + margin, y + margin),
                      &row[size_t(area.left % 2)], area.width, combine);
        }
    });
}

bool addReduced(WorkingImage &image, double deviation, int factor)
{
    const double rest = restOf(deviation, factor);
    return Reduction::addReduced(image, {factor, Reduction::Merging::Mean, Reduction::Curve::Smooth},
                                 [=](WorkingImage &reduced) { return addDirectly(reduced, rest, {}); });
}

bool addAny(WorkingImage &image, double deviation, const Combine &combine, Blurring::Precision precision)
{
    constexpr double least = 0.3;
    constexpr double narrow = 2.4; // for fewer pixels
    constexpr double wide = 8;     // for pieces on their own
    constexpr double enough = 3;
    if (deviation < least && !combine)
        return true;
    const double sigma = std::clamp(deviation, 0.0, double(std::max(image.size().width(), image.size().height())));
    const int factor = sigma < wide ? 1 : Reduction::factorFor(sigma, enough);
    if (!image.setAlpha(Alpha::Premultiplied))
        return false;
    if (factor <= 1)
        return sigma < narrow || precision == Blurring::Precision::Full
                   ? addDirectly(image, sigma < least ? 0.01 : sigma, combine)
                   : addHalved(image, sigma, combine);
    if (!combine)
        return addReduced(image, sigma, factor);
    if (!image.keepPieces(WorkingImage::Reading::Around))
        return false;
    WorkingImage blurred = image;
    return addReduced(blurred, sigma, factor) && blurred.setAlpha(Alpha::Premultiplied) &&
           image.combineRows(blurred, combine);
}

}

bool Blurring::addGaussian(WorkingImage &image, double deviation, Precision precision)
{
    return addAny(image, deviation, {}, precision);
}

bool Blurring::addRowsWithGaussian(WorkingImage &image, double deviation, const Combine &combine)
{
    return addAny(image, deviation, combine, Precision::Visible);
}
