#include "Sampling.h"

#include "SamplingWindow.h"

#include <algorithm>
#include <vector>

namespace {

using SamplingWindow::Bounds;
using SamplingWindow::inReach;
using SamplingWindow::Manner;
using SamplingWindow::Window;

/// The places (rows downward) that the pixels of a part of the result come from.
struct Fetch
{
    VipsRect area;
    std::vector<QPointF> places; // grouped by pixel, in the order of the rows
    std::vector<int> ends;       // where each pixel's places end; empty when each has one
};

// Whether so much is worth fetching for some places; otherwise they are fetched in parts.
bool isWorthwhile(const VipsRect &bounds, size_t places)
{
    constexpr qint64 least = 1 << 12;
    constexpr qint64 perPlace = 1 << 8;
    constexpr qint64 most = 1 << 20;
    return qint64(bounds.width) * bounds.height <= std::clamp(qint64(places) * perPlace, least, most);
}

/// Fills pixels `from` to `to` of the area, each from its place.
bool fillPart(VipsRegion &out, VipsRegion &in, const Fetch &fetch, size_t from, size_t to, Manner manner)
{
    const QSize size(in.im->Xsize, in.im->Ysize);
    const QPointF *places = fetch.places.data();
    Bounds bounds(size, manner);
    bounds.add(places + from, places + to);
    const VipsRect wanted = bounds.rect();
    if (!isWorthwhile(wanted, to - from) && to - from > 1) {
        const size_t middle = (from + to) / 2;
        return fillPart(out, in, fetch, from, middle, manner) && fillPart(out, in, fetch, middle, to, manner);
    }
    if (vips_region_prepare(&in, &wanted) != 0)
        return false;
    const Window window(in, size, manner);
    const auto width = size_t(fetch.area.width);
    for (size_t i = from; i < to;) {
        const size_t end = std::min(to, (i / width + 1) * width);
        Pixel *first = pixelAt(out, fetch.area.left, fetch.area.top + int(i / width)) + i % width;
        const QPointF *place = places + i;
        const size_t count = end - i;
        Wide::run([=]() TAMSEL_WIDE {
            for (size_t n = 0; n < count; ++n)
                first[n] = window.mixedAt(place[n]);
        });
        i = end;
    }
    return true;
}

/// The sums of the places of each pixel.
class SpreadSums
{
public:
    using Floats = Wide::Four::Floats;

    SpreadSums(VipsRegion &in, const Fetch &fetch, Manner manner)
        : m_in(in)
        , m_fetch(fetch)
        , m_manner(manner)
        , m_sums(fetch.ends.size())
    {}

    /// Some pixels, and one of `shares` equal parts of the places of each.
    struct Part
    {
        size_t from;
        size_t to;
        size_t share = 0;
        size_t shares = 1;
    };

