#pragma once

#include "WorkingImage.h"

#include <functional>
#include <utility>

/// Steps that divide the picture into cells of one colour each.
namespace Cells {

/// The numbers of a cell in its grid.
using Cell = std::pair<double, double>;

/// Every cell takes the mean of its pixels inside the picture. `cellAt` tells the cell at a place (from the left bottom
/// corner, to the middle of pixels); no cell is wider or higher than twice `size`.
[[nodiscard]] bool addMeans(WorkingImage &image, double size, const std::function<Cell(QPointF)> &cellAt);

}
