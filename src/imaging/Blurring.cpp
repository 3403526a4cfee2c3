#include "Blurring.h"

#include "Neighbours.h"
#include "Reduction.h"

#include <algorithm>
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
        constexpr size_t sums = sizeof(Floats) == sizeof(Wide::Eight::Floats) ? 4 : 1; // side by side, as each waits
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
    Wide::run([=]() TAMSEL_WIDE {
        constexpr int most = 32;
        int i = 0;
        for (; i + most <= count; i += most)
            weighAt(i, Wide::Eight());
        for (; i < count; i += 4)
            weighAt(i, Wide::Four());
    });
}

bool addDirectly(WorkingImage &image, double deviation, const Combine &combine)
{
    const std::vector<float> weights = bell(deviation);
    const int margin = int(weights.size()) - 1;
    return Neighbours::addStep(image, margin, [=](VipsRegion &out, VipsRegion &in) {
        const VipsRect &area = out.valid;
        const int width = area.width + 2 * margin;
        std::vector<Pixel> line(static_cast<size_t>(width));
        const ptrdiff_t below = ptrdiff_t(in.bpl / int(sizeof(float)));
        for (int y = area.top; y < VIPS_RECT_BOTTOM(&area); ++y) {
            weigh(&line[0].r, &pixelAt(in, area.left, y + margin)->r, width * 4, below, weights);
            Pixel *row = pixelAt(out, area.left, y);
            weigh(&row->r, &line[size_t(margin)].r, area.width * 4, 4, weights);
            if (!combine)
                continue;
            std::copy_n(row, area.width, line.begin());
            std::copy_n(pixelAt(in, area.left + margin, y + margin), area.width, row);
            combine(row, line.data(), area.width);
        }
    });
}

// Where blurred pixels are left out, smooth curves go through the rest; they blur as well.
bool addReduced(WorkingImage &image, double deviation, int factor)
{
    constexpr double cut = 0.9733; // what cutting a bell leaves of its variance
    const double square = double(factor) * factor;
    const double wanted = varianceOf(bell(deviation)) / square;
    const double ofMeans = (1 - 1 / square) / 12;
    const double ofCurves = 1.0 / 3;
    const double rest = std::sqrt(std::max(wanted - ofMeans - ofCurves, 0.1) / cut);
    return Reduction::addReduced(image, {factor, Reduction::Merging::Mean, Reduction::Curve::Smooth},
                                 [=](WorkingImage &reduced) { return addDirectly(reduced, rest, {}); });
}

bool addAny(WorkingImage &image, double deviation, const Combine &combine)
{
    constexpr double least = 0.3;
    constexpr double narrow = 8;
    constexpr double enough = 3;
    if (deviation < least && !combine)
        return true;
    const double sigma = std::clamp(deviation, 0.0, double(std::max(image.size().width(), image.size().height())));
    const int factor = sigma < narrow ? 1 : Reduction::factorFor(sigma, enough);
    if (!image.setAlpha(Alpha::Premultiplied))
        return false;
    if (factor <= 1)
        return addDirectly(image, sigma < least ? 0.01 : sigma, combine);
    if (!combine)
        return addReduced(image, sigma, factor);
    if (!image.keepPieces(WorkingImage::Reading::Around))
        return false;
    WorkingImage blurred = image;
    return addReduced(blurred, sigma, factor) && blurred.setAlpha(Alpha::Premultiplied) &&
           image.combineRows(blurred, combine);
}

}

bool Blurring::addGaussian(WorkingImage &image, double deviation)
{
    return addAny(image, deviation, {});
}

bool Blurring::addRowsWithGaussian(WorkingImage &image, double deviation, const Combine &combine)
{
    return addAny(image, deviation, combine);
}
