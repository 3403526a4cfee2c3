#pragma once

#include "WorkingImage.h"

#include <functional>
#include <vector>

/// Steps that paint with the colours of seeds: one seed somewhere in every square of a grid.
namespace Seeds {

struct Seed
{
    float x; ///< in pixels, rightward and downward from a corner that the seeds around a pixel have in common
    float y;
    quint32 rank; ///< of those that lie over each other; as good as chance
    Pixel color;  ///< the mean around it
};

/// The squares of the grid, and the squares around the seeds of which the means are taken; in pixels.
struct Grid
{
    QPointF corner; ///< of one square
    double pitch;
    double meanSide;
    int reach; ///< how many squares away a seed may be to matter
};

/// Pixels side by side that lie in one square of the grid, and the seeds around them: nearer squares come first.
struct Run
{
    Pixel *row;
    int count;
    float x; ///< the middle of the first pixel
    float y;
    const std::vector<const Seed *> &seeds;
};

[[nodiscard]] bool addPainted(WorkingImage &image, const Grid &grid, const std::function<void(const Run &run)> &paint);

}
