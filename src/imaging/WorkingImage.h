#pragma once

#include "VipsSupport.h"
#include "Wide.h"

#include <QImage>
#include <QPointF>
#include <QSize>

#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

/// A pixel of a working image: linear light with the primaries of sRGB, not limited to 0 … 1.
struct Pixel
{
    float r = 0;
    float g = 0;
    float b = 0;
    float a = 0;
};

/// Pixels side by side, component by component: what many of them are computed with at once.
struct PixelBlock
{
    static constexpr int kMost = 256; ///< that stay in the processor's nearest memory

    std::array<float, kMost> r;
    std::array<float, kMost> g;
    std::array<float, kMost> b;
    std::array<float, kMost> a;
};

/// A picture on its way through filters: a libvips pipeline whose pixels are computed piece by piece, on several
/// threads, when the whole is asked for. Copies share what has been added so far. Rows run downward.
class WorkingImage
{
public:
    enum class Alpha { Straight, Premultiplied };
    enum class Light { Linear, Encoded };
    enum class Pieces { Rows, Tiles };
    /// Fills the valid part of `out`; false on failure. Runs on several threads at once.
    using Step = std::function<bool(VipsRegion &out, VipsRegion *const *in)>;
    /// Changes pixels that stand side by side from (x, y) on.
    using PointStep = std::function<void(PixelBlock &block, int count, int x, int y)>;
    using RowCombination = std::function<void(Pixel *row, const Pixel *other, int count)>;

    WorkingImage() = default;
    /// `pixels` (Format_RGB32 or Format_ARGB32_Premultiplied) and `cancelled`, which may be null and ends all work when
    /// it becomes true, outlive the working image and its copies.
    WorkingImage(const QImage &pixels, const std::atomic<bool> *cancelled);

    [[nodiscard]] bool isNull() const { return !m_image && !m_source; }
    [[nodiscard]] QSize size() const;
    /// The size of the picture at first: from the left bottom corner, what of the image is wanted in the end.
    [[nodiscard]] QSize frame() const { return m_frame; }
    /// The form of the colours, in linear light; opaque pictures take either form for nothing.
    [[nodiscard]] bool setAlpha(Alpha form) { return setForm(form, Light::Linear); }
    /// Encoded colours of sRGB, alpha not multiplied in, until another form is asked for: for steps on single pixels.
    [[nodiscard]] bool setEncoded() { return setForm(Alpha::Straight, Light::Encoded); }
    /// For steps that make opaque pixels clear.
    void setMayBeClear() { m_mayBeClear = true; }
    /// Asks the next filter to take the nearest pixel where it would find what lies between pixels.
    void sampleNearestNext() { m_isNearestNext = true; }
    /// Whether the filter before asked for that.
    [[nodiscard]] bool samplesNearest() const { return m_samplesNearest; }
    /// A filter comes.
    void beginFilter() { m_samplesNearest = std::exchange(m_isNearestNext, false); }

