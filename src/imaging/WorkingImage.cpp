#include "WorkingImage.h"

#include "HalfFloats.h"
#include "PixelRuns.h"
#include "PixelSource.h"
#include "SrgbCurve.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr int kBands = 4;
constexpr char kStepKey[] = "tamsel-step";
constexpr char kBytesKey[] = "tamsel-bytes";

/// A step of the pipeline with the images that it reads, which stay alive with it.
struct AddedStep
{
    std::vector<VipsImage *> inputs; // ends with null
    WorkingImage::Step run;
    const std::atomic<bool> *cancelled;

    AddedStep(const std::vector<VipsImage *> &images, WorkingImage::Step step, const std::atomic<bool> *cancelling)
        : inputs(images)
        , run(std::move(step))
        , cancelled(cancelling)
    {
        for (VipsImage *image : inputs)
            g_object_ref(image);
        inputs.push_back(nullptr);
    }
    AddedStep(const AddedStep &) = delete;
    AddedStep &operator=(const AddedStep &) = delete;
    ~AddedStep()
    {
        inputs.pop_back();
        for (VipsImage *image : inputs)
            g_object_unref(image);
    }
};

// `regions` are those of the inputs, null when there are none.
int runStep(VipsRegion *out, void *regions, void *, void *data, gboolean *)
{
    const auto *step = static_cast<AddedStep *>(data);
    return PixelRuns::guarded(
        [&] { return !isSet(step->cancelled) && step->run(*out, static_cast<VipsRegion **>(regions)); });
}

}

WorkingImage::WorkingImage(const QImage &pixels, const std::atomic<bool> *cancelled)
    : m_cancelled(cancelled)
    , m_source(&pixels)
    , m_frame(pixels.size())
    , m_keptBytes(std::make_shared<std::atomic<qint64>>(0))
    , m_mayBeClear(pixels.hasAlphaChannel())
{
    ensureVips();
}

QSize WorkingImage::size() const
{
    return m_source ? m_frame : QSize(vips_image_get_width(m_image.get()), vips_image_get_height(m_image.get()));
}

bool WorkingImage::take(VipsImage *image)
{
    m_image.reset(image, [](VipsImage *last) { g_object_unref(last); });
    return true;
}

bool WorkingImage::addStep(const std::vector<VipsImage *> &inputs, QSize size, Pieces pieces, Step step)
{
    std::unique_ptr<VipsImage, GObjectDeleter> out(vips_image_new());
    auto *added = new AddedStep(inputs, std::move(step), m_cancelled);
    g_object_set_data_full(G_OBJECT(out.get()), kStepKey, added,
                           [](gpointer data) { delete static_cast<AddedStep *>(data); });
    const auto style = pieces == Pieces::Rows ? VIPS_DEMAND_STYLE_ANY : VIPS_DEMAND_STYLE_SMALLTILE;
    if (vips_image_pipeline_array(out.get(), style, added->inputs.data()) != 0)
        return false;
    // Only now: a pipeline begins with the size of what it reads.
    vips_image_init_fields(out.get(), size.width(), size.height(), kBands, VIPS_FORMAT_FLOAT, VIPS_CODING_NONE,
                           VIPS_INTERPRETATION_scRGB, 1, 1);
    const int status = inputs.empty() ? vips_image_generate(out.get(), nullptr, runStep, nullptr, nullptr, added)
                                      : vips_image_generate(out.get(), vips_start_many, runStep, vips_stop_many,
                                                            added->inputs.data(), added);
    return status == 0 && take(out.release());
}

bool WorkingImage::addStep(QSize size, Pieces pieces, Step step)
{
    if (!addRows())
        return false;
    m_isCostly = m_isCostly || pieces == Pieces::Tiles;
    return addStep({m_image.get()}, size, pieces, std::move(step));
}

namespace {

// The same part of an input as is asked for.
bool prepareSame(VipsRegion &in, const VipsRegion &out)
{
    return vips_region_prepare(&in, &out.valid) == 0;
}

}

bool WorkingImage::addRows()
{
    if (m_source) {
        const PixelSource source(*std::exchange(m_source, nullptr), m_sourceLight.value_or(m_light));
        return addStep(std::vector<VipsImage *>(), m_frame, Pieces::Rows,
                       [source, steps = std::exchange(m_pointSteps, {})](VipsRegion &out, VipsRegion *const *) {
                           PixelRuns::run(out.valid, steps, source.reader(), PixelRuns::into(out));
                           return true;
                       });
    }
    if (m_pointSteps.empty())
        return true;
    return addStep({m_image.get()}, size(), Pieces::Rows,
                   [steps = std::exchange(m_pointSteps, {})](VipsRegion &out, VipsRegion *const *in) {
                       if (!prepareSame(*in[0], out))
                           return false;
                       PixelRuns::run(out.valid, steps, PixelRuns::from(*in[0]), PixelRuns::into(out));
                       return true;
                   });
}

bool WorkingImage::combineRows(const WorkingImage &other, RowCombination step)
{
    const auto run = [step = std::move(step)](VipsRegion &out, VipsRegion *const *in) {
        if (!prepareSame(*in[0], out) || !prepareSame(*in[1], out))
            return false;
        const VipsRect &area = out.valid;
        for (int y = area.top; y < VIPS_RECT_BOTTOM(&area); ++y) {
            Pixel *row = pixelAt(out, area.left, y);
            std::memcpy(row, pixelAt(*in[0], area.left, y), size_t(area.width) * sizeof(Pixel));
            step(row, pixelAt(*in[1], area.left, y), area.width);
            PixelRuns::makeSane(row, area.width);
        }
        return true;
    };
    return addPairStep(other, run);
}

