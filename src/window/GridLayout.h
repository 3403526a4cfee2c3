#pragma once

#include "IndexSet.h"

#include <QPoint>
#include <QRect>
#include <QSize>

#include <algorithm>

/// The arithmetic of a grid of equal cells that are filled row by row: where a cell is, what is at a point, where a key
/// leads. Coordinates are those of the whole content, whose width is that of the view. A value.
class GridLayout
{
public:
    static constexpr int kMinColumns = 1;
    static constexpr int kMaxColumns = 20;
    static constexpr int kMinCellWidth = 40; ///< a view too narrow for the columns asked for gets fewer
    static constexpr int kMargin = 4;        ///< around the grid
    static constexpr int kPadding = 7;       ///< between a cell's edge and what is in it

    struct Span
    {
        int first = 0;
        int last = -1; ///< inclusive; before `first` when empty
        [[nodiscard]] bool isEmpty() const { return last < first; }
        [[nodiscard]] int count() const { return isEmpty() ? 0 : last - first + 1; }
        [[nodiscard]] bool contains(int index) const { return index >= first && index <= last; }
        friend bool operator==(const Span &, const Span &) = default;
    };
    enum class Move { Left, Right, Up, Down, PageUp, PageDown, Home, End };

    GridLayout() = default;
    /// `textHeight` is what the lines under each picture take.
    GridLayout(int count, int columns, int viewWidth, int textHeight);

    [[nodiscard]] int count() const { return m_count; }
    [[nodiscard]] int columns() const { return m_columns; }
    /// As many columns as the view has room for.
    [[nodiscard]] int maxColumns() const { return std::min(kMaxColumns, m_innerWidth / kMinCellWidth); }
    [[nodiscard]] int rows() const;
    [[nodiscard]] int rowHeight() const { return m_pictureSide + m_textHeight + 2 * kPadding; }
    [[nodiscard]] int contentHeight() const;
    /// The square in which a picture is fitted, the same for all cells.
    [[nodiscard]] int pictureSide() const { return m_pictureSide; }

    /// Empty when there is no such cell.
    [[nodiscard]] QRect cellRect(int index) const;
    /// -1 where there is no cell.
    [[nodiscard]] int indexAt(QPoint point) const;
    /// A place between two cells of a row, or at either end of one.
    struct Gap
    {
        int before = 0; ///< the index that what is put there would get
        QRect mark;     ///< a line to be drawn there; empty without cells
    };
    /// The gap nearest to the point; beyond the last cell the one behind it.
    [[nodiscard]] Gap gapAt(QPoint point) const;
    /// The cells of the rows that reach into `height` pixels from `top`.
    [[nodiscard]] Span visible(int top, int height) const;
    /// The cells that `rect` touches: one range when it spans all columns, else one for each row.
    [[nodiscard]] IndexSet touchedBy(const QRect &rect) const;
    /// Where a key leads from `from`; -1 stands for nowhere yet. `viewHeight` tells how far a page is.
    [[nodiscard]] int neighbour(int from, Move move, int viewHeight) const;

private:
    [[nodiscard]] int columnLeft(int column) const;
    [[nodiscard]] int columnAt(int x) const;

    int m_count = 0;
    int m_columns = 1;
    int m_innerWidth = kMinCellWidth;
    int m_pictureSide = 0;
    int m_textHeight = 0;
};
