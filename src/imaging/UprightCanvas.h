#pragma once

#include "Orientation.h"

#include <QImage>

#include <vector>

/// Takes the rows of a stored picture from top to bottom and puts each where it is shown, so that turning a picture
/// costs no second copy of it.
class UprightCanvas
{
public:
    UprightCanvas(QSize storedSize, Orientation orientation, bool hasAlpha);

    /// Memory was short.
    [[nodiscard]] bool isNull() const { return m_image.isNull(); }
    [[nodiscard]] bool isFull() const { return m_row >= m_stored.height(); }
    [[nodiscard]] int rowsTaken() const { return m_row; }
    [[nodiscard]] bool hasAlpha() const { return m_image.format() == QImage::Format_ARGB32_Premultiplied; }
    /// Where the next row is to be written, as QRgb; not when full.
    [[nodiscard]] QRgb *nextRow();
    void rowDone();
    /// The picture; rows that never came are black, or clear where there is alpha.
    [[nodiscard]] QImage takeImage();

private:
    void placeColumns();

    QSize m_stored;
    Orientation m_orientation;
    QImage m_image;
    int m_row = 0;
    std::vector<QRgb> m_staged; // the last few rows, when rows become columns
};
