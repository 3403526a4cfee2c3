#include "PixelBytes.h"

#include "SrgbCurve.h"

#include <algorithm>
#include <array>
#include <type_traits>

namespace {

using Light = WorkingImage::Light;

constexpr int kGroup = 16; // the most that are computed together

template<typename Many>
constexpr int kCount = sizeof(typename Many::Floats) / sizeof(float);

template<typename Many>
using Floats = typename Many::Floats;
template<typename Many>
using Ints = typename Many::Ints;

// Calls `work(light)` with what is known when this is compiled.
template<typename Work>
void withLight(Light light, Work work)
{
    if (light == Light::Linear)
        work(std::integral_constant<Light, Light::Linear>());
    else
        work(std::integral_constant<Light, Light::Encoded>());
}

template<typename Values, typename... Factors>
TAMSEL_WIDE inline void addTerms(Values &sum, const Values &x, Factors... factors)
{
    ((sum = sum * x + factors), ...);
}

// Takes bytes to 0 … 1, to a hundredth of an 8-bit step.
template<typename Many>
TAMSEL_WIDE inline void read(Many, Floats<Many> &values, const Ints<Many> &bytes, Light light)
{
    values = __builtin_convertvector(bytes, Floats<Many>);
    if (light == Light::Encoded) {
        values *= 1 / 255.0F;
        return;
    }
    // The curve of sRGB: a straight line, and how much more it is beyond that.
    auto more = Floats<Many>{} - 2.96025471e-16F;
    addTerms(more, values, 2.84547906e-13F, -1.24103208e-10F, 4.6095739e-08F, 7.68592299e-06F, -0.00016884388F,
             0.000876569674F);
    const Ints<Many> isCurved = bytes > 10;
    const auto limited = reinterpret_cast<Floats<Many>>(reinterpret_cast<Ints<Many>>(more) & isCurved);
    values = values * (1 / (12.92F * 255)) + limited;
}

void readGroups(PixelBlock &to, int index, const QRgb *from, int count, Light light)
{
    withLight(light, [=, &to](auto known) {
        Wide::runMany([=, r = &to.r[0] + index, g = &to.g[0] + index, b = &to.b[0] + index](auto many) TAMSEL_WIDE {
            using Many = decltype(many);
            for (int i = 0; i < count; i += kCount<Many>) {
                const auto rgb = *reinterpret_cast<const Ints<Many> *>(from + i);
                read(many, *reinterpret_cast<Floats<Many> *>(r + i), rgb >> 16 & 255, known);
                read(many, *reinterpret_cast<Floats<Many> *>(g + i), rgb >> 8 & 255, known);
                read(many, *reinterpret_cast<Floats<Many> *>(b + i), rgb & 255, known);
            }
        });
    });
}

}

void PixelBytes::readOpaque(PixelBlock &to, const QRgb *from, int count, Light light)
{
    std::fill_n(to.a.begin(), count, 1.0F);
    const int inGroups = count / kGroup * kGroup;
    readGroups(to, 0, from, inGroups, light);
    if (inGroups == count)
        return;
    std::array<QRgb, kGroup> last{};
    std::copy(from + inGroups, from + count, last.begin());
    readGroups(to, inGroups, last.data(), kGroup, light);
}

void PixelBytes::readPremultiplied(PixelBlock &to, const QRgb *from, int count, Light light)
{
    withLight(light, [=, &to](auto known) {
        Wide::run([=, r = to.r.data(), g = to.g.data(), b = to.b.data(), a = to.a.data()]() TAMSEL_WIDE {
#pragma GCC ivdep
            for (int i = 0; i < count; ++i) {
                const auto alpha = float(int(from[i] >> 24));
                const float share = alpha > 0 ? 1 / alpha : 0;
                const auto part = [=](QRgb byte) TAMSEL_WIDE {
                    const float encoded = float(int(byte & 255)) * share;
                    return known == Light::Linear ? SrgbCurve::linear(encoded) : encoded;
                };
                r[i] = part(from[i] >> 16);
                g[i] = part(from[i] >> 8);
                b[i] = part(from[i]);
                a[i] = alpha / 255;
            }
        });
    });
}

