#pragma once

#include "WorkingImage.h"

/// Blurs with a bell of a standard deviation, cut at three times that. Beyond the edges the nearest pixel repeats;
/// alpha weighs. Wide ones are computed on a smaller picture.
namespace Blurring {

/// Whether what is left out of the computation may come to a part of an 8-bit step. Full is for filters that make much
/// of small differences.
enum class Precision { Visible, Full };
[[nodiscard]] bool addGaussian(WorkingImage &image, double deviation, Precision precision = Precision::Visible);

[[nodiscard]] bool addRowsWithGaussian(WorkingImage &image, double deviation,
                                       const WorkingImage::RowCombination &combine);
/// Changes every pixel by what it would be when blurred: `combine(own, blurred)`, alpha multiplied in.
template<typename Function>
[[nodiscard]] bool addWithGaussian(WorkingImage &image, double deviation, Function combine)
{
    return addRowsWithGaussian(image, deviation, WorkingImage::eachOfRows(combine));
}

}
