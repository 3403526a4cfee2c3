#pragma once

class FilterValues;
class WorkingImage;

/// Filters that put a picture together from pieces of one colour each.
namespace Mosaic {

[[nodiscard]] bool crystallize(WorkingImage &image, const FilterValues &values);
[[nodiscard]] bool hexagonalPixellate(WorkingImage &image, const FilterValues &values);
[[nodiscard]] bool pixellate(WorkingImage &image, const FilterValues &values);
[[nodiscard]] bool pointillize(WorkingImage &image, const FilterValues &values);

}
