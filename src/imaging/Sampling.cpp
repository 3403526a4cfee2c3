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
    std::vector<int> ends;       // where each pixel's places end
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
    {}

    [[nodiscard]] Pixel mixedAt(QPointF place) const
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

private:
    using Weights = std::array<float, 4>;

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
    const size_t begin = from == 0 ? 0 : size_t(fetch.ends[from - 1]);
    const QPointF *places = fetch.places.data();
    const VipsRect bounds = boundsOf(places + begin, places + fetch.ends[to - 1], size);
    if (qint64(bounds.width) * bounds.height > most && to - from > 1) {
        const size_t middle = (from + to) / 2;
        return fillPart(out, in, fetch, from, middle, manner) && fillPart(out, in, fetch, middle, to, manner);
    }
    if (vips_region_prepare(&in, &bounds) != 0)
        return false;
    const Window window(in, size, manner);
    size_t place = begin;
    for (size_t i = from; i < to; ++i) {
        Pixel sum;
        const auto end = size_t(fetch.ends[i]);
        const float share = 1 / float(std::max<size_t>(end - place, 1));
        for (; place < end; ++place) {
            const Pixel pixel = window.mixedAt(places[place]);
            sum = {sum.r + share * pixel.r, sum.g + share * pixel.g, sum.b + share * pixel.b, sum.a + share * pixel.a};
        }
        const int width = fetch.area.width;
        *pixelAt(out, fetch.area.left + int(i) % width, fetch.area.top + int(i) / width) = sum;
    }
    return true;
}

// Fills an area of the piece, small enough for its places to fit into memory and to lie together.
bool fillArea(VipsRegion &out, VipsRegion &in, const VipsRect &area, Manner manner, const Sampling::Spread &spread)
{
    const QSize input(in.im->Xsize, in.im->Ysize);
    Fetch fetch{area, {}, {}};
    for (int y = area.top; y < VIPS_RECT_BOTTOM(&area); ++y) {
        for (int x = area.left; x < VIPS_RECT_RIGHT(&area); ++x) {
            spread(QPointF(x + 0.5, out.im->Ysize - y - 0.5), fetch.places);
            fetch.ends.push_back(int(fetch.places.size()));
        }
    }
    for (QPointF &place : fetch.places) {
        place = inReach(QPointF(place.x(), input.height() - place.y()), input);
        if (manner.isNearest)
            place = QPointF(std::floor(place.x()) + 0.5, std::floor(place.y()) + 0.5);
    }
    return fillPart(out, in, fetch, 0, fetch.ends.size(), manner);
}

bool addFetch(WorkingImage &image, QSize size, Sampling::Edge edge, Sampling::Between between,
              const Sampling::Spread &spread)
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
                if (!fillArea(out, *in[0], area, manner, spread))
                    return false;
            }
        }
        return true;
    });
}

}

bool Sampling::addMapped(WorkingImage &image, QSize size, Edge edge, const Map &map, Between between)
{
    return addFetch(image, size, edge, between,
                    [map](QPointF place, std::vector<QPointF> &from) { from.push_back(map(place)); });
}

bool Sampling::addSpread(WorkingImage &image, Edge edge, const Spread &spread)
{
    return addFetch(image, image.size(), edge, Between::Linear, spread);
}
