#include "PixelBytes.h"

#include "SrgbCurve.h"

#include <algorithm>
#include <utility>

namespace {

using Light = WorkingImage::Light;
using PixelBytes::Levels;

}

PixelBytes::Levels PixelBytes::levelsOf(Light light)
{
    Levels levels;
    for (size_t i = 0; i < levels.size(); ++i) {
        const float encoded = float(i) / 255;
        levels[i] = light == Light::Linear ? SrgbCurve::linear(encoded) : encoded;
    }
    return levels;
}

Pixel PixelBytes::pixelOf(QRgb rgb, Light light, const Levels &levels)
{
    const int alpha = qAlpha(rgb);
    if (alpha == 255)
        return {levels[size_t(qRed(rgb))], levels[size_t(qGreen(rgb))], levels[size_t(qBlue(rgb))], 1};
    if (alpha == 0)
        return {};
    const auto part = [&](int component) {
        const float encoded = float(component) / float(alpha);
        return light == Light::Linear ? SrgbCurve::linear(encoded) : encoded;
    };
    return {part(qRed(rgb)), part(qGreen(rgb)), part(qBlue(rgb)), float(alpha) / 255};
}

void PixelBytes::read(PixelBlock &to, const QRgb *from, int count, Light light, const Levels &levels)
{
    float *r = to.r.data();
    float *g = to.g.data();
    float *b = to.b.data();
    const auto readWith = [=](auto valueOf) __attribute__((always_inline))
    {
#pragma GCC ivdep
        for (int i = 0; i < count; ++i) {
            r[i] = valueOf(from[i] >> 16 & 255);
            g[i] = valueOf(from[i] >> 8 & 255);
            b[i] = valueOf(from[i] & 255);
        }
    };
    std::fill_n(to.a.begin(), count, 1.0F);
    if (light == Light::Linear)
        Wide::run([=, table = levels.data()]() TAMSEL_WIDE { readWith([=](QRgb byte) { return table[byte]; }); });
    else
        Wide::run([=]() TAMSEL_WIDE { readWith([](QRgb byte) { return float(int(byte)) / 255; }); });
}

void PixelBytes::load(PixelBlock &to, const Pixel *from, int count)
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

// To 0 … 1; to 0 what is no number.
template<typename Floats>
__attribute__((always_inline)) inline void limit(Floats &values)
{
    const Floats one = Floats{} + 1;
    values = values > 0 ? values : Floats{};
    values = values < one ? values : one;
}

template<typename Floats, typename... Factors>
__attribute__((always_inline)) inline void addTerms(Floats &sum, const Floats &x, Factors... factors)
{
    ((sum = sum * x + factors), ...);
}

// Takes 0 … 1 through the curve of sRGB, to a hundredth of an 8-bit step.
template<typename Floats, typename Ints>
__attribute__((always_inline)) inline void encode(Floats &values)
{
    // The power of 5 / 12: of half the exponent, and of a number between 1 and 4.
    const auto bits = reinterpret_cast<Ints>(values);
    const Ints half = ((bits + (1 << 23)) >> 24) - 64;
    const Ints numberBits = bits - half * (1 << 24);
    Floats root = Floats{} - 0.000274949614F;
    addTerms(root, reinterpret_cast<Floats>(numberBits), 0.00481608555F, -0.0356853988F, 0.147477253F, -0.38796012F,
             0.869640119F, 0.402005641F);
    // 2 to the power of half * 5 / 6 is that of half times that of -half / 6, which is exact from 0 to 5.
    const Ints powerBits = (half + 127) * (1 << 23);
    const Floats sixths = __builtin_convertvector(-half, Floats);
    Floats rest = Floats{} + 2.2952307e-7F;
    addTerms(rest, sixths, 7.0759613e-6F, 2.5789909e-4F, 6.6718048e-3F, 0.11552504F, 1.0F);
    const Floats curved = 1.055F * (root * rest * reinterpret_cast<Floats>(powerBits)) - 0.055F;
    values = values <= 0.0031308F ? 12.92F * values : curved;
}

// Writes whole groups of pixels.
void writeGroups(QRgb *to, const PixelBlock &from, int count, Light light)
{
    Wide::runFloats(count,
                    [to, r = from.r.data(), g = from.g.data(), b = from.b.data(), light](int i, auto many) TAMSEL_WIDE {
                        using Floats = typename decltype(many)::Floats;
                        using Ints = typename decltype(many)::Ints;
                        Ints rgb = Ints{} + 0xff;
                        for (const float *part : {r, g, b}) {
                            Floats values = *reinterpret_cast<const Floats *>(part + i);
                            limit(values);
                            if (light == Light::Linear)
                                encode<Floats, Ints>(values);
                            rgb = rgb << 8 | __builtin_convertvector(values * 255 + 0.5F, Ints);
                        }
                        *reinterpret_cast<Ints *>(to + i) = rgb;
                    });
}

}

void PixelBytes::write(QRgb *to, const PixelBlock &from, int count, Light light)
{
    constexpr int group = 8;
    const int inGroups = count / group * group;
    writeGroups(to, from, inGroups, light);
    if (inGroups == count)
        return;
    PixelBlock rest;
    std::array<QRgb, group> last;
    for (auto [all, few] : {std::pair(&from.r, &rest.r), std::pair(&from.g, &rest.g), std::pair(&from.b, &rest.b)}) {
        few->fill(0);
        std::copy(all->cbegin() + inGroups, all->cbegin() + count, few->begin());
    }
    writeGroups(last.data(), rest, group, light);
    std::copy_n(last.cbegin(), count - inGroups, to + inGroups);
}

namespace {

int byteOf(float value)
{
    return value > 0 ? int(std::min(value, 1.0F) * 255 + 0.5F) : 0;
}

QRgb clearRgbFrom(const Pixel &pixel, Light light)
{
    const float alpha = pixel.a > 0 ? std::min(pixel.a, 1.0F) : 0;
    const auto part = [&](float value) {
        const float limited = value > 0 ? std::min(value, 1.0F) : 0;
        return byteOf((light == Light::Linear ? SrgbCurve::encoded(limited) : limited) * alpha);
    };
    return qRgba(part(pixel.r), part(pixel.g), part(pixel.b), byteOf(alpha));
}

}

bool PixelBytes::writeClear(QRgb *to, const Pixel *from, int count, Light light)
{
    PixelBlock block;
    load(block, from, count);
    write(to, block, count, light);
    bool isOpaque = true;
    for (int x = 0; x < count; ++x) {
        if (from[x].a >= 1)
            continue;
        to[x] = clearRgbFrom(from[x], light);
        isOpaque = isOpaque && qAlpha(to[x]) == 255;
    }
    return isOpaque;
}
