#include "Neighbours.h"

#include "Blurring.h"
#include "Extremes.h"
#include "PixelMath.h"
#include "Reduction.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

using Alpha = WorkingImage::Alpha;
using Pieces = WorkingImage::Pieces;
using Extremes::Better;

}

bool Neighbours::addMargin(WorkingImage &image, int margin)
{
    const QSize size = image.size();
    return image.add([&](VipsImage *in, VipsImage **out) {
        return vips_embed(in, out, margin, margin, size.width() + 2 * margin, size.height() + 2 * margin, "extend",
                          VIPS_EXTEND_COPY, nullptr);
    });
}

bool Neighbours::removeMargin(WorkingImage &image, int margin, QSize size)
{
    return image.add([&](VipsImage *in, VipsImage **out) {
        return vips_extract_area(in, out, margin, margin, size.width(), size.height(), nullptr);
    });
}

bool Neighbours::addStep(WorkingImage &image, int margin, Function function)
{
    const QSize size = image.size();
    if (!image.setAlpha(Alpha::Premultiplied) || !image.keepPieces(WorkingImage::Reading::Around, margin) ||
        !addMargin(image, margin))
        return false;
    const auto step = [margin, run = std::move(function), cancelled = image.cancelled()](VipsRegion &out,
                                                                                         VipsRegion *const *in) {
        const VipsRect &area = out.valid;
        const VipsRect around{area.left, area.top, area.width + 2 * margin, area.height + 2 * margin};
        if (vips_region_prepare(in[0], &around) != 0)
            return false;
        run(out, *in[0]);
        return !isSet(cancelled);
    };
    return image.addStep(size, Pieces::Tiles, step);
}

namespace {

using Neighbours::Tap;

/// Taps side by side, of the same weight.
struct Run
{
    int x;
    int y;
    int count;
    float weight;
};

std::vector<Run> runsOf(const std::vector<Tap> &taps)
{
    std::vector<Run> runs;
    for (const Tap &tap : taps) {
        const bool isNext = !runs.empty() && runs.back().y == tap.y && runs.back().x + runs.back().count == tap.x &&
                            runs.back().weight == tap.weight;
        if (isNext)
            ++runs.back().count;
        else
            runs.push_back({tap.x, tap.y, 1, tap.weight});
    }
    return runs;
}

/// The sums of all pixels of a row up to each, for all rows of a region.
class RowSums
{
public:
    using Doubles = double __attribute__((vector_size(32), aligned(8), may_alias));

    void sumUp(VipsRegion &in)
    {
        m_width = size_t(in.valid.width) + 1;
        m_sums.resize(m_width * size_t(in.valid.height));
        for (int y = 0; y < in.valid.height; ++y) {
            const Pixel *from = pixelAt(in, in.valid.left, in.valid.top + y);
            auto *to = reinterpret_cast<Doubles *>(&m_sums[size_t(y) * m_width]);
            Doubles sum{};
            for (int x = 0; x < in.valid.width; ++x) {
                to[x] = sum;
                sum += Doubles{double(from[x].r), double(from[x].g), double(from[x].b), double(from[x].a)};
            }
            to[in.valid.width] = sum;
        }
    }
    /// Adds the weighted sums of `length` pixels from each on; `x` and `y` from the region's corner.
    void addTo(Pixel *row, int count, int x, int y, const Run &run) const
    {
        const auto *first = reinterpret_cast<const Doubles *>(&m_sums[size_t(y) * m_width + size_t(x)]);
        Wide::run([=, length = run.count, weight = run.weight]() TAMSEL_WIDE {
            for (int i = 0; i < count; ++i) {
                const Doubles sum = first[i + length] - first[i];
                *reinterpret_cast<Wide::Four::Floats *>(row + i) +=
                    weight * __builtin_convertvector(sum, Wide::Four::Floats);
            }
        });
    }

private:
    size_t m_width = 0;
    std::vector<std::array<double, 4>> m_sums; // in doubles: what is dark beside the light is not lost
};

void addTap(Pixel *row, const Pixel *other, int count, float weight)
{
    const float *from = &other->r;
    float *to = &row->r;
    Wide::runFloats(4 * count, [=](int i, auto many) TAMSEL_WIDE {
        using Floats = typename decltype(many)::Floats;
        *reinterpret_cast<Floats *>(to + i) += weight * *reinterpret_cast<const Floats *>(from + i);
    });
}

}

bool Neighbours::addWeighted(WorkingImage &image, std::vector<Tap> taps)
{
    constexpr int fewTaps = 4; // that cost no more than sums
    int margin = 0;
    float sum = 0;
    for (const Tap &tap : taps) {
        margin = std::max({margin, std::abs(tap.x), std::abs(tap.y)});
        sum += tap.weight;
    }
    for (Tap &tap : taps)
        tap.weight /= sum;
    const std::vector<Run> runs = runsOf(taps);
    const bool haveLong = std::any_of(runs.cbegin(), runs.cend(), [](const Run &run) { return run.count > fewTaps; });
    const auto weigh = [=, cancelled = image.cancelled()](VipsRegion &out, VipsRegion &in) {
        const VipsRect &area = out.valid;
        RowSums sums;
        if (haveLong)
            sums.sumUp(in);
        for (int y = area.top; y < VIPS_RECT_BOTTOM(&area) && !isSet(cancelled); ++y) {
            Pixel *row = pixelAt(out, area.left, y);
            std::fill_n(row, area.width, Pixel());
            for (const Run &run : runs) {
                const int left = area.left + margin + run.x;
                const int line = y + margin + run.y;
                if (run.count > fewTaps)
                    sums.addTo(row, area.width, left - in.valid.left, line - in.valid.top, run);
                for (int i = 0; run.count <= fewTaps && i < run.count; ++i)
                    addTap(row, pixelAt(in, left + i, line), area.width, run.weight);
            }
        }
    };
    return addStep(image, margin, weigh);
}

