#include "GridLayout.h"

#include <limits>

GridLayout::GridLayout(int count, int columns, int viewWidth, int textHeight)
    : m_count(std::max(0, count))
    , m_innerWidth(std::max(kMinCellWidth, viewWidth - 2 * kMargin))
    , m_textHeight(std::max(0, textHeight))
{
    m_columns = std::clamp(columns, kMinColumns, maxColumns());
    m_pictureSide = m_innerWidth / m_columns - 2 * kPadding;
}

int GridLayout::rows() const
{
    return m_count / m_columns + (m_count % m_columns != 0 ? 1 : 0);
}

int GridLayout::contentHeight() const
{
    const qint64 height = qint64(rows()) * rowHeight() + 2 * kMargin;
    return int(std::min<qint64>(height, std::numeric_limits<int>::max() / 2));
}

QRect GridLayout::cellRect(int index) const
{
    if (index < 0 || index >= m_count)
        return {};
    const int column = index % m_columns;
    const int left = columnLeft(column);
    return {left, kMargin + index / m_columns * rowHeight(), columnLeft(column + 1) - left, rowHeight()};
}

int GridLayout::indexAt(QPoint point) const
{
    const int column = columnAt(point.x());
    if (column < 0 || column >= m_columns || point.y() < kMargin)
        return -1;
    const qint64 index = qint64((point.y() - kMargin) / rowHeight()) * m_columns + column;
    return index < m_count ? int(index) : -1;
}

GridLayout::Gap GridLayout::gapAt(QPoint point) const
{
    if (m_count == 0)
        return {};
    const int row = std::clamp((point.y() - kMargin) / rowHeight(), 0, rows() - 1);
    const int cellWidth = m_innerWidth / m_columns;
    const int column = std::clamp((point.x() - kMargin + cellWidth / 2) / cellWidth, 0, m_columns);
    const bool isBelow = point.y() >= kMargin + rows() * rowHeight();
    const int before = isBelow ? m_count : std::min(m_count, row * m_columns + column);

    constexpr int kThickness = 3;
    const bool isBehindRow = before == m_count || column == m_columns;
    const QRect cell = cellRect(isBehindRow ? before - 1 : before);
    const int x = isBehindRow ? cell.right() - kThickness / 2 : cell.left() - kThickness / 2;
    return {before, QRect(x, cell.top() + kPadding, kThickness, cell.height() - 2 * kPadding)};
}

GridLayout::Span GridLayout::visible(int top, int height) const
{
    if (m_count == 0 || height <= 0)
        return {};
    const int firstRow = std::clamp((top - kMargin) / rowHeight(), 0, rows() - 1);
    const int lastRow = std::clamp((top - kMargin + height - 1) / rowHeight(), firstRow, rows() - 1);
    return {firstRow * m_columns, std::min(m_count, (lastRow + 1) * m_columns) - 1};
}

IndexSet GridLayout::touchedBy(const QRect &rect) const
{
    const QRect area = rect.intersected({kMargin, kMargin, m_innerWidth, rows() * rowHeight()});
    if (area.isEmpty())
        return {};
    const int firstRow = (area.top() - kMargin) / rowHeight();
    const int lastRow = (area.bottom() - kMargin) / rowHeight();
    const int firstColumn = columnAt(area.left());
    const int lastColumn = std::min(columnAt(area.right()), m_columns - 1);

    IndexSet touched;
    if (firstColumn == 0 && lastColumn == m_columns - 1) {
        touched.add(firstRow * m_columns, lastRow * m_columns + lastColumn);
    } else {
        for (int row = firstRow; row <= lastRow; ++row)
            touched.add(row * m_columns + firstColumn, row * m_columns + lastColumn);
    }
    touched.clampTo(m_count);
    return touched;
}

int GridLayout::neighbour(int from, Move move, int viewHeight) const
{
    if (m_count == 0)
        return -1;
    if (from < 0 || from >= m_count)
        return move == Move::End ? m_count - 1 : 0;

    const int pageRows = std::max(1, viewHeight / rowHeight());
    // Past the first or last row a vertical key stays in its column, except that the shorter last row is entered at
    // its end.
    const auto byRows = [&](int by) {
        const int row = std::clamp(from / m_columns + by, 0, rows() - 1);
        return std::min(m_count - 1, row * m_columns + from % m_columns);
    };
    switch (move) {
    case Move::Left:
        return std::max(0, from - 1);
    case Move::Right:
        return std::min(m_count - 1, from + 1);
    case Move::Up:
        return byRows(-1);
    case Move::Down:
        return byRows(1);
    case Move::PageUp:
        return byRows(-pageRows);
    case Move::PageDown:
        return byRows(pageRows);
    case Move::Home:
        return 0;
    case Move::End:
        return m_count - 1;
    }
    return from;
}

/// The columns share the width to the last pixel, so their widths differ by one at most.
int GridLayout::columnLeft(int column) const
{
    return kMargin + int(qint64(m_innerWidth) * column / m_columns);
}

int GridLayout::columnAt(int x) const
{
    if (x < kMargin || x >= kMargin + m_innerWidth)
        return -1;
    int column = int(qint64(x - kMargin) * m_columns / m_innerWidth);
    if (column + 1 < m_columns && x >= columnLeft(column + 1))
        ++column;
    return column;
}
