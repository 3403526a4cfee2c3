#include "Sampling.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

/// How to read the input.
struct Manner
{
    Sampling::Edge edge;
    Sampling::Between between;
    bool isNearest; ///< of the pixels
};

/// The places (rows downward) that the pixels of a part of the result come from.
struct Fetch
{
    VipsRect area;
    std::vector<QPointF> places; // grouped by pixel, in the order of the rows
    std::vector<int> ends;       // where each pixel's places end; empty when each has one

    [[nodiscard]] size_t endOf(size_t pixel) const { return ends.empty() ? pixel + 1 : size_t(ends[pixel]); }
};

// Far outside is as good as outside, and can be computed with.
QPointF inReach(QPointF place, QSize size)
{
    const auto within = [](double value, double length) {
        return value > -2 ? std::min(value, length + 2) : -2.0; // also for no number
    };
    return {within(place.x(), size.width()), within(place.y(), size.height())};
}

/// A region of the input, and the edges of the image.
class Window
{
public:
    Window(VipsRegion &region, QSize size, Manner manner)
        : m_region(region)
        , m_size(size)
        , m_manner(manner)
        , m_origin(reinterpret_cast<const char *>(pixelAt(region, 0, 0)))
        , m_bytesPerLine(region.bpl)
    {}

    using Floats = Wide::Four::Floats;

    [[nodiscard]] Pixel meanOf(const QPointF *from, const QPointF *to) const
    {
        Floats sum{};
        for (const QPointF *place = from; place != to; ++place) {
            const Pixel pixel = mixedAt(*place);
            sum += *reinterpret_cast<const Floats *>(&pixel);
        }
        sum /= float(std::max<ptrdiff_t>(to - from, 1));
        return {sum[0], sum[1], sum[2], sum[3]};
    }
    [[nodiscard]] __attribute__((always_inline)) Pixel mixedAt(QPointF place) const
    {
        // Places begin at -2.
        const int x = int(place.x() + 3.5) - 4;
        const int y = int(place.y() + 3.5) - 4;
        const bool isInside = unsigned(x) < unsigned(m_size.width() - 1) && unsigned(y) < unsigned(m_size.height() - 1);
        if (!isInside || m_manner.between != Sampling::Between::Linear)
            return mixedSlowly(place);
        const auto across = float(place.x() - 0.5 - x);
        const auto down = float(place.y() - 0.5 - y);
        const char *above = m_origin + y * m_bytesPerLine + x * ptrdiff_t(sizeof(Pixel));
        const auto *upper = reinterpret_cast<const Floats *>(above);
        const auto *lower = reinterpret_cast<const Floats *>(above + m_bytesPerLine);
        const Floats high = upper[0] + across * (upper[1] - upper[0]);
        const Floats low = lower[0] + across * (lower[1] - lower[0]);
        Pixel result;
        *reinterpret_cast<Floats *>(&result) = high + down * (low - high);
        return result;
    }

private:
    using Weights = std::array<float, 4>;

    [[nodiscard]] Pixel mixedSlowly(QPointF place) const
    {
        const double left = std::floor(place.x() - 0.5);
        const double top = std::floor(place.y() - 0.5);
        const Weights across = weights(float(place.x() - 0.5 - left));
        const Weights down = weights(float(place.y() - 0.5 - top));
        const int first = m_manner.between == Sampling::Between::Linear ? 1 : 0;
        Pixel sum;
        for (int row = first; row < 4 - first; ++row) {
            for (int column = first; column < 4 - first; ++column)
                add(sum, int(left) + column - 1, int(top) + row - 1, across[size_t(column)] * down[size_t(row)]);
        }
        return sum;
    }
    // Of the pixels from one before to two behind.
    [[nodiscard]] Weights weights(float t) const
    {
        if (m_manner.between == Sampling::Between::Linear)
            return {0, 1 - t, t, 0};
        return {((2 - t) * t - 1) * t / 2, ((3 * t - 5) * t * t + 2) / 2, ((4 - 3 * t) * t + 1) * t / 2,
                (t - 1) * t * t / 2};
    }
    void add(Pixel &sum, int x, int y, float weight) const
    {
        if (m_manner.edge == Sampling::Edge::Clear && (x < 0 || y < 0 || x >= m_size.width() || y >= m_size.height()))
            return;
        const Pixel &pixel =
            *pixelAt(m_region, std::clamp(x, 0, m_size.width() - 1), std::clamp(y, 0, m_size.height() - 1));
        sum = {sum.r + weight * pixel.r, sum.g + weight * pixel.g, sum.b + weight * pixel.b, sum.a + weight * pixel.a};
    }

    VipsRegion &m_region;
    QSize m_size;
    Manner m_manner;
    const char *m_origin; ///< where the image's first pixel would be
    ptrdiff_t m_bytesPerLine;
};

