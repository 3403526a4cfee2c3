#pragma once

#include <QRect>
#include <QSize>

/// How a stored picture is turned to be shown: one of the eight ways that EXIF counts from 1.
class Orientation
{
public:
    constexpr Orientation() = default;
    /// Anything but 2 to 8 means upright.
    explicit Orientation(int exifValue);

    [[nodiscard]] bool isUpright() const { return !m_transposed && !m_flipsX && !m_flipsY; }
    /// Rows are shown as columns; the flips below are applied after that.
    [[nodiscard]] bool isTransposed() const { return m_transposed; }
    [[nodiscard]] bool flipsX() const { return m_flipsX; }
    [[nodiscard]] bool flipsY() const { return m_flipsY; }

    /// The size as shown of a stored size, and the other way round.
    [[nodiscard]] QSize turned(QSize size) const { return m_transposed ? size.transposed() : size; }
    /// Where the part `shown` of a picture that is shown at `shownSize` lies in the stored picture.
    [[nodiscard]] QRect toStored(QRect shown, QSize shownSize) const;

private:
    bool m_transposed = false;
    bool m_flipsX = false;
    bool m_flipsY = false;
};
