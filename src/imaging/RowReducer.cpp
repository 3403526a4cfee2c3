#include "RowReducer.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

/// Catmull-Rom: keeps edges crisp and constants constant.
double kernel(double x)
{
    x = std::abs(x);
    if (x < 1)
        return (1.5 * x - 2.5) * x * x + 1;
    return x < 2 ? ((-0.5 * x + 2.5) * x - 4) * x + 2 : 0;
}

constexpr double kReach = 2;
/// Output rows that can draw on one input row, whatever the factor.
constexpr size_t kOpenRows = 8;

}

ReduceTaps::ReduceTaps(int input, double start, double length, int output)
{
    const double factor = length / output;
    const double stretch = std::max(1.0, factor);
    const int low = std::clamp(int(std::floor(start + 1e-6)), 0, input - 1);
    const int high = std::clamp(int(std::ceil(start + length - 1e-6)), low + 1, input);
    for (int i = 0; i < output; ++i) {
        const double centre = start + (i + 0.5) * factor - 0.5;
        const int from = std::clamp(int(std::ceil(centre - kReach * stretch)), low, high - 1);
        const int to = std::clamp(int(std::floor(centre + kReach * stretch)), from, high - 1);
        first.push_back(from);
        count.push_back(to - from + 1);
        offset.push_back(weights.size());
        double sum = 0;
        for (int k = from; k <= to; ++k)
            sum += kernel((k - centre) / stretch);
        for (int k = from; k <= to; ++k)
            weights.push_back(float(sum > 0 ? kernel((k - centre) / stretch) / sum : 1.0 / (to - from + 1)));
    }
}

RowReducer::RowReducer(QSize input, const QRectF &part, QSize output, UprightCanvas &canvas)
    : m_canvas(canvas)
    , m_width(output.width())
    , m_plainCopy(part == QRectF(part.toRect()) && part.size() == QSizeF(output))
    , m_left(int(part.x()))
    , m_top(int(part.y()))
{
    if (m_plainCopy)
        return;
    m_columns = ReduceTaps(input.width(), part.x(), part.width(), output.width());
    m_rows = ReduceTaps(input.height(), part.y(), part.height(), output.height());
    m_left = m_columns.first.front();
    m_unpacked.resize(size_t(m_columns.first.back() + m_columns.count.back() - m_left));
    m_across.resize(size_t(m_width));
    m_sums.assign(kOpenRows, std::vector<Pixel>(size_t(m_width), Pixel{}));
}

bool RowReducer::needsNextRow() const
{
    if (isFinished())
        return false;
    return m_nextInput >= (m_plainCopy ? m_top : m_rows.first[size_t(m_canvas.rowsTaken())]);
}

void RowReducer::addRow(const QRgb *row)
{
    const bool needed = needsNextRow();
    const int input = m_nextInput++;
    if (!needed)
        return;
    if (m_plainCopy) {
        std::memcpy(m_canvas.nextRow(), row + m_left, size_t(m_width) * sizeof(QRgb));
        m_canvas.rowDone();
        return;
    }
    filterAcross(row);
    for (auto y = size_t(m_canvas.rowsTaken()); y < m_rows.first.size() && m_rows.first[y] <= input; ++y) {
        std::vector<Pixel> &sums = m_sums[y % kOpenRows];
        const int tap = input - m_rows.first[y];
        if (tap < m_rows.count[y]) {
            const float weight = m_rows.weights[m_rows.offset[y] + size_t(tap)];
            for (size_t x = 0; x < size_t(m_width); ++x)
                sums[x] += m_across[x] * weight;
        }
        if (tap == m_rows.count[y] - 1)
            emitRow(sums);
        if (tap == m_rows.count[y] - 1)
            std::fill(sums.begin(), sums.end(), Pixel{});
    }
}

void RowReducer::filterAcross(const QRgb *row)
{
    using Bytes = quint8 __attribute__((vector_size(4)));
    for (size_t i = 0; i < m_unpacked.size(); ++i) {
        Bytes bytes;
        std::memcpy(&bytes, row + m_left + i, sizeof(bytes));
        m_unpacked[i] = __builtin_convertvector(bytes, Pixel);
    }
    const float *weight = m_columns.weights.data();
    for (size_t x = 0; x < size_t(m_width); ++x) {
        const Pixel *from = m_unpacked.data() + (m_columns.first[x] - m_left);
        Pixel sum = {};
        for (int k = 0; k < m_columns.count[x]; ++k)
            sum += from[k] * *weight++;
        m_across[x] = sum;
    }
}

namespace {

quint32 toByte(float value, float limit)
{
    return quint32(std::clamp(value, 0.0F, limit) + 0.5F);
}

}

void RowReducer::emitRow(const std::vector<Pixel> &sums)
{
    QRgb *to = m_canvas.nextRow();
    const bool hasAlpha = m_canvas.hasAlpha();
    for (size_t x = 0; x < size_t(m_width); ++x) {
        const Pixel &sum = sums[x];
        const quint32 alpha = hasAlpha ? toByte(sum[3], 255) : 255;
        const auto limit = float(alpha); // a premultiplied colour never exceeds its alpha
        to[x] = alpha << 24 | toByte(sum[2], limit) << 16 | toByte(sum[1], limit) << 8 | toByte(sum[0], limit);
    }
    m_canvas.rowDone();
}

QImage reducedImage(const QImage &image, const QRect &part, QSize size)
{
    if (part == image.rect() && size == image.size())
        return image;
    const bool hasAlpha = image.hasAlphaChannel();
    const QImage source = image.convertToFormat(hasAlpha ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
    UprightCanvas canvas(size, Orientation(), hasAlpha);
    if (canvas.isNull() || source.isNull())
        return {};
    RowReducer reducer(source.size(), part, size, canvas);
    for (int y = 0; y < source.height() && !reducer.isFinished(); ++y)
        reducer.addRow(reinterpret_cast<const QRgb *>(source.constScanLine(y)));
    return canvas.takeImage();
}
