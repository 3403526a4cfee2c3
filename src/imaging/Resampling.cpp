#include "Resampling.h"

#include "Reduction.h"
#include "Sampling.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

using Resampling::Kernel;

/// One direction of an image that is scaled.
struct Axis
{
    bool isAcross;
    double from;   ///< length before
    double to;     ///< length behind
    int kept;      ///< of that
    double before; ///< what is not kept at the front
};

/// The pixels from which one is made.
struct Span
{
    int first;
    std::vector<float> weights;
};

Span spanOf(int index, const Axis &axis, int count, const Kernel &kernel)
{
    const double step = axis.from / axis.to;
    const double middle = (index + axis.before + 0.5) * step - 0.5;
    const double unit = std::max(step, 1.0);
    const double reach = kernel.reach * unit;
    const auto inside = [count](double place) { return int(std::clamp(place, 0.0, count - 1.0)); };
    Span span{inside(std::ceil(middle - reach)), {}};
    span.weights.resize(size_t(inside(std::floor(middle + reach)) - span.first + 1));
    std::vector<double> weights(span.weights.size());
    double sum = 0;
    for (double place = std::ceil(middle - reach); place <= middle + reach; ++place) {
        const double weight = kernel.weight(std::abs(place - middle) / unit);
        weights[size_t(inside(place) - span.first)] += weight;
        sum += weight;
    }
    std::transform(weights.cbegin(), weights.cend(), span.weights.begin(), [sum](double w) { return float(w / sum); });
    return span;
}

void addTo(Pixel &sum, const Pixel &pixel, float weight)
{
    sum = {sum.r + weight * pixel.r, sum.g + weight * pixel.g, sum.b + weight * pixel.b, sum.a + weight * pixel.a};
}

void fillAcross(VipsRegion &out, VipsRegion &in, const std::vector<Span> &spans)
{
    const VipsRect &area = out.valid;
    for (int y = area.top; y < VIPS_RECT_BOTTOM(&area); ++y) {
        Pixel *row = pixelAt(out, area.left, y);
        for (const Span &span : spans) {
            const Pixel *from = pixelAt(in, span.first, y);
            Pixel sum;
            for (size_t i = 0; i < span.weights.size(); ++i)
                addTo(sum, from[i], span.weights[i]);
            *row++ = sum;
        }
    }
}

void fillDown(VipsRegion &out, VipsRegion &in, const std::vector<Span> &spans)
{
    const VipsRect &area = out.valid;
    for (int y = area.top; y < VIPS_RECT_BOTTOM(&area); ++y) {
        const Span &span = spans[size_t(y - area.top)];
        Pixel *row = pixelAt(out, area.left, y);
        std::fill_n(row, area.width, Pixel());
        for (size_t i = 0; i < span.weights.size(); ++i) {
            const Pixel *from = pixelAt(in, area.left, span.first + int(i));
            for (int x = 0; x < area.width; ++x)
                addTo(row[x], from[x], span.weights[i]);
        }
    }
}

bool fillScaled(VipsRegion &out, VipsRegion &in, const Axis &axis, const Kernel &kernel)
{
    VipsRect wanted = out.valid;
    const int first = axis.isAcross ? wanted.left : wanted.top;
    const int count = axis.isAcross ? in.im->Xsize : in.im->Ysize;
    std::vector<Span> spans;
    int begin = count;
    int end = 0;
    for (int i = 0; i < (axis.isAcross ? wanted.width : wanted.height); ++i) {
        spans.push_back(spanOf(first + i, axis, count, kernel));
        begin = std::min(begin, spans.back().first);
        end = std::max(end, spans.back().first + int(spans.back().weights.size()));
    }
    (axis.isAcross ? wanted.left : wanted.top) = begin;
    (axis.isAcross ? wanted.width : wanted.height) = end - begin;
    if (vips_region_prepare(&in, &wanted) != 0)
        return false;
    axis.isAcross ? fillAcross(out, in, spans) : fillDown(out, in, spans);
    return true;
}

bool addAxis(WorkingImage &image, const Axis &axis, const Kernel &kernel)
{
    const QSize size = axis.isAcross ? QSize(axis.kept, image.size().height()) : QSize(image.size().width(), axis.kept);
    return image.addStep(size, WorkingImage::Pieces::Tiles,
                         [=](VipsRegion &out, VipsRegion *const *in) { return fillScaled(out, *in[0], axis, kernel); });
}

// How much of a length is kept, when the frame has that one.
int keptOf(double length, int frame)
{
    constexpr double most = 16;
    return int(std::min(length, std::max(most * frame, 1.0)));
}

}

Resampling::Kernel Resampling::lanczos()
{
    constexpr double lobes = 3;
    const auto weight = [](double distance) {
        const auto sinc = [](double x) { return x < 1e-9 ? 1 : std::sin(x) / x; };
        const double x = std::numbers::pi * distance;
        return distance < lobes ? sinc(x) * sinc(x / lobes) : 0;
    };
    return {weight, lobes};
}

Resampling::Kernel Resampling::cubic(double b, double c)
{
    const auto weight = [=](double x) {
        if (x < 1)
            return (((12 - 9 * b - 6 * c) * x - 18 + 12 * b + 6 * c) * x * x + 6 - 2 * b) / 6;
        return x < 2 ? (((-b - 6 * c) * x + 6 * b + 30 * c) * x * x - (12 * b + 48 * c) * x + 8 * b + 24 * c) / 6 : 0;
    };
    return {weight, 2};
}

bool Resampling::addScaled(WorkingImage &image, double width, double height, const Kernel &kernel)
{
    constexpr double enough = 4;
    const QSize full = image.size();
    const QSize kept(keptOf(width, image.frame().width()), keptOf(height, image.frame().height()));
    if (image.samplesNearest())
        return Sampling::addMapped(image, kept, Sampling::Edge::Clamp, [=](QPointF place) {
            return QPointF(place.x() * full.width() / width, place.y() * full.height() / height);
        });
    // Means do where many pixels become one.
    const int factor = Reduction::factorFor(std::min(full.width() / width, full.height() / height), enough);
    const Axis across{true, double(full.width()) / factor, width, kept.width(), 0};
    const Axis down{false, double(full.height()) / factor, height, kept.height(), height - kept.height()};
    return image.setAlpha(WorkingImage::Alpha::Premultiplied) && image.keepPieces() &&
           (factor <= 1 || (Reduction::addSmaller(image, factor) && image.keepPieces())) &&
           addAxis(image, across, kernel) && addAxis(image, down, kernel);
}
