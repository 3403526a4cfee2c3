#pragma once

class FilterValues;
class WorkingImage;

/// Filters that smear the picture along lines.
namespace StreakBlurs {

[[nodiscard]] bool motion(WorkingImage &image, const FilterValues &values);
[[nodiscard]] bool zoom(WorkingImage &image, const FilterValues &values);

}
