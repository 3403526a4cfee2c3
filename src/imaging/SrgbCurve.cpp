#include "SrgbCurve.h"

const SrgbCurve::Tables SrgbCurve::kTables;

SrgbCurve::Tables::Tables()
{
    for (size_t i = 0; i < encoding.size(); ++i) {
        const double x = double(i) / steps;
        encoding[i] = float(x <= 0.0031308 ? 12.92 * x : 1.055 * std::pow(x, 1 / 2.4) - 0.055);
        decoding[i] = float(x <= 0.04045 ? x / 12.92 : std::pow((x + 0.055) / 1.055, 2.4));
    }
}
