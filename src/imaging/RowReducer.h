#pragma once

#include "UprightCanvas.h"

#include <QRectF>
#include <QSize>

#include <vector>

/// For each output position along one side: which input positions it is made of, and how much of each.
struct ReduceTaps
{
    std::vector<int> first;     ///< per output position
    std::vector<int> count;     ///< per output position
    std::vector<size_t> offset; ///< per output position: where its weights start
    std::vector<float> weights;

    ReduceTaps() = default;
    /// Maps the stretch from `start` of length `length`, of a side of `input` pixels, onto `output` pixels.
    ReduceTaps(int input, double start, double length, int output);
};

/// Scales a part of a picture down while its rows arrive from top to bottom, and hands the finished rows to a canvas:
/// only a few rows are ever in memory. Each row has premultiplied QRgb pixels.
class RowReducer
{
public:
    /// The canvas takes rows of `output`'s width.
    RowReducer(QSize input, const QRectF &part, QSize output, UprightCanvas &canvas);

    /// The next input row; those outside the part cost nothing.
    void addRow(const QRgb *row);
    /// Whether the next row is needed at all; not the case outside the part.
    [[nodiscard]] bool needsNextRow() const;
    /// All output rows are made.
    [[nodiscard]] bool isFinished() const { return m_canvas.isFull(); }

private:
    using Pixel = float __attribute__((vector_size(16)));

    void filterAcross(const QRgb *row);
    void emitRow(const std::vector<Pixel> &sums);

    UprightCanvas &m_canvas;
    int m_width;
    int m_nextInput = 0;
    bool m_plainCopy;
    int m_left; // first input column that is needed
    int m_top;  // first input row that is needed
    ReduceTaps m_columns;
    ReduceTaps m_rows;
    std::vector<Pixel> m_unpacked;          // the needed columns of the present input row
    std::vector<Pixel> m_across;            // the present input row at output width
    std::vector<std::vector<Pixel>> m_sums; // output rows under way
};

/// `part` (pixels of the image) scaled down to `size`; the image itself when that is all of it.
[[nodiscard]] QImage reducedImage(const QImage &image, const QRect &part, QSize size);
