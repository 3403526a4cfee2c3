#pragma once

#include "PixelBytes.h"

#include <algorithm>
#include <utility>
#include <vector>

/// Calls `run(x, y, count)` for the rows of an area, a few pixels at a time.
template<typename Run>
void inBlocks(const VipsRect &area, Run run)
{
    for (int y = area.top; y < VIPS_RECT_BOTTOM(&area); ++y) {
        for (int x = area.left; x < VIPS_RECT_RIGHT(&area); x += PixelBlock::kMost)
            run(x, y, std::min(PixelBlock::kMost, VIPS_RECT_RIGHT(&area) - x));
    }
}

/// Pixels as they come from a picture, behind the first steps.
class PixelSource
{
public:
    using PointStep = WorkingImage::PointStep;

    PixelSource(const QImage &pixels, WorkingImage::Light light, std::vector<PointStep> steps)
        : m_pixels(pixels)
        , m_light(light)
        , m_levels(PixelBytes::levelsOf(light))
        , m_steps(std::move(steps))
        , m_isOpaque(!pixels.hasAlphaChannel())
    {}

    /// Calls `finish(row, count, x, y)` for the pixels of an area, a few at a time.
    template<typename Finish>
    void run(const VipsRect &area, Finish finish) const
    {
        std::array<Pixel, PixelBlock::kMost> part;
        inBlocks(area, [&](int x, int y, int count) {
            read(part.data(), lineAt(y) + x, count);
            for (const PointStep &step : m_steps)
                step.onRow(part.data(), count, x, y);
            finish(part.data(), count, x, y);
        });
    }
    /// The same with blocks, `finish(block, count, x, y)`, when all are opaque and no step needs to know the place.
    template<typename Finish>
    void runBlocks(const VipsRect &area, Finish finish) const
    {
        PixelBlock block;
        inBlocks(area, [&](int x, int y, int count) {
            PixelBytes::read(block, lineAt(y) + x, count, m_light, m_levels);
            for (const PointStep &step : m_steps)
                step.onBlock(block, count);
            finish(block, count, x, y);
        });
    }

private:
    [[nodiscard]] const QRgb *lineAt(int y) const { return reinterpret_cast<const QRgb *>(m_pixels.constScanLine(y)); }
    void read(Pixel *to, const QRgb *from, int count) const
    {
        if (!m_isOpaque) {
            std::transform(from, from + count, to,
                           [this](QRgb rgb) { return PixelBytes::pixelOf(rgb, m_light, m_levels); });
            return;
        }
        const float *levels = m_levels.data();
        std::transform(from, from + count, to, [levels](QRgb rgb) {
            return Pixel{levels[rgb >> 16 & 255], levels[rgb >> 8 & 255], levels[rgb & 255], 1};
        });
    }

    const QImage &m_pixels;
    WorkingImage::Light m_light;
    PixelBytes::Levels m_levels;
    std::vector<PointStep> m_steps;
    bool m_isOpaque;
};
