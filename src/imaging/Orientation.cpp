#include "Orientation.h"

Orientation::Orientation(int exifValue)
{
    if (exifValue < 2 || exifValue > 8)
        return;
    m_transposed = exifValue >= 5;
    m_flipsX = exifValue == 2 || exifValue == 3 || exifValue == 6 || exifValue == 7;
    m_flipsY = exifValue == 3 || exifValue == 4 || exifValue == 7 || exifValue == 8;
}

QRect Orientation::toStored(QRect shown, QSize shownSize) const
{
    if (m_flipsX)
        shown.moveLeft(shownSize.width() - shown.x() - shown.width());
    if (m_flipsY)
        shown.moveTop(shownSize.height() - shown.y() - shown.height());
    return m_transposed ? QRect(shown.y(), shown.x(), shown.height(), shown.width()) : shown;
}
