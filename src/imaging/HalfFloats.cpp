#include "HalfFloats.h"

#include <algorithm>

HalfFloats::HalfFloats(QSize size)
    : m_width(size.width())
    , m_values(size_t(size.width()) * size_t(size.height()) * 4)
{}

void HalfFloats::write(VipsRegion &from)
{
    constexpr float most = 65504; // that a half can hold
    const VipsRect &area = from.valid;
    for (int y = area.top; y < VIPS_RECT_BOTTOM(&area); ++y) {
        const float *values = &pixelAt(from, area.left, y)->r;
        Half *to = &m_values[indexOf(area.left, y)];
        Wide::run([=, count = 4 * area.width]() TAMSEL_WIDE {
            for (int i = 0; i < count; ++i)
                to[i] = Half(std::clamp(values[i], -most, most));
        });
    }
}

void HalfFloats::read(VipsRegion &to) const
{
    const VipsRect &area = to.valid;
    for (int y = area.top; y < VIPS_RECT_BOTTOM(&area); ++y) {
        const Half *values = &m_values[indexOf(area.left, y)];
        float *row = &pixelAt(to, area.left, y)->r;
        Wide::run([=, count = 4 * area.width]() TAMSEL_WIDE {
            for (int i = 0; i < count; ++i)
                row[i] = float(values[i]);
        });
    }
}
