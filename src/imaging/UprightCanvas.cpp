#include "UprightCanvas.h"

#include <algorithm>

// Sixteen pixels fill a cache line of the destination.
static constexpr int kStagedRows = 16;

UprightCanvas::UprightCanvas(QSize storedSize, Orientation orientation, bool hasAlpha)
    : m_stored(storedSize)
    , m_orientation(orientation)
    , m_image(orientation.turned(storedSize), hasAlpha ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32)
{
    if (orientation.isTransposed())
        m_staged.resize(size_t(storedSize.width()) * kStagedRows);
}

QRgb *UprightCanvas::nextRow()
{
    if (m_orientation.isTransposed())
        return m_staged.data() + ptrdiff_t(m_row % kStagedRows) * m_stored.width();
    return reinterpret_cast<QRgb *>(m_image.scanLine(m_orientation.flipsY() ? m_stored.height() - 1 - m_row : m_row));
}

void UprightCanvas::rowDone()
{
    if (!m_orientation.isTransposed() && m_orientation.flipsX()) {
        QRgb *row = nextRow();
        std::reverse(row, row + m_stored.width());
    }
    ++m_row;
    if (m_orientation.isTransposed() && (m_row % kStagedRows == 0 || m_row == m_stored.height()))
        placeColumns();
}

void UprightCanvas::placeColumns()
{
    const int first = (m_row - 1) / kStagedRows * kStagedRows;
    const ptrdiff_t width = m_stored.width();
    const ptrdiff_t step = m_orientation.flipsX() ? -1 : 1;
    const int column = m_orientation.flipsX() ? m_stored.height() - 1 - first : first;
    for (int x = 0; x < width; ++x) {
        const int line = m_orientation.flipsY() ? int(width) - 1 - x : x;
        QRgb *to = reinterpret_cast<QRgb *>(m_image.scanLine(line)) + column;
        for (ptrdiff_t i = 0; i < m_row - first; ++i)
            to[i * step] = m_staged[size_t(i * width + x)];
    }
}

QImage UprightCanvas::takeImage()
{
    const QRgb missing = hasAlpha() ? 0 : 0xff000000;
    while (!isNull() && !isFull()) {
        QRgb *row = nextRow();
        std::fill(row, row + m_stored.width(), missing);
        rowDone();
    }
    return std::move(m_image);
}
