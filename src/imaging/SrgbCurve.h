#pragma once

#include <array>
#include <cmath>
#include <cstddef>

/// The transfer curve of sRGB for floats, continued symmetrically below 0 and onwards beyond 1. Between 0 and 1 it
/// is read from a table; the error is under a hundredth of an 8-bit step.
class SrgbCurve
{
public:
    [[nodiscard]] static float encoded(float linear)
    {
        constexpr float toe = 0.0031308F;
        if (linear > toe && linear < 1)
            return kTables.between(kTables.encoding, linear);
        const float size = std::fabs(linear);
        return size <= toe ? 12.92F * linear : std::copysign(1.055F * std::pow(size, 1 / 2.4F) - 0.055F, linear);
    }
    [[nodiscard]] static float linear(float encoded)
    {
        if (encoded >= 0 && encoded < 1)
            return kTables.between(kTables.decoding, encoded);
        const float size = std::fabs(encoded);
        return std::copysign(size <= 0.04045F ? size / 12.92F : std::pow((size + 0.055F) / 1.055F, 2.4F), encoded);
    }

private:
    struct Tables
    {
        static constexpr size_t steps = 8192;
        using Table = std::array<float, steps + 2>;
        Table encoding;
        Table decoding;

        Tables();
        [[nodiscard]] static float between(const Table &table, float x)
        {
            const float place = x * steps;
            const auto index = size_t(place);
            return table[index] + (place - float(index)) * (table[index + 1] - table[index]);
        }
    };
    static const Tables kTables;
};