bool WorkingImage::blendWith(const WorkingImage &other, std::function<float(int x, int y)> share)
{
    const auto run = [share = std::move(share)](VipsRegion &out, VipsRegion *const *in) {
        const VipsRect &area = out.valid;
        std::vector<float> shares;
        for (int y = area.top; y < VIPS_RECT_BOTTOM(&area); ++y) {
            for (int x = area.left; x < VIPS_RECT_RIGHT(&area); ++x)
                shares.push_back(share(x, y));
        }
        const auto [least, most] = std::minmax_element(shares.cbegin(), shares.cend());
        if ((*least < 1 && !prepareSame(*in[0], out)) || (*most > 0 && !prepareSame(*in[1], out)))
            return false;
        const bool isMixed = *least < 1 && *most > 0;
        VipsRegion &main = *least < 1 ? *in[0] : *in[1];
        for (int y = area.top; y < VIPS_RECT_BOTTOM(&area); ++y) {
            Pixel *row = pixelAt(out, area.left, y);
            std::memcpy(row, pixelAt(main, area.left, y), size_t(area.width) * sizeof(Pixel));
            for (int x = 0; isMixed && x < area.width; ++x) {
                auto &own = *reinterpret_cast<Wide::Four::Floats *>(row + x);
                const auto &theirs = *reinterpret_cast<const Wide::Four::Floats *>(pixelAt(*in[1], area.left + x, y));
                own += shares[size_t((y - area.top) * area.width + x)] * (theirs - own);
            }
        }
        return true;
    };
    return addPairStep(other, run);
}

bool WorkingImage::addPairStep(const WorkingImage &other, Step step)
{
    WorkingImage theirs = other;
    if (!addRows() || !theirs.addRows())
        return false;
    m_isCostly = m_isCostly || other.m_isCostly;
    return addStep({m_image.get(), theirs.m_image.get()}, size(), Pieces::Rows, std::move(step));
}

bool WorkingImage::setForm(Alpha alpha, Light light)
{
    if (m_source && !m_sourceLight)
        m_sourceLight = m_light = light; // it can be had in either
    const auto multiply = [this](Alpha form) {
        if (form == std::exchange(m_alpha, form) || !m_mayBeClear)
            return true;
        if (form == Alpha::Premultiplied)
            return addPixelStep([](Pixel &p) { p = {p.r * p.a, p.g * p.a, p.b * p.a, p.a}; });
        return addPixelStep([](Pixel &p) {
            const float share = p.a > 0 ? 1 / p.a : 0;
            p = {p.r * share, p.g * share, p.b * share, p.a};
        });
    };
    if (light == m_light)
        return multiply(alpha);
    if (!multiply(Alpha::Straight))
        return false;
    m_light = light;
    const auto convert = [this](auto curve) {
        return addPixelStep([curve](Pixel &p) { p = {curve(p.r), curve(p.g), curve(p.b), p.a}; });
    };
    const bool isConverted = light == Light::Linear ? convert([](float c) { return SrgbCurve::linear(c); })
                                                    : convert([](float c) { return SrgbCurve::encoded(c); });
    return isConverted && multiply(alpha);
}

namespace {

/// Counts bytes as long as it lives.
class KeptBytes
{
public:
    KeptBytes(std::shared_ptr<std::atomic<qint64>> sum, qint64 bytes)
        : m_sum(std::move(sum))
        , m_bytes(bytes)
    {
        *m_sum += m_bytes;
    }
    KeptBytes(const KeptBytes &) = delete;
    KeptBytes &operator=(const KeptBytes &) = delete;
    ~KeptBytes() { *m_sum -= m_bytes; }

private:
    std::shared_ptr<std::atomic<qint64>> m_sum;
    qint64 m_bytes;
};

}

bool WorkingImage::keepPieces(Reading reading, int margin)
{
    constexpr int width = 128;
    constexpr int height = 64;
    constexpr qint64 bytes = width * height * qint64(sizeof(Pixel));
    constexpr int most = int((64 << 20) / bytes);
    constexpr qint64 mostOfChain = 160 << 20;
    constexpr int pieceHeight = 128; // that is asked for at a time
    if (!m_isCostly)
        return true;
    // Bands of tiles from the left to the right.
    const int bands = reading == Reading::Around ? (pieceHeight + 2 * margin) / height + 2 : most;
    const int kept = std::min(most, bands * ((size().width() + width - 1) / width));
    if (*m_keptBytes + kept * bytes > mostOfChain)
        return settle();
    const bool isKept = add([kept](VipsImage *in, VipsImage **out) {
        return vips_tilecache(in, out, "tile_width", width, "tile_height", height, "max_tiles", kept, "access",
                              VIPS_ACCESS_RANDOM, "threaded", TRUE, nullptr);
    });
    m_isCostly = !isKept;
    if (isKept)
        g_object_set_data_full(G_OBJECT(m_image.get()), kBytesKey, new KeptBytes(m_keptBytes, kept * bytes),
                               [](gpointer data) { delete static_cast<KeptBytes *>(data); });
    return isKept;
}

bool WorkingImage::settle()
{
    if (!addRows())
        return false;
    const auto whole = std::make_shared<HalfFloats>(size());
    const bool isDone = sink([&](VipsRegion &piece) {
        whole->write(piece);
        return true;
    });
    m_isCostly = false;
    return isDone &&
           addStep(std::vector<VipsImage *>(), size(), Pieces::Rows, [whole](VipsRegion &out, VipsRegion *const *) {
               whole->read(out);
               return true;
           });
}
