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

enum class To { Empty, Sums };

// Weighs floats from `before` backward and from `behind` on, each `step` floats from the last, perhaps beside others.
void weigh(float *to, const float *before, const float *behind, int count, ptrdiff_t step,
           const std::vector<float> &weights, To state = To::Empty)
{
    const float *weight = weights.data();
    const size_t reach = weights.size();
    const auto weighAt = [=](int i, auto many) TAMSEL_WIDE {
        using Floats = typename decltype(many)::Floats;
        constexpr size_t sums = sizeof(Floats) > sizeof(Wide::Four::Floats) ? 4 : 1; // side by side, as each waits
        Floats sum[sums] = {};
        for (size_t n = 0; n < sums && state == To::Sums; ++n)
            sum[n] = reinterpret_cast<const Floats *>(to + i)[n];
        for (size_t k = 0; k < reach; ++k) {
            const auto *left = reinterpret_cast<const Floats *>(before + i - ptrdiff_t(k) * step);
            const auto *right = reinterpret_cast<const Floats *>(behind + i + ptrdiff_t(k) * step);
            for (size_t n = 0; n < sums; ++n)
                sum[n] += weight[k] * (left[n] + right[n]);
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
    std::vector<float> weights = bell(deviation);
    weights[0] /= 2; // it is taken twice
    const int margin = int(weights.size()) - 1;
    return Neighbours::addStep(image, margin, [=](VipsRegion &out, VipsRegion &in) {
        const VipsRect &area = out.valid;
        const int width = area.width + 2 * margin;
        std::vector<Pixel> line(static_cast<size_t>(width));
        std::vector<Pixel> blurred(static_cast<size_t>(area.width));
        const ptrdiff_t below = ptrdiff_t(in.bpl / int(sizeof(float)));
        const float *middle = &line[size_t(margin)].r;
        for (int y = area.top; y < VIPS_RECT_BOTTOM(&area); ++y) {
            const float *from = &pixelAt(in, area.left, y + margin)->r;
            weigh(&line[0].r, from, from, width * 4, below, weights);
            weigh(&blurred[0].r, middle, middle, area.width * 4, 4, weights);
            finishRow(pixelAt(out, area.left, y), pixelAt(in, area.left + margin, y + margin), blurred.data(),
                      area.width, combine);
        }
    });
}

constexpr double kCut = 0.9733; // what cutting a bell leaves of its variance

/// The weights of pixels to either side of a place between two, for a bell that gets wider by the smooth curves that go
/// through every second such place.
std::vector<float> bellBetween(double deviation)
{
    constexpr double ofCurves = 4.0 / 3;
    const double variance = (varianceOf(bell(deviation)) - ofCurves) / kCut;
    std::vector<float> weights;
    float sum = 0;
    for (int i = 0; i < int(3 * std::sqrt(variance) + 0.5); ++i) {
        weights.push_back(float(std::exp(-(i + 0.5) * (i + 0.5) / (2 * variance))));
        sum += 2 * weights.back();
    }
    for (float &weight : weights)
        weight /= sum;
    return weights;
}

using Four = Wide::Four::Floats;

/// A part of a picture at half its size, where pixel (x, y) lies between (2 x, 2 y) and those to the right and below.
struct Half
{
    int left;
    int top;
    int width;
    int height;
    std::vector<Pixel> pixels{size_t(width) * size_t(height)};

    [[nodiscard]] Pixel *at(int x, int y) { return &pixels[size_t(y - top) * size_t(width) + size_t(x - left)]; }
};

// How many pixels of half the size there are to either side of one that is made of them.
int aroundOf(const std::vector<float> &weights)
{
    return int(weights.size()) / 2;
}

// Parts pixels into those in even places and those in odd ones.
void part(std::vector<Pixel> &even, std::vector<Pixel> &odd, const std::vector<Pixel> &line)
{
    Wide::run([a = reinterpret_cast<Four *>(even.data()), b = reinterpret_cast<Four *>(odd.data()),
               from = reinterpret_cast<const Four *>(line.data()), count = even.size()]() TAMSEL_WIDE {
        for (size_t i = 0; i < count; ++i) {
            a[i] = from[2 * i];
            b[i] = from[2 * i + 1];
        }
    });
}

void fillBlurred(Half &blurred, VipsRegion &in, int margin, const std::vector<float> &weights)
{
    std::array<std::vector<float>, 2> byPlace; // of neighbours in the same places, and in the others
    for (size_t i = 0; i < weights.size(); ++i)
        byPlace[i % 2].push_back(weights[i]);
    const int around = aroundOf(weights);
    const int width = blurred.width + 2 * around;
    const ptrdiff_t below = ptrdiff_t(in.bpl / int(sizeof(float)));
    std::vector<Pixel> line(2 * size_t(width));
    std::vector<Pixel> even(static_cast<size_t>(width));
    std::vector<Pixel> odd(static_cast<size_t>(width));
    for (int y = 0; y < blurred.height; ++y) {
        const float *from = &pixelAt(in, 2 * (blurred.left - around) + margin, 2 * (blurred.top + y) + margin)->r;
        weigh(&line[0].r, from, from + below, width * 8, below, weights);
        part(even, odd, line);
        float *to = &blurred.at(blurred.left, blurred.top + y)->r;
        const auto first = size_t(around);
        weigh(to, &even[first].r, &odd[first].r, blurred.width * 4, 4, byPlace[0]);
        weigh(to, &odd[first - 1].r, &even[first + 1].r, blurred.width * 4, 4, byPlace[1], To::Sums);
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

// Computes every second pixel either way, and those between by smooth curves, which blur as well.
bool addHalved(WorkingImage &image, double deviation, const Combine &combine)
{
    const std::vector<float> weights = bellBetween(deviation);
    const int margin = 2 * aroundOf(weights) + 5;
    return Neighbours::addStep(image, margin, [=](VipsRegion &out, VipsRegion &in) {
        const VipsRect &area = out.valid;
        const int left = area.left / 2 - 2;
        const int top = area.top / 2 - 2;
        Half blurred{left, top, (VIPS_RECT_RIGHT(&area) - 1) / 2 + 3 - left,
                     (VIPS_RECT_BOTTOM(&area) - 1) / 2 + 3 - top};
        fillBlurred(blurred, in, margin, weights);
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
    const double square = double(factor) * factor;
    const double wanted = varianceOf(bell(deviation)) / square;
    const double ofMeans = (1 - 1 / square) / 12;
    const double ofCurves = 1.0 / 3;
    const double rest = std::sqrt(std::max(wanted - ofMeans - ofCurves, 0.1) / kCut);
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