    /// Adds a part of the places. What comes from all over the input is fetched in smaller parts: places that follow
    /// each other, of neighbours, lie together.
    [[nodiscard]] bool add(const Part &part)
    {
        const QSize size(m_in.im->Xsize, m_in.im->Ysize);
        Bounds bounds(size, m_manner);
        size_t count = 0;
        for (size_t i = part.from; i < part.to; ++i) {
            const auto [first, last] = placesOf(part, i);
            bounds.add(first, last);
            count += size_t(last - first);
        }
        const VipsRect wanted = bounds.rect();
        if (count > 1 && !isWorthwhile(wanted, count))
            return addHalves(part, count);
        if (vips_region_prepare(&m_in, &wanted) != 0)
            return false;
        const Window window(m_in, size, m_manner);
        for (size_t i = part.from; i < part.to; ++i) {
            const auto [first, last] = placesOf(part, i);
            window.addTo(*reinterpret_cast<Floats *>(&m_sums[i]), first, last);
        }
        return true;
    }
    void write(VipsRegion &out) const
    {
        const VipsRect &area = m_fetch.area;
        for (size_t i = 0; i < m_sums.size(); ++i) {
            const auto count = size_t(m_fetch.ends[i]) - begin(i);
            const float share = 1 / float(std::max<size_t>(count, 1));
            const Pixel &sum = m_sums[i];
            *pixelAt(out, area.left + int(i) % area.width,
                     area.top + int(i) / area.width) = {sum.r * share, sum.g * share, sum.b * share, sum.a * share};
        }
    }

private:
    [[nodiscard]] size_t begin(size_t pixel) const { return pixel == 0 ? 0 : size_t(m_fetch.ends[pixel - 1]); }
    [[nodiscard]] std::pair<const QPointF *, const QPointF *> placesOf(const Part &part, size_t pixel) const
    {
        const QPointF *first = m_fetch.places.data() + begin(pixel);
        const size_t count = size_t(m_fetch.ends[pixel]) - begin(pixel);
        return {first + count * part.share / part.shares, first + count * (part.share + 1) / part.shares};
    }
    [[nodiscard]] bool addHalves(const Part &part, size_t count)
    {
        const size_t pixels = part.to - part.from;
        if (count > pixels) {
            return add({part.from, part.to, part.share * 2, part.shares * 2}) &&
                   add({part.from, part.to, part.share * 2 + 1, part.shares * 2});
        }
        const size_t middle = (part.from + part.to) / 2;
        return add({part.from, middle, part.share, part.shares}) && add({middle, part.to, part.share, part.shares});
    }

    VipsRegion &m_in;
    const Fetch &m_fetch;
    Manner m_manner;
    std::vector<Pixel> m_sums;
};

// Whether every pixel comes from where it is; `in` is as large as `out`.
bool isUnmoved(const Fetch &fetch, QSize size)
{
    constexpr double little = 1e-7;
    const VipsRect &area = fetch.area;
    if (!fetch.ends.empty())
        return false;
    const QPointF *place = fetch.places.data();
    for (int y = area.top; y < VIPS_RECT_BOTTOM(&area); ++y) {
        for (int x = area.left; x < VIPS_RECT_RIGHT(&area); ++x, ++place) {
            if (!(std::abs(place->x() - x - 0.5) < little && std::abs(size.height() - place->y() - y - 0.5) < little))
                return false;
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
    if (input == QSize(out.im->Xsize, out.im->Ysize) && isUnmoved(fetch, input))
        return vips_region_prepare_to(&in, &out, &area, area.left, area.top) == 0;
    for (QPointF &place : fetch.places) {
        place = inReach(QPointF(place.x(), input.height() - place.y()), input);
        if (manner.isNearest)
            place = QPointF(std::floor(place.x()) + 0.5, std::floor(place.y()) + 0.5);
    }
    if (fetch.ends.empty())
        return fillPart(out, in, fetch, 0, fetch.places.size(), manner);
    SpreadSums sums(in, fetch, manner);
    if (!sums.add({0, fetch.ends.size()}))
        return false;
    sums.write(out);
    return true;
}

bool addFetch(WorkingImage &image, QSize size, Sampling::Edge edge, Sampling::Between between, const FindPlaces &find)
{
    const Manner manner{edge, between, image.samplesNearest()};
    if (!image.setAlpha(WorkingImage::Alpha::Premultiplied) || !image.keepPieces())
        return false;
    if (manner.edge == Sampling::Edge::Clear)
        image.setMayBeClear();
    const auto *cancelled = image.cancelled();
    return image.addStep(size, WorkingImage::Pieces::Tiles, [=](VipsRegion &out, VipsRegion *const *in) {
        constexpr int side = 64;
        const VipsRect &piece = out.valid;
        for (int y = piece.top; y < VIPS_RECT_BOTTOM(&piece); y += side) {
            for (int x = piece.left; x < VIPS_RECT_RIGHT(&piece); x += side) {
                const VipsRect area{x, y, std::min(side, VIPS_RECT_RIGHT(&piece) - x),
                                    std::min(side, VIPS_RECT_BOTTOM(&piece) - y)};
                if (isSet(cancelled) || !fillArea(out, *in[0], area, manner, find))
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
