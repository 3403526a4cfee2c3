#pragma once

class FilterValues;
class WorkingImage;

/// Filters that repeat triangles of a picture.
namespace TriangleTiles {

[[nodiscard]] bool kaleidoscope(WorkingImage &image, const FilterValues &values);
[[nodiscard]] bool sixfoldReflected(WorkingImage &image, const FilterValues &values);
[[nodiscard]] bool sixfoldRotated(WorkingImage &image, const FilterValues &values);
[[nodiscard]] bool translated(WorkingImage &image, const FilterValues &values);
[[nodiscard]] bool twelvefoldReflected(WorkingImage &image, const FilterValues &values);

}
