#include "Neighbours.h"

#include "PixelMath.h"
#include "Sampling.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

using Alpha = WorkingImage::Alpha;
using Pieces = WorkingImage::Pieces;

bool addMargin(WorkingImage &image, int margin)
{
    const QSize size = image.size();
    return image.add([&](VipsImage *in, VipsImage **out) {
        return vips_embed(in, out, margin, margin, size.width() + 2 * margin, size.height() + 2 * margin, "extend",
                          VIPS_EXTEND_COPY, nullptr);
    });
}

void addTo(Pixel &sum, const Pixel &pixel, float weight)
{
    sum.r += pixel.r * weight;
    sum.g += pixel.g * weight;
    sum.b += pixel.b * weight;
    sum.a += pixel.a * weight;
}

}

bool Neighbours::addStep(WorkingImage &image, int margin, Function function)
{
    const QSize size = image.size();
    if (!image.setAlpha(Alpha::Premultiplied) || !addMargin(image, margin))
        return false;
    return image.addStep(
        size, Pieces::Tiles, [margin, run = std::move(function)](VipsRegion &out, VipsRegion *const *in) {
            const VipsRect &area = out.valid;
            const VipsRect around{area.left, area.top, area.width + 2 * margin, area.height + 2 * margin};
            if (vips_region_prepare(in[0], &around) != 0)
                return false;
            run(out, *in[0]);
            return true;
        });
}

bool Neighbours::addWeighted(WorkingImage &image, std::vector<Tap> taps)
{
    int margin = 0;
    float sum = 0;
    for (const Tap &tap : taps) {
        margin = std::max({margin, std::abs(tap.x), std::abs(tap.y)});
        sum += tap.weight;
    }
    for (Tap &tap : taps)
        tap.weight /= sum;
    return addStep(image, margin, [margin, taps = std::move(taps)](VipsRegion &out, VipsRegion &in) {
        const VipsRect &area = out.valid;
        for (int y = area.top; y < VIPS_RECT_BOTTOM(&area); ++y) {
            Pixel *row = pixelAt(out, area.left, y);
            std::fill_n(row, area.width, Pixel());
            for (const Tap &tap : taps) {
                const Pixel *from = pixelAt(in, area.left + margin + tap.x, y + margin + tap.y);
                for (int x = 0; x < area.width; ++x)
                    addTo(row[x], from[x], tap.weight);
            }
        }
    });
}

bool Neighbours::addSmaller(WorkingImage &image, int factor)
{
    const QSize full = image.size();
    const QSize size((full.width() + factor - 1) / factor, (full.height() + factor - 1) / factor);
    if (!image.keepPieces()) // read by rows
        return false;
    return image.addStep(size, Pieces::Tiles, [=](VipsRegion &out, VipsRegion *const *in) {
        const VipsRect &area = out.valid;
        const int left = area.left * factor;
        const int width = std::min(area.width * factor, full.width() - left);
        std::vector<std::array<double, 4>> sums(size_t(area.width));
        for (int y = area.top; y < VIPS_RECT_BOTTOM(&area); ++y) {
            std::fill(sums.begin(), sums.end(), std::array<double, 4>());
            const int end = std::min((y + 1) * factor, full.height());
            for (int line = y * factor; line < end; ++line) {
                const VipsRect wanted{left, line, width, 1};
                if (vips_region_prepare(in[0], &wanted) != 0)
                    return false;
                const Pixel *from = pixelAt(*in[0], left, line);
                for (int x = 0; x < width; ++x) {
                    auto &sum = sums[size_t(x / factor)];
                    sum = {sum[0] + double(from[x].r), sum[1] + double(from[x].g), sum[2] + double(from[x].b),
                           sum[3] + double(from[x].a)};
                }
            }
            Pixel *row = pixelAt(out, area.left, y);
            for (int x = 0; x < area.width; ++x) {
                const int across = std::min(factor, width - x * factor);
                const double count = double(across) * (end - y * factor);
                const auto &sum = sums[size_t(x)];
                row[x] = {float(sum[0] / count), float(sum[1] / count), float(sum[2] / count), float(sum[3] / count)};
            }
        }
        return true;
    });
}

int Neighbours::reductionFor(double length, double enough)
{
    return std::max(1, int(std::min(length / enough, 1e4)));
}

