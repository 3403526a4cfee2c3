#pragma once

#include "PixelBytes.h"

/// The pixels of a picture as a working image takes them. The picture outlives it.
class PixelSource
{
public:
    PixelSource(const QImage &pixels, WorkingImage::Light light)
        : m_pixels(pixels)
        , m_light(light)
    {}

    /// For PixelRuns::run.
    [[nodiscard]] auto reader() const
    {
        return [this](PixelBlock &to, int count, int x, int y) {
            prepare(count, x, y + 2);
            if (!m_pixels.hasAlphaChannel())
                PixelBytes::readOpaque(to, at(x, y), count, m_light);
            else
                PixelBytes::readPremultiplied(to, at(x, y), count, m_light);
        };
    }

private:
    // Has the processor fetch pixels that are read soon: where rows are read in parts, it cannot foresee them.
    void prepare(int count, int x, int y) const
    {
        constexpr int atOnce = 16;
        if (y >= m_pixels.height())
            return;
        const QRgb *from = at(x, y);
        for (int i = 0; i < count; i += atOnce)
            __builtin_prefetch(from + i);
    }
    [[nodiscard]] const QRgb *at(int x, int y) const
    {
        return reinterpret_cast<const QRgb *>(m_pixels.constScanLine(y)) + x;
    }

    const QImage &m_pixels;
    WorkingImage::Light m_light;
};
