#pragma once

class FilterValues;
class WorkingImage;

/// Filters that give a picture the look of films.
namespace Film {

[[nodiscard]] bool chrome(WorkingImage &image, const FilterValues &values);
[[nodiscard]] bool fade(WorkingImage &image, const FilterValues &values);
[[nodiscard]] bool instant(WorkingImage &image, const FilterValues &values);
[[nodiscard]] bool mono(WorkingImage &image, const FilterValues &values);
[[nodiscard]] bool noir(WorkingImage &image, const FilterValues &values);
[[nodiscard]] bool process(WorkingImage &image, const FilterValues &values);
[[nodiscard]] bool tonal(WorkingImage &image, const FilterValues &values);
[[nodiscard]] bool transfer(WorkingImage &image, const FilterValues &values);

}