    /// Adds a step that computes an image of that size from this one.
    [[nodiscard]] bool addStep(QSize size, Pieces pieces, Step step);
    /// The same with another image of the same size and form: `step(pixel, of the other)`.
    template<typename Function>
    [[nodiscard]] bool combineWith(const WorkingImage &other, Function step)
    {
        return combineRows(other, eachOfRows(step));
    }
    [[nodiscard]] bool combineRows(const WorkingImage &other, RowCombination step);
    /// Calls `function(pixel, of the other)` for rows.
    template<typename Function>
    [[nodiscard]] static RowCombination eachOfRows(Function function)
    {
        return [function](Pixel *row, const Pixel *other, int count) {
            Wide::run([row, other, count, function]() TAMSEL_WIDE {
                for (int i = 0; i < count; ++i)
                    function(row[i], other[i]);
            });
        };
    }
    /// Where `share(x, y)`, with rows downward, is 1, another image of the same size and form takes the place of this
    /// one; between 0 and 1 they are mixed. Of neither is computed what is not needed.
    [[nodiscard]] bool blendWith(const WorkingImage &other, std::function<float(int x, int y)> share);
    /// Adds an operation `operation(in, &out)` of libvips that keeps the bands and costs little.
    template<typename Operation>
    [[nodiscard]] bool add(Operation operation)
    {
        VipsImage *out = nullptr;
        return addRows() && operation(m_image.get(), &out) == 0 && take(out);
    }
    /// What has been added last costs more than a row step.
    void setCostly() { m_isCostly = true; }
    /// Adds a step `function(pixel, x, y)` on pixels where they are.
    template<typename Function>
    [[nodiscard]] bool addPointStep(Function function)
    {
        m_pointSteps.push_back([function](PixelBlock &block, int count, int x, int y) {
            Wide::run([&block, count, x, y, function]() TAMSEL_WIDE {
                float *r = block.r.data();
                float *g = block.g.data();
                float *b = block.b.data();
                float *a = block.a.data();
#pragma GCC ivdep
                for (int i = 0; i < count; ++i) {
                    Pixel pixel{r[i], g[i], b[i], a[i]};
                    function(pixel, x + i, y);
                    r[i] = pixel.r;
                    g[i] = pixel.g;
                    b[i] = pixel.b;
                    a[i] = pixel.a;
                }
            });
        });
        return true;
    }
    /// The same with `function(pixel)`, without regard to the place.
    template<typename Function>
    [[nodiscard]] bool addPixelStep(Function function)
    {
        return addPointStep([function](Pixel &pixel, int, int) TAMSEL_WIDE { function(pixel); });
    }
    /// The same with `function(pixel, place)`; places count from the left bottom corner, to the middle of pixels.
    template<typename Function>
    [[nodiscard]] bool addPlacedStep(Function function)
    {
        return addPointStep([function, height = size().height()](Pixel &pixel, int x, int y)
                                TAMSEL_WIDE { function(pixel, QPointF(x + 0.5, height - y - 0.5)); });
    }
    /// Where a next step reads.
    enum class Reading { Around, Anywhere };
    /// Keeps what has been computed last, where that is worth while, for a next step that asks for the same pixels
    /// again and again or for a few at a time; around a pixel, those so far away. When a long chain has kept too much,
    /// the image so far is computed as a whole.
    [[nodiscard]] bool keepPieces(Reading reading = Reading::Anywhere, int margin = 0);

    /// Computes every piece once and hands it to `visit`, on several threads; ends early when that tells false.
    [[nodiscard]] bool visitPieces(std::function<bool(VipsRegion &)> visit) const;
    /// Computes the pixels of the frame; null on failure or when cancelled.
    [[nodiscard]] QImage pixels();

    /// Set from another thread to end the work; for steps that take long over one piece. May be null.
    [[nodiscard]] const std::atomic<bool> *cancelled() const
    {
        return m_cancelled;
    }

private:
    [[nodiscard]] bool setForm(Alpha alpha, Light light);
    [[nodiscard]] bool settle();
    [[nodiscard]] bool computeInto(uchar *bits, qsizetype bytesPerLine, std::atomic<bool> &isOpaque);
    [[nodiscard]] bool addRows();
    [[nodiscard]] bool fitFrame();
    [[nodiscard]] bool take(VipsImage *image);
    [[nodiscard]] bool sink(std::function<bool(VipsRegion &)> visit) const;
    [[nodiscard]] bool addStep(const std::vector<VipsImage *> &inputs, QSize size, Pieces pieces, Step step);
    [[nodiscard]] bool addPairStep(const WorkingImage &other, Step step);

    const std::atomic<bool> *m_cancelled = nullptr;
    const QImage *m_source = nullptr; // until a step needs more than single pixels
    std::shared_ptr<VipsImage> m_image;
    std::vector<PointStep> m_pointSteps; // that are to follow, together
    std::optional<Light> m_sourceLight;  // the form in which the first of them takes the source
    Alpha m_alpha = Alpha::Straight;
    Light m_light = Light::Linear;
    QSize m_frame;
    std::shared_ptr<std::atomic<qint64>> m_keptBytes; // of all copies
    bool m_mayBeClear = false;
    bool m_samplesNearest = false;
    bool m_isNearestNext = false;
    bool m_isCostly = false; // to compute in small parts: more than pixel by pixel since the last keeping
};

[[nodiscard]] inline bool isSet(const std::atomic<bool> *flag)
{
    return flag && flag->load(std::memory_order_relaxed);
}

/// Where in the region's memory the pixel (x, y) of its image is.
[[nodiscard]] inline Pixel *pixelAt(VipsRegion &region, int x, int y)
{
    VipsPel *row = region.data + ptrdiff_t(y - region.valid.top) * region.bpl;
    return reinterpret_cast<Pixel *>(row) + (x - region.valid.left);
}

[[nodiscard]] inline float luminance(const Pixel &pixel)
{
    return 0.2126F * pixel.r + 0.7152F * pixel.g + 0.0722F * pixel.b;
}
