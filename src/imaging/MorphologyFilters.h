#pragma once

class FilterValues;
class WorkingImage;

/// Filters that take the lightest or the darkest of what is around a pixel.
namespace Morphology {

[[nodiscard]] bool gradient(WorkingImage &image, const FilterValues &values);
[[nodiscard]] bool maximum(WorkingImage &image, const FilterValues &values);
[[nodiscard]] bool minimum(WorkingImage &image, const FilterValues &values);
[[nodiscard]] bool rectangleMaximum(WorkingImage &image, const FilterValues &values);
[[nodiscard]] bool rectangleMinimum(WorkingImage &image, const FilterValues &values);

}
