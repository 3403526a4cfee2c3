#include "Neighbours.h"

#include "Blurring.h"
#include "PixelMath.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

using Alpha = WorkingImage::Alpha;
using Pieces = WorkingImage::Pieces;

}

bool Neighbours::addMargin(WorkingImage &image, int margin)
{
    const QSize size = image.size();
    return image.add([&](VipsImage *in, VipsImage **out) {
        return vips_embed(in, out, margin, margin, size.width() + 2 * margin, size.height() + 2 * margin, "extend",
                          VIPS_EXTEND_COPY, nullptr);
    });
}

bool Neighbours::addStep(WorkingImage &image, int margin, Function function)
{
    const QSize size = image.size();
    if (!image.setAlpha(Alpha::Premultiplied) || !image.keepPieces(WorkingImage::Reading::Around) ||
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
    const auto weigh = [margin, taps = std::move(taps), cancelled = image.cancelled()](VipsRegion &out,
                                                                                       VipsRegion &in) {
        const VipsRect &area = out.valid;
        for (int y = area.top; y < VIPS_RECT_BOTTOM(&area) && !isSet(cancelled); ++y) {
            Pixel *row = pixelAt(out, area.left, y);
            std::fill_n(row, area.width, Pixel());
            for (const Tap &tap : taps) {
                const float *from = &pixelAt(in, area.left + margin + tap.x, y + margin + tap.y)->r;
                float *to = &row->r;
                Wide::runFloats(4 * area.width, [from, to, weight = tap.weight](int i, auto many) TAMSEL_WIDE {
                    using Floats = typename decltype(many)::Floats;
                    *reinterpret_cast<Floats *>(to + i) += weight * *reinterpret_cast<const Floats *>(from + i);
                });
            }
        }
    };
    return addStep(image, margin, weigh);
}

namespace {

using Sum = std::array<double, 4>;

// Adds the pixels of a line to the sums of the squares in which they lie.
void addLine(std::vector<Sum> &sums, const Pixel *line, int count, int factor)
{
    constexpr int most = 64; // that floats can sum up
    for (int x = 0; x < count; x += factor) {
        Sum &sum = sums[size_t(x / factor)];
        const int end = std::min(x + factor, count);
        for (int from = x; from < end; from += most) {
            auto part = *reinterpret_cast<const Wide::Four::Floats *>(line + from);
            for (int i = from + 1; i < std::min(from + most, end); ++i)
                part += *reinterpret_cast<const Wide::Four::Floats *>(line + i);
            for (size_t i = 0; i < 4; ++i)
                sum[i] += double(part[i]);
        }
    }
}

// Fills pixels `top` to `bottom` with means, reading a few lines at a time.
bool fillMeans(VipsRegion &out, VipsRegion &in, int factor)
{
    constexpr int most = 1 << 15; // of pixels at a time
    const VipsRect &area = out.valid;
    const int left = area.left * factor;
    const int width = std::min(area.width * factor, in.im->Xsize - left);
    const int linesAtOnce = std::max(most / width, 1);
    std::vector<Sum> sums(size_t(area.width));
    for (int y = area.top; y < VIPS_RECT_BOTTOM(&area); ++y) {
        std::fill(sums.begin(), sums.end(), Sum());
        const int end = std::min((y + 1) * factor, in.im->Ysize);
        for (int line = y * factor; line < end; ++line) {
            const int last = std::min(VIPS_RECT_BOTTOM(&area) * factor, in.im->Ysize);
            const VipsRect wanted{left, line, width, std::min(linesAtOnce, last - line)};
            const bool isThere = in.valid.height > 0 && line < VIPS_RECT_BOTTOM(&in.valid) && line >= in.valid.top;
            if (!(isThere && line > area.top * factor) && vips_region_prepare(&in, &wanted) != 0)
                return false;
            addLine(sums, pixelAt(in, left, line), width, factor);
        }
        Pixel *row = pixelAt(out, area.left, y);
        for (int x = 0; x < area.width; ++x) {
            const double share = 1.0 / (double(std::min(factor, width - x * factor)) * (end - y * factor));
            const Sum &sum = sums[size_t(x)];
            row[x] = {float(sum[0] * share), float(sum[1] * share), float(sum[2] * share), float(sum[3] * share)};
        }
    }
    return true;
}

}

bool Neighbours::addSmaller(WorkingImage &image, int factor)
{
    const QSize full = image.size();
    const QSize size((full.width() + factor - 1) / factor, (full.height() + factor - 1) / factor);
    return image.keepPieces(WorkingImage::Reading::Around) &&
           image.addStep(size, Pieces::Tiles,
                         [=](VipsRegion &out, VipsRegion *const *in) { return fillMeans(out, *in[0], factor); });
}

namespace {

/// Four neighbours from `first` on, and their weights.
struct Between
{
    int first;
    std::array<float, 4> weights;
};

// What lies at pixel `place` of the larger picture.
Between betweenAt(int place, int factor, Neighbours::Curve curve)
{
    const double at = (place + 0.5) / factor - 0.5;
    const double before = std::floor(at);
    const auto t = float(at - before);
    const float u = 1 - t;
    if (curve == Neighbours::Curve::Straight)
        return {int(before) - 1, {0, u, t, 0}};
    return {int(before) - 1,
            {u * u * u / 6, (4 - 6 * t * t + 3 * t * t * t) / 6, (4 - 6 * u * u + 3 * u * u * u) / 6, t * t * t / 6}};
}

void fillBetween(VipsRegion &out, VipsRegion &in, int factor, Neighbours::Curve curve)
{
    using Floats = Wide::Four::Floats;
    const VipsRect &area = out.valid;
    std::vector<Between> columns;
    for (int x = 0; x < area.width; ++x)
        columns.push_back(betweenAt(area.left + x, factor, curve));
    const int width = in.im->Xsize;
    const int first = columns.front().first; // which may lie before the edge
    const int count = columns.back().first + 4 - first;
    std::vector<Pixel> line(static_cast<size_t>(count));
    for (int y = area.top; y < VIPS_RECT_BOTTOM(&area); ++y) {
        const Between rows = betweenAt(y, factor, curve);
        std::array<const Pixel *, 4> from;
        for (int i = 0; i < 4; ++i)
            from[size_t(i)] = pixelAt(in, 0, std::clamp(rows.first + i, 0, in.im->Ysize - 1));
        for (int x = 0; x < count; ++x) {
            const int column = std::clamp(first + x, 0, width - 1);
            const auto four = [&](size_t i) { return *reinterpret_cast<const Floats *>(from[i] + column); };
            *reinterpret_cast<Floats *>(&line[size_t(x)]) = rows.weights[0] * four(0) + rows.weights[1] * four(1) +
                                                            rows.weights[2] * four(2) + rows.weights[3] * four(3);
        }
        Pixel *row = pixelAt(out, area.left, y);
        Wide::run([&]() TAMSEL_WIDE {
            for (int x = 0; x < area.width; ++x) {
                const Between &column = columns[size_t(x)];
                const auto *four = reinterpret_cast<const Floats *>(line.data() + column.first - first);
                *reinterpret_cast<Floats *>(row + x) = column.weights[0] * four[0] + column.weights[1] * four[1] +
                                                       column.weights[2] * four[2] + column.weights[3] * four[3];
            }
        });
    }
}

}

bool Neighbours::addLarger(WorkingImage &image, QSize size, int factor, Curve curve)
{
    return image.keepPieces(WorkingImage::Reading::Around) &&
           image.addStep(size, Pieces::Tiles, [=](VipsRegion &out, VipsRegion *const *in) {
               const VipsRect &area = out.valid;
               const VipsRect whole{0, 0, in[0]->im->Xsize, in[0]->im->Ysize};
               VipsRect wanted{area.left / factor - 2, area.top / factor - 2, area.width / factor + 6,
                               area.height / factor + 6};
               vips_rect_intersectrect(&wanted, &whole, &wanted);
               if (vips_region_prepare(in[0], &wanted) != 0)
                   return false;
               fillBetween(out, *in[0], factor, curve);
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
    return image.setAlpha(Alpha::Premultiplied) && addSmaller(image, factor) &&
           image.keepPieces(WorkingImage::Reading::Around) && step(image) && image.setAlpha(Alpha::Premultiplied) &&
           addLarger(image, full, factor, Curve::Straight);
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
    const Better choose = extreme == Extreme::Most ? [](float a, float b) { return std::max(a, b); }
                                                   : [](float a, float b) { return std::min(a, b); };
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
    }) && Blurring::addGaussian(image, deviation) &&
           image.setAlpha(Alpha::Straight);
}
