#pragma once

#include "EffectChain.h"

#include <QtGlobal>

#include <numbers>
#include <optional>
#include <vector>

class FilterValues;
class WorkingImage;

inline constexpr double kPi = std::numbers::pi;

enum class InputKind {
    Number,
    Angle,        ///< radians
    YesOrNo,      ///< 1 or 0
    Pixels,       ///< a length in pixels of the full image; less than nothing counts as nothing
    SignedPixels, ///< the same, either way
    WholePixels,  ///< as Pixels, in whole pixels
    Point,
    FourNumbers, ///< a vector for which there are no controls
    Color,
};

/// One input of a filter, besides the image.
struct InputRow
{
    const char *name;
    const char *displayName;
    InputKind kind;
    EffectValue defaultValue;
    std::optional<EffectValue> identity;
    std::optional<double> sliderMinimum;
    std::optional<double> sliderMaximum;
};

/// One filter: what is told of it, and the function that adds its steps to a working image, which may leave the image
/// in either form of alpha. False when libvips refused.
struct FilterRow
{
    const char *name;
    const char *displayName;
    const char *description;
    std::vector<InputRow> inputs;
    bool (*apply)(WorkingImage &image, const FilterValues &values);
};

/// The filters of a category, in the order in which they are offered.
using FilterTable = std::vector<FilterRow>;

[[nodiscard]] const FilterTable &blurFilters();
[[nodiscard]] const FilterTable &colorAdjustmentFilters();
[[nodiscard]] const FilterTable &colorEffectFilters();
[[nodiscard]] const FilterTable &distortionFilters();
[[nodiscard]] const FilterTable &geometryFilters();
[[nodiscard]] const FilterTable &halftoneFilters();
[[nodiscard]] const FilterTable &sharpenFilters();
[[nodiscard]] const FilterTable &stylizeFilters();
[[nodiscard]] const FilterTable &tileFilters();
