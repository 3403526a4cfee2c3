#include "PixelRuns.h"

#include <bit>

void PixelRuns::load(PixelBlock &to, const Pixel *from, int count)
{
    float *r = to.r.data();
    float *g = to.g.data();
    float *b = to.b.data();
    float *a = to.a.data();
    Wide::run([=]() TAMSEL_WIDE {
#pragma GCC ivdep
        for (int i = 0; i < count; ++i) {
            r[i] = from[i].r;
            g[i] = from[i].g;
            b[i] = from[i].b;
            a[i] = from[i].a;
        }
    });
}

namespace {

// Floats compare as their bits do, apart from the sign, which takes less.
TAMSEL_WIDE inline float sane(float value)
{
    constexpr float most = 1e6; // No filter makes sense of more, and sums of such values stay numbers.
    const auto bits = std::bit_cast<unsigned>(value);
    const auto size = int(bits & 0x7fffffff);
    const int limited = std::min(size, std::bit_cast<int>(most));
    constexpr int infinite = 0x7f800000;
    const int number = size > infinite ? 0 : limited; // 0 for none
    return std::bit_cast<float>((bits & 0x80000000) | unsigned(number));
}

}

void PixelRuns::store(Pixel *to, const PixelBlock &from, int count)
{
    Wide::run([=, r = from.r.data(), g = from.g.data(), b = from.b.data(), a = from.a.data()]() TAMSEL_WIDE {
#pragma GCC ivdep
        for (int i = 0; i < count; ++i)
            to[i] = {sane(r[i]), sane(g[i]), sane(b[i]), sane(a[i])};
    });
}

void PixelRuns::makeSane(Pixel *row, int count)
{
    Wide::run([values = &row->r, count]() TAMSEL_WIDE {
        for (int i = 0; i < 4 * count; ++i)
            values[i] = sane(values[i]);
    });
}
