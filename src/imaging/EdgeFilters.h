#pragma once

class FilterValues;
class WorkingImage;

/// Filters that draw where a picture changes.
namespace Edges {

[[nodiscard]] bool comicEffect(WorkingImage &image, const FilterValues &values);
[[nodiscard]] bool edges(WorkingImage &image, const FilterValues &values);
[[nodiscard]] bool edgeWork(WorkingImage &image, const FilterValues &values);
[[nodiscard]] bool gaborGradients(WorkingImage &image, const FilterValues &values);
[[nodiscard]] bool sobelGradients(WorkingImage &image, const FilterValues &values);

}
