#pragma once

#include "FilterLibrary.h"

#include <QImage>
#include <QString>

#include <array>
#include <functional>
#include <initializer_list>
#include <utility>
#include <vector>

/// A small picture in doubles, linear light, for plain loops to compute what a filter is to give.
class ReferencePicture
{
public:
    using Pixel = std::array<double, 4>; ///< red, green, blue, alpha

    explicit ReferencePicture(const QImage &image);

    [[nodiscard]] int width() const { return m_width; }
    [[nodiscard]] int height() const { return m_height; }
    /// Counted from the left bottom corner; beyond the edges the nearest pixel.
    [[nodiscard]] const Pixel &at(int x, int y) const;
    [[nodiscard]] Pixel &at(int x, int y);
    [[nodiscard]] QImage image() const;

    /// Colours times alpha, or back.
    void multiplyAlpha();
    void divideAlpha();
    /// Every pixel from its place.
    [[nodiscard]] ReferencePicture mapped(const std::function<Pixel(int x, int y)> &function) const;

private:
    int m_width;
    int m_height;
    std::vector<Pixel> m_pixels;
};

[[nodiscard]] double srgbEncoded(double linear);
[[nodiscard]] double srgbDecoded(double encoded);
[[nodiscard]] double luminanceOf(const ReferencePicture::Pixel &pixel);

/// 32 × 24 pixels with colours, an edge, and (if wanted) alpha.
[[nodiscard]] QImage samplePicture(bool withAlpha);

/// 704 × 496 pixels of fine detail, hard edges, and alpha on the right.
[[nodiscard]] QImage detailedPicture();

using FilterSettings = std::initializer_list<std::pair<const char *, EffectValue>>;
/// An entry with these values.
[[nodiscard]] EffectEntry effect(const char *filter, FilterSettings values = {});

/// One filter with values, beside the loop that tells what it is to give.
struct FilterCase
{
    EffectEntry entry; ///< points in normalised coordinates, as stored
    std::function<ReferencePicture(const ReferencePicture &)> expected;
    int tolerance = 1;     ///< of any component of any pixel, in 8-bit steps
    bool isOpaque = false; ///< not to be tried with alpha
};

/// Checks all cases on the sample picture with and without alpha; the first difference, or empty.
[[nodiscard]] QString firstDifference(const std::vector<FilterCase> &cases);

/// How a filter with large lengths does on the detailed picture; in 8-bit steps, in the mean and at most, of some
/// pixels all over it. `expected(picture, x, y)` works on colours into which alpha is multiplied.
struct WideCase
{
    EffectEntry entry;
    std::function<ReferencePicture::Pixel(const ReferencePicture &in, int x, int y)> expected;
    double meanTolerance;
    int tolerance;
};
[[nodiscard]] QString firstWideDifference(const std::vector<WideCase> &cases);

/// The chain's result, or null.
[[nodiscard]] QImage filtered(const EffectChain &chain, const QImage &image, double scale = 1);
[[nodiscard]] const FilterLibrary &filterLibrary();
