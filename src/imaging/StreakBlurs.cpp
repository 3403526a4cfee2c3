#include "StreakBlurs.h"

#include "FilterValues.h"
#include "Neighbours.h"
#include "Plane.h"
#include "Reduction.h"
#include "Sampling.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace {

using Neighbours::Tap;

// What samples evenly along a line weigh the pixels around them.
std::vector<Tap> lineTaps(double radius, double angle, int steps)
{
    std::map<std::pair<int, int>, double> weights;
    for (int i = 0; i < steps; ++i) {
        const double t = radius * ((2.0 * i + 1) / steps - 1);
        const double x = t * std::cos(angle);
        const double y = -t * std::sin(angle);
        const int left = int(std::floor(x));
        const int top = int(std::floor(y));
        const double across = x - left;
        const double down = y - top;
        weights[{left, top}] += (1 - across) * (1 - down);
        weights[{left + 1, top}] += across * (1 - down);
        weights[{left, top + 1}] += (1 - across) * down;
        weights[{left + 1, top + 1}] += across * down;
    }
    std::vector<Tap> taps;
    for (const auto &[place, weight] : weights) {
        if (weight > 1e-9)
            taps.push_back({place.first, place.second, float(weight)});
    }
    return taps;
}

// A mean along a long line: of a few means along short ones.
bool addLine(WorkingImage &image, double radius, double angle)
{
    constexpr double longest = 12; // that is taken in one step
    const auto samples = [](double reach) { return std::max(1, int(std::ceil(4 * reach))); };
    if (radius <= longest)
        return Neighbours::addWeighted(image, lineTaps(radius, angle, samples(radius)));
    const int parts = int(std::ceil(std::sqrt(2 * radius)));
    const double part = radius / parts;
    const int margin = int(std::ceil(radius)) + 1; // so that beyond the edges lie no means
    const QSize size = image.size();
    return image.setAlpha(WorkingImage::Alpha::Premultiplied) &&
           image.keepPieces(WorkingImage::Reading::Around, margin) && Neighbours::addMargin(image, margin) &&
           Neighbours::addWeighted(image, lineTaps(part, angle, samples(part))) &&
           Neighbours::addWeighted(image, lineTaps(radius, angle, parts)) &&
           Neighbours::removeMargin(image, margin, size);
}

}

bool StreakBlurs::motion(WorkingImage &image, const FilterValues &values)
{
    constexpr double enough = 101;
    const double radius =
        std::min(values.number("inputRadius"), 2.0 * std::max(image.size().width(), image.size().height()));
    const double angle = values.number("inputAngle");
    if (radius <= 0)
        return true;
    const int factor = Reduction::factorFor(radius, enough);
    return Reduction::addReduced(image, {factor},
                                 [=](WorkingImage &reduced) { return addLine(reduced, radius / factor, angle); });
}

namespace {

/// Streaks that lead to a centre, `share` of the way long. Rows run downward.
struct Zoom
{
    QPointF center;
    double share;
    QSize size;

    [[nodiscard]] double lengthAt(QPointF place) const { return Plane::length(place - center) * std::abs(share); }
    [[nodiscard]] double longest() const
    {
        const QPointF farthest(center.x() < size.width() / 2.0 ? size.width() : 0,
                               center.y() < size.height() / 2.0 ? size.height() : 0);
        return lengthAt(farthest);
    }
    [[nodiscard]] double shortest() const
    {
        return lengthAt(QPointF(std::clamp(center.x(), 0.0, double(size.width())),
                                std::clamp(center.y(), 0.0, double(size.height()))));
    }
    /// How often the picture is halved so that a streak is short enough on it; between whole numbers there are two
    /// pictures to mix.
    [[nodiscard]] double halvingsFor(double length) const
    {
        constexpr double enough = 40;
        const double most = std::ceil(std::log2(std::max(size.width(), size.height())));
        return std::clamp(std::log2(std::max(length, 1.0) / enough), 0.0, most);
    }
};

// On the picture halved that often; where streaks are too long or too short for that, it does not matter.
bool addStreaks(WorkingImage &image, const Zoom &zoom, int halvings)
{
    const int factor = 1 << halvings;
    return Reduction::addReduced(image, {factor}, [=](WorkingImage &reduced) {
        const double border = factor > 1 ? 1 : 0;
        const double height = reduced.size().height();
        const QPointF center(zoom.center.x() / factor + border, height - zoom.center.y() / factor - border);
        return Sampling::addSpread(reduced, Sampling::Edge::Clamp, [=](QPointF place, std::vector<QPointF> &from) {
            constexpr int most = 120;
            const QPointF streak = (place - center) * zoom.share;
            const double length = Plane::length(streak);
            const int steps = std::clamp(int(std::ceil(length + std::min(length, 12.0))), 1, most); // denser when few
            for (int i = 0; i < steps; ++i)
                from.push_back(place - streak * ((i + 0.5) / steps));
        });
    });
}

}

bool StreakBlurs::zoom(WorkingImage &image, const FilterValues &values)
{
    using Alpha = WorkingImage::Alpha;
    const QSize size = image.size();
    const double diagonal = std::hypot(size.width(), size.height()) / 2;
    const double amount = std::clamp(values.number("inputAmount"), -4 * diagonal, 4 * diagonal);
    const QPointF given = values.point("inputCenter");
    const Zoom zoom{QPointF(given.x(), size.height() - given.y()), amount / diagonal, size};
    const int first = int(std::floor(zoom.halvingsFor(zoom.shortest())));
    const int last = int(std::ceil(zoom.halvingsFor(zoom.longest())));
    if (!image.setAlpha(Alpha::Premultiplied) || !image.keepPieces())
        return false;
    const WorkingImage sharp = image;
    bool isAdded = addStreaks(image, zoom, last) && image.setAlpha(Alpha::Premultiplied);
    for (int halvings = last - 1; halvings >= first && isAdded; --halvings) {
        WorkingImage finer = sharp;
        const auto share = [=](int x, int y) {
            return std::clamp(float(halvings + 1 - zoom.halvingsFor(zoom.lengthAt(QPointF(x + 0.5, y + 0.5)))), 0.0F,
                              1.0F);
        };
        isAdded =
            addStreaks(finer, zoom, halvings) && finer.setAlpha(Alpha::Premultiplied) && image.blendWith(finer, share);
    }
    return isAdded;
}
