#include "SrgbCurve.h"

namespace {

double encodedAt(double x)
{
    return x <= 0.0031308 ? 12.92 * x : 1.055 * std::pow(x, 1 / 2.4) - 0.055;
}

double linearAt(double x)
{
    return x <= 0.04045 ? x / 12.92 : std::pow((x + 0.055) / 1.055, 2.4);
}

template<typename Table>
void fill(Table &table, int steps, double (*curve)(double))
{
    for (size_t i = 0; i < table.size(); ++i)
        table[i] = float(curve(double(i) / steps));
}

}

const SrgbCurve::Tables SrgbCurve::kTables;

SrgbCurve::Tables::Tables()
{
    fill(encoding, steps, encodedAt);
    fill(decoding, steps, linearAt);
    fill(encodingBeyond, stepsBeyond, encodedAt);
    fill(decodingBeyond, stepsBeyond, linearAt);
}