namespace {

constexpr float kMostPower = 327.475018957F;

// What curved parts of the curve are multiplied with, for the last bits of what four is raised to. Where the curve is
// straight, anything large does.
TAMSEL_WIDE inline void setPowers(Wide::Eight::Floats &powers)
{
    powers = Wide::Eight::Floats{kMostPower,    kMostPower,     kMostPower,     32.489636849F,
                                 57.889951643F, 103.148167425F, 183.789140274F, kMostPower};
}
TAMSEL_WIDE inline void setPowers(Wide::Sixteen::Floats &powers)
{
    powers = Wide::Sixteen::Floats{kMostPower,    kMostPower,     kMostPower,     kMostPower, kMostPower, kMostPower,
                                   kMostPower,    kMostPower,     kMostPower,     kMostPower, kMostPower, 32.489636849F,
                                   57.889951643F, 103.148167425F, 183.789140274F, kMostPower};
}

// Takes 0 … 1 through the curve of sRGB to bytes, to little more than a hundredth of an 8-bit step.
template<typename Many>
TAMSEL_WIDE inline void encode(Many, Ints<Many> &bytes, const Floats<Many> &values)
{
    // A power of four, and a number from a half to two, of which this is the power of 5 / 12.
    constexpr float scale = 0.6238421490F; // so that the straight part of the curve ends at a power
    const auto bits = reinterpret_cast<Ints<Many>>(values * scale);
    const auto number = reinterpret_cast<Floats<Many>>((bits & 0x00ffffff) | 0x3f000000);
    auto root = Floats<Many>{} + 0.0192262093F;
    addTerms(root, number, -0.146606742F, 0.464996503F, -0.828264469F, 1.16784914F, 0.322778703F);
    Floats<Many> powers;
    setPowers(powers);
    const Floats<Many> curved = root * __builtin_shuffle(powers, bits >> 24) + (0.5F - 255 * 0.055F);
    const Floats<Many> straight = values * (255 * 12.92F) + 0.5F;
    // The lesser of the two is the curve. Floats above 0 compare as their bits do, which takes less.
    const auto left = reinterpret_cast<Ints<Many>>(curved);
    const auto right = reinterpret_cast<Ints<Many>>(straight);
    const Ints<Many> least = left < right ? left : right;
    bytes = __builtin_convertvector(reinterpret_cast<Floats<Many>>(least), Ints<Many>);
}

// Limits to 0 … 1; to 0 what is no number.
template<typename Many>
TAMSEL_WIDE inline void limit(Many, Floats<Many> &values, const Floats<Many> &from)
{
    const auto one = reinterpret_cast<Ints<Many>>(Floats<Many>{} + 1);
    const Ints<Many> isPositive = from > 0;
    const Ints<Many> bits = reinterpret_cast<Ints<Many>>(from) & isPositive;
    values = reinterpret_cast<Floats<Many>>(bits < one ? bits : one);
}

void writeGroups(QRgb *to, const PixelBlock &from, int index, int count, Light light)
{
    withLight(light, [=, &from](auto known) {
        Wide::runMany([=, r = &from.r[0] + index, g = &from.g[0] + index, b = &from.b[0] + index](auto many)
                          TAMSEL_WIDE {
                              using Many = decltype(many);
                              for (int i = 0; i < count; i += kCount<Many>) {
                                  auto rgb = Ints<Many>{} + 0xff;
                                  for (const float *part : {r, g, b}) {
                                      Floats<Many> values;
                                      limit(many, values, *reinterpret_cast<const Floats<Many> *>(part + i));
                                      Ints<Many> bytes;
                                      if (known == Light::Linear)
                                          encode(many, bytes, values);
                                      else
                                          bytes = __builtin_convertvector(values * 255 + 0.5F, Ints<Many>);
                                      rgb = rgb << 8 | bytes;
                                  }
                                  *reinterpret_cast<Ints<Many> *>(to + i) = rgb;
                              }
                          });
    });
}

}

void PixelBytes::writeOpaque(QRgb *to, const PixelBlock &from, int count, Light light)
{
    const int inGroups = count / kGroup * kGroup;
    writeGroups(to, from, 0, inGroups, light);
    if (inGroups == count)
        return;
    std::array<QRgb, kGroup> last;
    writeGroups(last.data(), from, inGroups, kGroup, light);
    std::copy_n(last.cbegin(), count - inGroups, to + inGroups);
}

namespace {

TAMSEL_WIDE inline float limited(float value)
{
    const float positive = value > 0 ? value : 0; // also for what is no number
    return positive < 1 ? positive : 1;
}

// Whether all of `count` numbers are at least that.
template<typename Number>
bool isAtLeast(Number least, const Number *numbers, int count)
{
    int below = 0;
    Wide::run([=, &below]() TAMSEL_WIDE {
        int found = 0;
        for (int i = 0; i < count; ++i)
            found |= int(numbers[i] < least);
        below = found;
    });
    return below == 0;
}

}

bool PixelBytes::writePremultiplied(QRgb *to, const PixelBlock &from, int count, Light light)
{
    if (isAtLeast(1.0F, from.a.data(), count)) {
        writeOpaque(to, from, count, light);
        return true;
    }
    withLight(light, [=, &from](auto known) {
        Wide::run([=, r = from.r.data(), g = from.g.data(), b = from.b.data(), a = from.a.data()]() TAMSEL_WIDE {
#pragma GCC ivdep
            for (int i = 0; i < count; ++i) {
                const float alpha = limited(a[i]) * 255;
                const auto part = [=](float value) TAMSEL_WIDE {
                    const float color = limited(value);
                    return int((known == Light::Linear ? SrgbCurve::encoded(color) : color) * alpha + 0.5F);
                };
                to[i] = QRgb(int(alpha + 0.5F) << 24 | part(r[i]) << 16 | part(g[i]) << 8 | part(b[i]));
            }
        });
    });
    return isAtLeast(0xff000000U, to, count);
}
