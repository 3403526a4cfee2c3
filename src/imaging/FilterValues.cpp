#include "FilterValues.h"

#include "SrgbCurve.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

constexpr double kMost = 1e6; // of anything

double within(double value, double least, double most)
{
    return std::min(std::max(value, least), most);
}

bool isFinite(const EffectValue &value)
{
    if (const auto *number = std::get_if<double>(&value))
        return std::isfinite(*number);
    if (const auto *point = std::get_if<QPointF>(&value))
        return std::isfinite(point->x()) && std::isfinite(point->y());
    const auto *color = std::get_if<EffectColor>(&value);
    return color && std::isfinite(color->red + color->green + color->blue + color->alpha);
}

}

const InputRow &FilterValues::input(const char *name) const
{
    const auto found = std::find_if(m_filter.inputs.cbegin(), m_filter.inputs.cend(),
                                    [&](const InputRow &row) { return std::strcmp(row.name, name) == 0; });
    Q_ASSERT(found != m_filter.inputs.cend());
    return *found;
}

EffectValue FilterValues::stored(const InputRow &input) const
{
    const EffectValue *value = m_entry.value(QString::fromLatin1(input.name));
    const bool isUsable = value && value->index() == input.defaultValue.index() && isFinite(*value);
    return isUsable ? *value : input.defaultValue;
}

bool FilterValues::areNeutral() const
{
    bool haveIdentity = false;
    for (const InputRow &row : m_filter.inputs) {
        if (!row.identity)
            continue;
        haveIdentity = true;
        if (!(stored(row) == *row.identity))
            return false;
    }
    return haveIdentity;
}

double FilterValues::number(const char *name) const
{
    const InputRow &row = input(name);
    const double value = within(std::get<double>(stored(row)), -kMost, kMost);
    if (row.kind == InputKind::Pixels || row.kind == InputKind::WholePixels)
        return std::max(value, 0.0) * scale();
    return row.kind == InputKind::SignedPixels ? value * scale() : value;
}

double FilterValues::number(const char *name, double least, double most) const
{
    return within(number(name), least, most);
}

QPointF FilterValues::point(const char *name) const
{
    const InputRow &row = input(name);
    const EffectValue *value = m_entry.value(QString::fromLatin1(name));
    const bool isStored = value && std::holds_alternative<QPointF>(*value) && isFinite(*value);
    // A stored point is in pixels of the rendering already.
    const QPointF point = isStored ? std::get<QPointF>(*value) : std::get<QPointF>(row.defaultValue) * scale();
    return {within(point.x(), -kMost, kMost), within(point.y(), -kMost, kMost)};
}

Pixel FilterValues::color(const char *name) const
{
    const auto color = std::get<EffectColor>(stored(input(name)));
    const auto part = [](double component) { return SrgbCurve::linear(float(within(component, -10, 10))); };
    return {part(color.red), part(color.green), part(color.blue), float(within(color.alpha, 0, 1))};
}
