#include "MorphologyFilters.h"

#include "FilterValues.h"
#include "Neighbours.h"
#include "Reduction.h"

#include <algorithm>
#include <cmath>

namespace {

using Neighbours::Extreme;

// A length that no picture needs longer.
double within(const WorkingImage &image, double length)
{
    return std::min(length, 2.0 * std::max(image.size().width(), image.size().height()));
}

// Among the extremes of squares none is lost.
Reduction::Merging mergingOf(Extreme extreme)
{
    return extreme == Extreme::Most ? Reduction::Merging::Most : Reduction::Merging::Least;
}

// How far a disc reaches to either side, row by row.
std::vector<int> discSpans(double radius)
{
    std::vector<int> spans;
    const int reach = int(radius);
    for (int y = -reach; y <= reach; ++y)
        spans.push_back(int(std::sqrt(radius * radius - y * y) + 1e-9));
    return spans;
}

bool addDiscExtreme(WorkingImage &image, double radius, Extreme extreme)
{
    constexpr double enough = 60;
    const double length = within(image, radius);
    const int factor = Reduction::factorFor(length, enough);
    // A pixel of the smaller picture reaches half a pixel farther by itself.
    const double reduced = factor > 1 ? length / factor - 0.5 : length;
    return Reduction::addReduced(image, {factor, mergingOf(extreme)}, [=](WorkingImage &smaller) {
        return Neighbours::addExtreme(smaller, extreme, discSpans(reduced));
    });
}

// The pixels to either side of the middle one of a stretch of `length` that is odd when not scaled.
int halfOf(double length, double scale)
{
    const double odd = 2 * std::floor(length / scale / 2 + 1e-6) + 1;
    return int(std::round((odd * scale - 1) / 2));
}

bool addRectangleExtreme(WorkingImage &image, const FilterValues &values, Extreme extreme)
{
    constexpr double enough = 240;
    const double width = within(image, values.number("inputWidth"));
    const double height = within(image, values.number("inputHeight"));
    const int factor = Reduction::factorFor(std::max(width, height), enough);
    const double scale = values.scale() / factor;
    return Reduction::addReduced(image, {factor, mergingOf(extreme)}, [=](WorkingImage &reduced) {
        const int across = std::max(halfOf(width / factor, scale), 0);
        const int down = std::max(halfOf(height / factor, scale), 0);
        return Neighbours::addExtreme(reduced, extreme, {across}) &&
               Neighbours::addExtreme(reduced, extreme, std::vector<int>(size_t(2 * down + 1), 0));
    });
}

}

bool Morphology::maximum(WorkingImage &image, const FilterValues &values)
{
    return addDiscExtreme(image, values.number("inputRadius"), Extreme::Most);
}

bool Morphology::minimum(WorkingImage &image, const FilterValues &values)
{
    return addDiscExtreme(image, values.number("inputRadius"), Extreme::Least);
}

bool Morphology::gradient(WorkingImage &image, const FilterValues &values)
{
    // Small renderings of it are not to become black.
    const double given = values.number("inputRadius");
    const double radius = std::max(given, std::min(given / values.scale(), 1.0));
    if (!image.setAlpha(WorkingImage::Alpha::Premultiplied) || !image.keepPieces(WorkingImage::Reading::Around))
        return false;
    WorkingImage most = image;
    WorkingImage least = image;
    return addDiscExtreme(most, radius, Extreme::Most) && addDiscExtreme(least, radius, Extreme::Least) &&
           most.combineWith(least,
                            [](Pixel &m, const Pixel &l) {
                                m = {m.r - l.r, m.g - l.g, m.b - l.b, m.a};
                            }) &&
           image.combineWith(most, [](Pixel &own, const Pixel &apart) {
               own = {apart.r, apart.g, apart.b, own.a};
           });
}

bool Morphology::rectangleMaximum(WorkingImage &image, const FilterValues &values)
{
    return addRectangleExtreme(image, values, Extreme::Most);
}

bool Morphology::rectangleMinimum(WorkingImage &image, const FilterValues &values)
{
    return addRectangleExtreme(image, values, Extreme::Least);
}
