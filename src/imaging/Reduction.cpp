#include "Reduction.h"

#include "Extremes.h"
#include "Neighbours.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

using Alpha = WorkingImage::Alpha;
using Pieces = WorkingImage::Pieces;
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

// Calls `add(pixels, count)` for the lines of the squares of each row of the result, reading a few lines at a time, and
// then `finish(row, lines)`.
template<typename Add, typename Finish>
bool visitSquares(VipsRegion &out, VipsRegion &in, int factor, Add add, Finish finish)
{
    constexpr int most = 1 << 15; // of pixels at a time
    const VipsRect &area = out.valid;
    const int left = area.left * factor;
    const int width = std::min(area.width * factor, in.im->Xsize - left);
    const int linesAtOnce = std::max(most / width, 1);
    const int last = std::min(VIPS_RECT_BOTTOM(&area) * factor, in.im->Ysize);
    int ready = area.top * factor; // up to that line
    for (int y = area.top; y < VIPS_RECT_BOTTOM(&area); ++y) {
        const int end = std::min((y + 1) * factor, in.im->Ysize);
        for (int line = y * factor; line < end; ++line) {
            const VipsRect wanted{left, line, width, std::min(linesAtOnce, last - line)};
            if (line >= ready && vips_region_prepare(&in, &wanted) != 0)
                return false;
            ready = line >= ready ? VIPS_RECT_BOTTOM(&wanted) : ready;
            add(pixelAt(in, left, line), width);
        }
        finish(pixelAt(out, area.left, y), end - y * factor);
    }
    return true;
}

bool fillMeans(VipsRegion &out, VipsRegion &in, int factor)
{
    const VipsRect &area = out.valid;
    const int width = std::min(area.width * factor, in.im->Xsize - area.left * factor);
    std::vector<Sum> sums(size_t(area.width));
    const auto finish = [&](Pixel *row, int lines) {
        for (int x = 0; x < area.width; ++x) {
            const double share = 1.0 / (double(std::min(factor, width - x * factor)) * lines);
            const Sum &sum = sums[size_t(x)];
            row[x] = {float(sum[0] * share), float(sum[1] * share), float(sum[2] * share), float(sum[3] * share)};
        }
        std::fill(sums.begin(), sums.end(), Sum());
    };
    return visitSquares(
        out, in, factor, [&](const Pixel *line, int count) { addLine(sums, line, count, factor); }, finish);
}

bool fillExtremes(VipsRegion &out, VipsRegion &in, int factor, Extremes::Better choose)
{
    std::vector<Pixel> best(size_t(out.valid.width));
    bool isFirst = true;
    const auto add = [&](const Pixel *line, int count) {
        for (int x = 0; x < count; ++x) {
            Pixel &own = best[size_t(x / factor)];
            own = isFirst && x % factor == 0 ? line[x] : Extremes::better(own, line[x], choose);
        }
        isFirst = false;
    };
    return visitSquares(out, in, factor, add, [&](Pixel *row, int) {
        std::copy(best.cbegin(), best.cend(), row);
        isFirst = true;
    });
}

}

bool Reduction::addSmaller(WorkingImage &image, int factor, Merging merging)
{
    const QSize full = image.size();
    const QSize size((full.width() + factor - 1) / factor, (full.height() + factor - 1) / factor);
    return image.keepPieces(WorkingImage::Reading::Around) &&
           image.addStep(size, Pieces::Tiles, [=](VipsRegion &out, VipsRegion *const *in) {
               return merging == Merging::Mean
                          ? fillMeans(out, *in[0], factor)
                          : fillExtremes(out, *in[0], factor, Extremes::betterOf(merging == Merging::Most));
           });
}

namespace {

/// Four neighbours from `first` on, and their weights.
struct Between
{
    int first;
    std::array<float, 4> weights;
};

// What lies at pixel `place` of the larger picture.
Between betweenAt(int place, int factor, Reduction::Curve curve)
{
    const double at = (place + 0.5) / factor - 0.5;
    const double before = std::floor(at);
    const auto t = float(at - before);
    const float u = 1 - t;
    if (curve == Reduction::Curve::Straight)
        return {int(before) - 1, {0, u, t, 0}};
    return {int(before) - 1,
            {u * u * u / 6, (4 - 6 * t * t + 3 * t * t * t) / 6, (4 - 6 * u * u + 3 * u * u * u) / 6, t * t * t / 6}};
}

void fillBetween(VipsRegion &out, VipsRegion &in, int factor, Reduction::Curve curve)
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

bool Reduction::addLarger(WorkingImage &image, QSize size, int factor, Curve curve)
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

int Reduction::factorFor(double length, double enough)
{
    return std::max(1, int(std::min(length / enough, 1e4)));
}

bool Reduction::addReduced(WorkingImage &image, const Manner &manner, const std::function<bool(WorkingImage &)> &step)
{
    const int factor = manner.factor;
    if (factor <= 1)
        return step(image);
    // The border tells the edges' pixels apart from the squares inside.
    const QSize full = image.size();
    const QSize bordered(full.width() + 2 * factor, full.height() + 2 * factor);
    return image.setAlpha(Alpha::Premultiplied) && image.keepPieces(WorkingImage::Reading::Around) &&
           Neighbours::addMargin(image, factor) && addSmaller(image, factor, manner.merging) &&
           image.keepPieces(WorkingImage::Reading::Around) && step(image) && image.setAlpha(Alpha::Premultiplied) &&
           addLarger(image, bordered, factor, manner.curve) && Neighbours::removeMargin(image, factor, full);
}
