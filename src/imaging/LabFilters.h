#pragma once

class FilterValues;
class WorkingImage;

/// Filters between colours and their CIE L*, a*, b* values.
namespace Lab {

[[nodiscard]] bool fromRgb(WorkingImage &image, const FilterValues &values);
[[nodiscard]] bool toRgb(WorkingImage &image, const FilterValues &values);

}