namespace {

// Means over stretches of `length` pixels, along rows or columns.
std::vector<Tap> boxTaps(double length, bool isAcross)
{
    std::vector<Tap> taps;
    const int reach = int(std::ceil(length / 2 - 0.5));
    for (int i = -reach; i <= reach; ++i) {
        const auto weight = float(std::clamp(length / 2 + 0.5 - std::abs(i), 0.0, 1.0));
        taps.push_back({isAcross ? i : 0, isAcross ? 0 : i, weight});
    }
    return taps;
}

}

bool Neighbours::addBox(WorkingImage &image, double side)
{
    constexpr double enough = 32;
    const double length = std::clamp(side, 1.0, 2.0 * std::max(image.size().width(), image.size().height()));
    const int factor = Reduction::factorFor(length, enough);
    return Reduction::addReduced(image, {factor}, [=](WorkingImage &reduced) {
        return addWeighted(reduced, boxTaps(length / factor, /*isAcross=*/true)) &&
               addWeighted(reduced, boxTaps(length / factor, /*isAcross=*/false));
    });
}

namespace {

/// Answers the extreme of any stretch of a row from those of stretches that are powers of two long.
class Stretches
{
public:
    explicit Stretches(Better choose)
        : m_choose(choose)
    {}

    void setRow(const Pixel *row, int count)
    {
        m_levels.resize(1);
        m_levels[0].assign(row, row + count);
        for (int length = 2; length <= count; length *= 2) {
            const std::vector<Pixel> &below = m_levels.back();
            std::vector<Pixel> level(size_t(count - length + 1));
            for (size_t i = 0; i < level.size(); ++i)
                level[i] = Extremes::better(below[i], below[i + size_t(length / 2)], m_choose);
            m_levels.push_back(std::move(level));
        }
    }
    /// Joins the extremes of `length` pixels from each on into `row`.
    void joinInto(Pixel *row, int count, int from, int length) const
    {
        size_t level = 0;
        while ((2 << level) <= length)
            ++level;
        const Pixel *first = m_levels[level].data() + from;
        const Pixel *second = first + length - (1 << level);
        for (int i = 0; i < count; ++i)
            row[i] = Extremes::better(row[i], Extremes::better(first[i], second[i], m_choose), m_choose);
    }

private:
    Better m_choose;
    std::vector<std::vector<Pixel>> m_levels;
};

void findExtremes(VipsRegion &out, VipsRegion &in, const std::vector<int> &halfWidths, int margin, Better choose,
                  const std::atomic<bool> *cancelled)
{
    const VipsRect &area = out.valid;
    const int reach = int(halfWidths.size()) / 2;
    for (int y = area.top; y < VIPS_RECT_BOTTOM(&area); ++y)
        std::memcpy(pixelAt(out, area.left, y), pixelAt(in, area.left + margin, y + margin),
                    size_t(area.width) * sizeof(Pixel));
    Stretches stretches(choose);
    for (int line = area.top - reach; line < VIPS_RECT_BOTTOM(&area) + reach && !isSet(cancelled); ++line) {
        stretches.setRow(pixelAt(in, area.left, line + margin), area.width + 2 * margin);
        const int end = std::min(line + reach + 1, VIPS_RECT_BOTTOM(&area));
        for (int y = std::max(line - reach, area.top); y < end; ++y) {
            const int half = halfWidths[size_t(line - y + reach)];
            stretches.joinInto(pixelAt(out, area.left, y), area.width, margin - half, 2 * half + 1);
        }
    }
}

}

bool Neighbours::addExtreme(WorkingImage &image, Extreme extreme, std::vector<int> halfWidths)
{
    const Better choose = Extremes::betterOf(extreme == Extreme::Most);
    const int margin = std::max(int(halfWidths.size()) / 2, *std::max_element(halfWidths.cbegin(), halfWidths.cend()));
    const auto find = [=, widths = std::move(halfWidths), cancelled = image.cancelled()](VipsRegion &out,
                                                                                         VipsRegion &in) {
        findExtremes(out, in, widths, margin, choose, cancelled);
    };
    return addStep(image, margin, find);
}

bool Neighbours::addMedian(WorkingImage &image)
{
    const QSize size = image.size();
    if (!image.setAlpha(Alpha::Premultiplied) || !image.keepPieces(WorkingImage::Reading::Around))
        return false;
    image.setCostly();
    return addMargin(image, 1) &&
           image.add([](VipsImage *in, VipsImage **out) { return vips_median(in, out, 3, nullptr); }) &&
           removeMargin(image, 1, size);
}

bool Neighbours::addLightness(WorkingImage &image, double deviation)
{
    return image.setAlpha(Alpha::Straight) && image.addPixelStep([](Pixel &pixel) {
        pixel = PixelMath::grey(SrgbCurve::encoded(luminance(pixel)), pixel.a);
    }) && Blurring::addGaussian(image, deviation, Blurring::Precision::Full) &&
           image.setAlpha(Alpha::Straight);
}