// What of the input is needed for these places.
VipsRect boundsOf(const QPointF *from, const QPointF *to, QSize size)
{
    double left = size.width();
    double top = size.height();
    double right = 0;
    double bottom = 0;
    for (; from != to; ++from) {
        left = std::min(left, from->x());
        right = std::max(right, from->x());
        top = std::min(top, from->y());
        bottom = std::max(bottom, from->y());
    }
    const int x = std::clamp(int(std::floor(left)) - 2, 0, size.width() - 1);
    const int y = std::clamp(int(std::floor(top)) - 2, 0, size.height() - 1);
    return {x, y, std::clamp(int(right) + 3 - x, 1, size.width() - x),
            std::clamp(int(bottom) + 3 - y, 1, size.height() - y)};
}

/// Fills pixels `from` to `to` of the area. What comes from all over the input is fetched in parts.
bool fillPart(VipsRegion &out, VipsRegion &in, const Fetch &fetch, size_t from, size_t to, Manner manner)
{
    constexpr qint64 most = 1 << 20; // of pixels at a time
    const QSize size(in.im->Xsize, in.im->Ysize);
    const size_t begin = from == 0 ? 0 : fetch.endOf(from - 1);
    const QPointF *places = fetch.places.data();
    const VipsRect bounds = boundsOf(places + begin, places + fetch.endOf(to - 1), size);
    if (qint64(bounds.width) * bounds.height > most && to - from > 1) {
        const size_t middle = (from + to) / 2;
        return fillPart(out, in, fetch, from, middle, manner) && fillPart(out, in, fetch, middle, to, manner);
    }
    if (vips_region_prepare(&in, &bounds) != 0)
        return false;
    const Window window(in, size, manner);
    const auto width = size_t(fetch.area.width);
    for (size_t i = from; i < to;) {
        Pixel *row = pixelAt(out, fetch.area.left, fetch.area.top + int(i / width));
        const size_t end = std::min(to, (i / width + 1) * width);
        if (fetch.ends.empty()) {
            Pixel *first = row + i % width;
            const QPointF *place = places + i;
            const size_t count = end - i;
            Wide::run([=]() TAMSEL_WIDE {
                for (size_t n = 0; n < count; ++n)
                    first[n] = window.mixedAt(place[n]);
            });
            i = end;
        } else {
            for (; i < end; ++i)
                row[i % width] = window.meanOf(places + (i == 0 ? 0 : fetch.endOf(i - 1)), places + fetch.endOf(i));
        }
    }
    return true;
}

/// Appends the places for a row of pixels, and where each pixel's end when they can be several.
using FindPlaces = std::function<void(QPointF first, int count, Fetch &fetch)>;

// Fills an area of the piece, small enough for its places to fit into memory and to lie together.
bool fillArea(VipsRegion &out, VipsRegion &in, const VipsRect &area, Manner manner, const FindPlaces &find)
{
    const QSize input(in.im->Xsize, in.im->Ysize);
    Fetch fetch{area, {}, {}};
    for (int y = area.top; y < VIPS_RECT_BOTTOM(&area); ++y)
        find(QPointF(area.left + 0.5, out.im->Ysize - y - 0.5), area.width, fetch);
    for (QPointF &place : fetch.places) {
        place = inReach(QPointF(place.x(), input.height() - place.y()), input);
        if (manner.isNearest)
            place = QPointF(std::floor(place.x()) + 0.5, std::floor(place.y()) + 0.5);
    }
    return fillPart(out, in, fetch, 0, size_t(area.width) * size_t(area.height), manner);
}

bool addFetch(WorkingImage &image, QSize size, Sampling::Edge edge, Sampling::Between between, const FindPlaces &find)
{
    const Manner manner{edge, between, image.samplesNearest()};
    if (!image.setAlpha(WorkingImage::Alpha::Premultiplied) || !image.keepPieces())
        return false;
    if (manner.edge == Sampling::Edge::Clear)
        image.setMayBeClear();
    return image.addStep(size, WorkingImage::Pieces::Tiles, [=](VipsRegion &out, VipsRegion *const *in) {
        constexpr int side = 64;
        const VipsRect &piece = out.valid;
        for (int y = piece.top; y < VIPS_RECT_BOTTOM(&piece); y += side) {
            for (int x = piece.left; x < VIPS_RECT_RIGHT(&piece); x += side) {
                const VipsRect area{x, y, std::min(side, VIPS_RECT_RIGHT(&piece) - x),
                                    std::min(side, VIPS_RECT_BOTTOM(&piece) - y)};
                if (!fillArea(out, *in[0], area, manner, find))
                    return false;
            }
        }
        return true;
    });
}

}

bool Sampling::addMappedRows(WorkingImage &image, QSize size, Edge edge, const MapRow &map, Between between)
{
    return addFetch(image, size, edge, between, [map](QPointF first, int count, Fetch &fetch) {
        const size_t begin = fetch.places.size();
        for (int i = 0; i < count; ++i)
            fetch.places.emplace_back(first.x() + i, first.y());
        map(fetch.places.data() + begin, count);
    });
}

bool Sampling::addSpread(WorkingImage &image, Edge edge, const Spread &spread)
{
    return addFetch(image, image.size(), edge, Between::Linear, [spread](QPointF first, int count, Fetch &fetch) {
        for (int i = 0; i < count; ++i) {
            spread(QPointF(first.x() + i, first.y()), fetch.places);
            fetch.ends.push_back(int(fetch.places.size()));
        }
    });
}
