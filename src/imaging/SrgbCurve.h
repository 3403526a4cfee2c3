#pragma once

#include <array>
#include <cmath>
#include <cstddef>

/// The transfer curve of sRGB for floats, continued symmetrically below 0 and onwards beyond 1. Up to 4 it
/// is read from tables; the error is under a hundredth of an 8-bit step.
class SrgbCurve
{
public:
    [[nodiscard]] static float encoded(float linear)
    {
        const float size = std::fabs(linear);
        if (size < 1)
            return std::copysign(between(kTables.encoding, size * steps), linear);
        if (size < kMost)
            return std::copysign(between(kTables.encodingBeyond, size * stepsBeyond), linear);
        return std::copysign(1.055F * std::pow(size, 1 / 2.4F) - 0.055F, linear);
    }
    [[nodiscard]] static float linear(float encoded)
    {
        const float size = std::fabs(encoded);
        if (size < 1)
            return std::copysign(between(kTables.decoding, size * steps), encoded);
        if (size < kMost)
            return std::copysign(between(kTables.decodingBeyond, size * stepsBeyond), encoded);
        return std::copysign(std::pow((size + 0.055F) / 1.055F, 2.4F), encoded);
    }

private:
    static constexpr int steps = 8192;
    static constexpr int stepsBeyond = 1024; // where the curves hardly bend
    static constexpr int kMost = 4;

    using Table = std::array<float, steps + 2>;
    using TableBeyond = std::array<float, kMost * stepsBeyond + 2>;

    struct Tables
    {
        Table encoding;
        Table decoding;
        TableBeyond encodingBeyond;
        TableBeyond decodingBeyond;

        Tables();
    };

    template<typename AnyTable>
    [[nodiscard]] static float between(const AnyTable &table, float place)
    {
        const auto index = size_t(int(place));
        return table[index] + (place - float(index)) * (table[index + 1] - table[index]);
    }

    static const Tables kTables;
};
