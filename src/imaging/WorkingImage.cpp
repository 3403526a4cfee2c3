#include "WorkingImage.h"

#include "SrgbCurve.h"

#include <QThread>

#include <algorithm>
#include <cstring>

namespace {

constexpr int kBands = 4;
constexpr char kStepKey[] = "tamsel-step";

/// A step of the pipeline with the images that it reads, which stay alive with it.
struct AddedStep
{
    std::vector<VipsImage *> inputs; // ends with null
    WorkingImage::Step run;

    AddedStep(const std::vector<VipsImage *> &images, WorkingImage::Step step)
        : inputs(images)
        , run(std::move(step))
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

int runStep(VipsRegion *out, void *regions, void *, void *step, gboolean *)
{
    return static_cast<AddedStep *>(step)->run(*out, static_cast<VipsRegion **>(regions)) ? 0 : -1;
}

int runSource(VipsRegion *out, void *, void *, void *step, gboolean *)
{
    return static_cast<AddedStep *>(step)->run(*out, nullptr) ? 0 : -1;
}

float fromByte(int byte)
{
    return SrgbCurve::linear(float(byte) / 255);
}

Pixel fromRgb(QRgb rgb, const std::array<float, 256> &linear)
{
    const int alpha = qAlpha(rgb);
    if (alpha == 255)
        return {linear[size_t(qRed(rgb))], linear[size_t(qGreen(rgb))], linear[size_t(qBlue(rgb))], 1};
    if (alpha == 0)
        return {};
    const auto part = [&](int component) { return SrgbCurve::linear(float(component) / float(alpha)); };
    return {part(qRed(rgb)), part(qGreen(rgb)), part(qBlue(rgb)), float(alpha) / 255};
}

WorkingImage::Step sourceStep(const QImage &pixels)
{
    std::array<float, 256> linear;
    for (size_t i = 0; i < linear.size(); ++i)
        linear[i] = fromByte(int(i));
    const bool isOpaque = !pixels.hasAlphaChannel();
    return [&pixels, linear, isOpaque](VipsRegion &out, VipsRegion *const *) {
        const VipsRect &area = out.valid;
        for (int y = area.top; y < VIPS_RECT_BOTTOM(&area); ++y) {
            const auto *from = reinterpret_cast<const QRgb *>(pixels.constScanLine(y)) + area.left;
            Pixel *to = pixelAt(out, area.left, y);
            for (int x = 0; x < area.width; ++x)
                to[x] = fromRgb(isOpaque ? from[x] | 0xff000000U : from[x], linear);
        }
        return true;
    };
}

// No filter makes sense of more, and sums of such values stay numbers.
float sane(float value)
{
    constexpr float most = 1e6F;
    if (value > most)
        return most;
    return value >= -most ? value : value < 0 ? -most : 0;
}

void makeSane(Pixel *row, int count)
{
    float *values = &row->r;
    for (int i = 0; i < count * kBands; ++i)
        values[i] = sane(values[i]);
}

}

WorkingImage::WorkingImage(const QImage &pixels)
    : m_frame(pixels.size())
{
    ensureVips();
    m_mayBeClear = pixels.hasAlphaChannel();
    if (!addStep(std::vector<VipsImage *>(), pixels.size(), Pieces::Rows, sourceStep(pixels)))
        m_image.reset();
}

QSize WorkingImage::size() const
{
    return {vips_image_get_width(m_image.get()), vips_image_get_height(m_image.get())};
}

bool WorkingImage::take(VipsImage *image)
{
    m_image.reset(image, [](VipsImage *last) { g_object_unref(last); });
    return true;
}

bool WorkingImage::addStep(const std::vector<VipsImage *> &inputs, QSize size, Pieces pieces, Step step)
{
    std::unique_ptr<VipsImage, GObjectDeleter> out(vips_image_new());
    auto *added = new AddedStep(inputs, std::move(step));
    g_object_set_data_full(G_OBJECT(out.get()), kStepKey, added,
                           [](gpointer data) { delete static_cast<AddedStep *>(data); });
    const auto style = pieces == Pieces::Rows ? VIPS_DEMAND_STYLE_ANY : VIPS_DEMAND_STYLE_SMALLTILE;
    if (vips_image_pipeline_array(out.get(), style, added->inputs.data()) != 0)
        return false;
    // Only now: a pipeline begins with the size of what it reads.
    vips_image_init_fields(out.get(), size.width(), size.height(), kBands, VIPS_FORMAT_FLOAT, VIPS_CODING_NONE,
                           VIPS_INTERPRETATION_scRGB, 1, 1);
    const int status = inputs.empty() ? vips_image_generate(out.get(), nullptr, runSource, nullptr, nullptr, added)
                                      : vips_image_generate(out.get(), vips_start_many, runStep, vips_stop_many,
                                                            added->inputs.data(), added);
    return status == 0 && take(out.release());
}

bool WorkingImage::addStep(QSize size, Pieces pieces, Step step)
{
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

bool WorkingImage::addRowStep(RowStep step)
{
    return addStep(size(), Pieces::Rows, [step = std::move(step)](VipsRegion &out, VipsRegion *const *in) {
        if (!prepareSame(*in[0], out))
            return false;
        const VipsRect &area = out.valid;
        for (int y = area.top; y < VIPS_RECT_BOTTOM(&area); ++y) {
            Pixel *row = pixelAt(out, area.left, y);
            std::memcpy(row, pixelAt(*in[0], area.left, y), size_t(area.width) * sizeof(Pixel));
            step(row, area.width, area.left, y);
            makeSane(row, area.width);
        }
        return true;
    });
}

bool WorkingImage::combineWith(const WorkingImage &other, std::function<void(Pixel &, const Pixel &)> step)
{
    const auto run = [step = std::move(step)](VipsRegion &out, VipsRegion *const *in) {
        if (!prepareSame(*in[0], out) || !prepareSame(*in[1], out))
            return false;
        const VipsRect &area = out.valid;
        for (int y = area.top; y < VIPS_RECT_BOTTOM(&area); ++y) {
            Pixel *row = pixelAt(out, area.left, y);
            const Pixel *own = pixelAt(*in[0], area.left, y);
            const Pixel *theirs = pixelAt(*in[1], area.left, y);
            for (int x = 0; x < area.width; ++x) {
                row[x] = own[x];
                step(row[x], theirs[x]);
            }
            makeSane(row, area.width);
        }
        return true;
    };
    m_isCostly = m_isCostly || other.m_isCostly;
    return addStep({m_image.get(), other.m_image.get()}, size(), Pieces::Rows, run);
}

bool WorkingImage::setAlpha(Alpha form)
{
    if (form == m_alpha)
        return true;
    m_alpha = form;
    if (!m_mayBeClear)
        return true;
    if (form == Alpha::Premultiplied)
        return addPixelStep([](Pixel &p) { p = {p.r * p.a, p.g * p.a, p.b * p.a, p.a}; });
    return addPixelStep([](Pixel &p) {
        const float share = p.a > 0 ? 1 / p.a : 0;
        p = {p.r * share, p.g * share, p.b * share, p.a};
    });
}

bool WorkingImage::keepPieces()
{
    constexpr int side = 128;
    constexpr int most = (64 << 20) / (side * side * int(sizeof(Pixel)));
    if (!m_isCostly)
        return true;
    const bool isKept = add([](VipsImage *in, VipsImage **out) {
        return vips_tilecache(in, out, "tile_width", side, "tile_height", side, "max_tiles", most, "access",
                              VIPS_ACCESS_RANDOM, "threaded", TRUE, nullptr);
    });
    m_isCostly = !isKept;
    return isKept;
}

namespace {

int byteOf(float value)
{
    return value > 0 ? int(std::min(value, 1.0F) * 255 + 0.5F) : 0;
}

QRgb rgbFrom(const Pixel &pixel)
{
    const float alpha = pixel.a > 0 ? std::min(pixel.a, 1.0F) : 0;
    const auto part = [&](float value) {
        return value > 0 ? byteOf(SrgbCurve::encoded(std::min(value, 1.0F)) * alpha) : 0;
    };
    return qRgba(part(pixel.r), part(pixel.g), part(pixel.b), byteOf(alpha));
}

// Whether every pixel is opaque.
bool writePiece(VipsRegion &piece, uchar *bits, qsizetype bytesPerLine)
{
    const VipsRect &area = piece.valid;
    QRgb common = 0xff000000U;
    for (int y = area.top; y < VIPS_RECT_BOTTOM(&area); ++y) {
        auto *to = reinterpret_cast<QRgb *>(bits + y * bytesPerLine) + area.left;
        const Pixel *from = pixelAt(piece, area.left, y);
        for (int x = 0; x < area.width; ++x) {
            to[x] = rgbFrom(from[x]);
            common &= to[x];
        }
    }
    return qAlpha(common) == 255;
}

int visitPiece(VipsRegion *piece, void *, void *visit, void *, gboolean *)
{
    return (*static_cast<std::function<bool(VipsRegion &)> *>(visit))(*piece) ? 0 : -1;
}

// Small pictures are made side by side; a large one is waited for.
int threadsFor(QSize size)
{
    constexpr qint64 large = 500'000;
    return qint64(size.width()) * size.height() < large ? 1 : std::clamp(QThread::idealThreadCount(), 1, 8);
}

}

bool WorkingImage::visitPieces(std::function<bool(VipsRegion &)> visit) const
{
    WorkingImage last = *this;
    if (!last.add([](VipsImage *in, VipsImage **out) { return vips_copy(in, out, nullptr); }))
        return false;
    vips_image_set_int(last.m_image.get(), VIPS_META_CONCURRENCY, threadsFor(size()));
    return vips_sink(last.m_image.get(), nullptr, visitPiece, nullptr, &visit, nullptr) == 0;
}

// What lies outside is never computed; what is not there is clear.
bool WorkingImage::fitFrame()
{
    const QSize own = size();
    if (own == m_frame)
        return true;
    if (own.width() < m_frame.width() || own.height() < m_frame.height())
        m_mayBeClear = true;
    return add([&](VipsImage *in, VipsImage **out) {
        return vips_embed(in, out, 0, m_frame.height() - own.height(), m_frame.width(), m_frame.height(), "extend",
                          VIPS_EXTEND_BLACK, nullptr);
    });
}

QImage WorkingImage::pixels(const std::atomic<bool> *cancelled)
{
    QImage image(m_frame, QImage::Format_ARGB32_Premultiplied);
    if (image.isNull() || !setAlpha(Alpha::Straight) || !fitFrame())
        return {};
    uchar *bits = image.bits(); // once: the threads must not detach the image
    std::atomic<bool> isOpaque = true;
    const bool isDone = visitPieces([&](VipsRegion &piece) {
        if (cancelled && cancelled->load(std::memory_order_relaxed))
            return false;
        if (!writePiece(piece, bits, image.bytesPerLine()))
            isOpaque = false;
        return true;
    });
    if (isOpaque)
        image.reinterpretAsFormat(QImage::Format_RGB32);
    return isDone ? image : QImage();
}