bool Neighbours::addReduced(WorkingImage &image, int factor, const std::function<bool(WorkingImage &)> &step)
{
    if (factor <= 1)
        return step(image);
    const QSize full = image.size();
    if (!image.setAlpha(Alpha::Premultiplied) || !addSmaller(image, factor) || !image.keepPieces() || !step(image) ||
        !image.setAlpha(Alpha::Premultiplied) || !image.keepPieces())
        return false;
    const double small = image.size().height();
    return Sampling::addMapped(image, full, Sampling::Edge::Clamp, [=](QPointF place) {
        // Both pictures begin at the top.
        return QPointF(place.x() / factor, small - (full.height() - place.y()) / factor);
    });
}

bool Neighbours::addGaussian(WorkingImage &image, double deviation)
{
    constexpr double least = 0.3;
    constexpr double enough = 6;
    if (deviation < least)
        return true;
    const double sigma = std::min(deviation, double(std::max(image.size().width(), image.size().height())));
    const int factor = reductionFor(sigma, enough);
    // Making smaller and larger blurs as well.
    const double rest = factor > 1 ? std::sqrt(std::max(sigma * sigma / factor / factor - 0.25, 0.01)) : sigma;
    return addReduced(image, factor, [rest](WorkingImage &reduced) {
        return reduced.setAlpha(Alpha::Premultiplied) && reduced.add([rest](VipsImage *in, VipsImage **out) {
            constexpr double atThree = 0.0111; // a bell's height at three deviations
            return vips_gaussblur(in, out, rest, "min_ampl", atThree, "precision", VIPS_PRECISION_FLOAT, nullptr);
        });
    });
}

namespace {

using Neighbours::Tap;

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
    const int factor = reductionFor(length, enough);
    return addReduced(image, factor, [=](WorkingImage &reduced) {
        return addWeighted(reduced, boxTaps(length / factor, /*isAcross=*/true)) &&
               addWeighted(reduced, boxTaps(length / factor, /*isAcross=*/false));
    });
}

namespace {

using Better = float (*)(float, float);

Pixel better(const Pixel &a, const Pixel &b, Better choose)
{
    return {choose(a.r, b.r), choose(a.g, b.g), choose(a.b, b.b), choose(a.a, b.a)};
}

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
                level[i] = better(below[i], below[i + size_t(length / 2)], m_choose);
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
            row[i] = better(row[i], better(first[i], second[i], m_choose), m_choose);
    }

private:
    Better m_choose;
    std::vector<std::vector<Pixel>> m_levels;
};

void findExtremes(VipsRegion &out, VipsRegion &in, const std::vector<int> &halfWidths, int margin, Better choose)
{
    const VipsRect &area = out.valid;
    const int reach = int(halfWidths.size()) / 2;
    for (int y = area.top; y < VIPS_RECT_BOTTOM(&area); ++y)
        std::memcpy(pixelAt(out, area.left, y), pixelAt(in, area.left + margin, y + margin),
                    size_t(area.width) * sizeof(Pixel));
    Stretches stretches(choose);
    for (int line = area.top - reach; line < VIPS_RECT_BOTTOM(&area) + reach; ++line) {
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
    const Better choose = extreme == Extreme::Most ? [](float a, float b) { return std::max(a, b); }
                                                   : [](float a, float b) { return std::min(a, b); };
    const int margin = std::max(int(halfWidths.size()) / 2, *std::max_element(halfWidths.cbegin(), halfWidths.cend()));
    return addStep(image, margin, [=, widths = std::move(halfWidths)](VipsRegion &out, VipsRegion &in) {
        findExtremes(out, in, widths, margin, choose);
    });
}

bool Neighbours::addMedian(WorkingImage &image)
{
    const QSize size = image.size();
    return image.setAlpha(Alpha::Premultiplied) && addMargin(image, 1) &&
           image.add([](VipsImage *in, VipsImage **out) { return vips_median(in, out, 3, nullptr); }) &&
           image.add([&](VipsImage *in, VipsImage **out) {
               return vips_extract_area(in, out, 1, 1, size.width(), size.height(), nullptr);
           });
}

bool Neighbours::addLightness(WorkingImage &image, double deviation)
{
    return image.setAlpha(Alpha::Straight) && image.addPixelStep([](Pixel &pixel) {
        pixel = PixelMath::grey(SrgbCurve::encoded(luminance(pixel)), pixel.a);
    }) && addGaussian(image, deviation) &&
           image.setAlpha(Alpha::Straight);
}
