#pragma once

#include "Sampling.h"

#include <algorithm>
#include <array>
#include <cmath>

/// How Sampling reads a piece of its input. Rows run downward here.
namespace SamplingWindow {

/// How to read the input.
struct Manner
{
    Sampling::Edge edge;
    Sampling::Between between;
    bool isNearest; ///< of the pixels
};

/// Far outside is as good as outside, and can be computed with.
[[nodiscard]] inline QPointF inReach(QPointF place, QSize size)
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

    void addTo(Floats &sum, const QPointF *from, const QPointF *to) const
    {
        for (const QPointF *place = from; place != to; ++place) {
            const Pixel pixel = mixedAt(*place);
            sum += *reinterpret_cast<const Floats *>(&pixel);
        }
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

/// What of the input is needed for places.
class Bounds
{
public:
    Bounds(QSize size, Manner manner)
        : m_size(size)
        , m_isClear(manner.edge == Sampling::Edge::Clear)
        , m_left(size.width())
        , m_top(size.height())
    {}

    void add(const QPointF *from, const QPointF *to)
    {
        for (; from != to; ++from) {
            if (m_isClear && !isNear(*from))
                continue; // nothing is read there
            m_left = std::min(m_left, from->x());
            m_right = std::max(m_right, from->x());
            m_top = std::min(m_top, from->y());
            m_bottom = std::max(m_bottom, from->y());
        }
    }
    [[nodiscard]] VipsRect rect() const
    {
        const int x = std::clamp(int(std::floor(m_left)) - 2, 0, m_size.width() - 1);
        const int y = std::clamp(int(std::floor(m_top)) - 2, 0, m_size.height() - 1);
        return {x, y, std::clamp(int(m_right) + 3 - x, 1, m_size.width() - x),
                std::clamp(int(m_bottom) + 3 - y, 1, m_size.height() - y)};
    }

private:
    // Whether it has pixels of the image beside it.
    [[nodiscard]] bool isNear(QPointF place) const
    {
        return place.x() > -2 && place.y() > -2 && place.x() < m_size.width() + 2 && place.y() < m_size.height() + 2;
    }

    QSize m_size;
    bool m_isClear;
    double m_left;
    double m_top;
    double m_right = 0;
    double m_bottom = 0;
};

}
