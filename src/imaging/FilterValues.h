#pragma once

#include "FilterBackEnd.h"
#include "FilterRow.h"
#include "WorkingImage.h"

/// The values with which a filter runs: the entry's where they are usable, else the filter's defaults; numbers limited
/// to what can be computed with, lengths in pixels of the rendering.
class FilterValues
{
public:
    FilterValues(const FilterRow &filter, const EffectEntry &entry, const FilterContext &context)
        : m_filter(filter)
        , m_entry(entry)
        , m_context(context)
    {}

    /// Whether the filter changes nothing with these values.
    [[nodiscard]] bool areNeutral() const;
    [[nodiscard]] double number(const char *input) const;
    [[nodiscard]] double number(const char *input, double least, double most) const;
    /// In pixels of the rendering, y upward.
    [[nodiscard]] QPointF point(const char *input) const;
    /// In linear light, alpha not multiplied in.
    [[nodiscard]] Pixel color(const char *input) const;
    /// Rendered pixels per pixel of the full image.
    [[nodiscard]] double scale() const { return m_context.scale; }

private:
    [[nodiscard]] const InputRow &input(const char *name) const;
    [[nodiscard]] EffectValue stored(const InputRow &input) const;

    const FilterRow &m_filter;
    const EffectEntry &m_entry;
    const FilterContext &m_context;
};
