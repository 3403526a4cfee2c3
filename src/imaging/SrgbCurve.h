#pragma once

#include <algorithm>
#include <bit>
#include <cmath>

/// The transfer curve of sRGB for floats, continued symmetrically below 0 and onwards beyond 1. Nothing in it is
/// computed for some numbers only, so that a loop over pixels does many at once. The error is under a hundredth of an
/// 8-bit step; what is no number stays none.
namespace SrgbCurve {

/// `number`, positive, to the power of `power`, to one part in 100,000 if that is moderate. No table would do: it
/// would be read number by number.
[[nodiscard]] __attribute__((always_inline)) inline float powerOf(float number, float power)
{
    // The logarithm: of a power of two, and of a number from the root of a half to that of two.
    constexpr unsigned rootOfHalf = 0x3f3504f3;
    const auto bits = std::bit_cast<unsigned>(number);
    const int exponent = int(bits - rootOfHalf) >> 23;
    const float t = std::bit_cast<float>(bits - (unsigned(exponent) << 23)) - 1;
    float slope = -0.206591874F;
    slope = slope * t + 0.322154841F;
    slope = slope * t - 0.367489958F;
    slope = slope * t + 0.479348015F;
    slope = slope * t - 0.721131859F;
    slope = slope * t + 1.44271348F;
    const float wanted = power * (float(exponent) + slope * t);
    // And back: of the next whole number, which a float that large has in its last bits, and of the rest.
    constexpr float large = 12582912;
    const float shifted = wanted + large;
    const float rest = wanted - (shifted - large);
    float result = 0.00958278021F;
    result = result * rest + 0.0559064098F;
    result = result * rest + 0.240241005F;
    result = result * rest + 0.693124198F;
    result = result * rest + 1;
    // Which floats have room for; the rest is as good as 0 or without end.
    constexpr int zero = std::bit_cast<int>(large);
    const int whole = std::clamp(std::bit_cast<int>(shifted) - zero, -126, 127);
    return result * std::bit_cast<float>((whole + 127) << 23);
}

[[nodiscard]] __attribute__((always_inline)) inline float encoded(float linear)
{
    const float size = std::fabs(linear);
    const float straight = 12.92F * size;
    const float curved = 1.055F * powerOf(size, 1 / 2.4F) - 0.055F;
    return std::copysign(size > 0.0031308F ? curved : straight, linear);
}

[[nodiscard]] __attribute__((always_inline)) inline float linear(float encoded)
{
    const float size = std::fabs(encoded);
    const float straight = size * (1 / 12.92F);
    const float curved = powerOf(size * (1 / 1.055F) + 0.055F / 1.055F, 2.4F);
    return std::copysign(size > 0.04045F ? curved : straight, encoded);
}

}
