#include "WorkingImage.h"

#include "HalfFloats.h"
#include "SrgbCurve.h"

#include <QThread>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <thread>

#include <sys/mman.h>

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

/// libvips is C: nothing may be thrown through it.
template<typename Run>
int guarded(Run run)
{
    try {
        return run() ? 0 : -1;
    } catch (const std::exception &) {
        return -1; // memory is short
    }
}

// `regions` are those of the inputs, null when there are none.
int runStep(VipsRegion *out, void *regions, void *, void *data, gboolean *)
{
    const auto *step = static_cast<AddedStep *>(data);
    return guarded([&] { return !isSet(step->cancelled) && step->run(*out, static_cast<VipsRegion **>(regions)); });
}

using Light = WorkingImage::Light;
using Levels = std::array<float, 256>;

Levels levelsOf(Light light)
{
    Levels levels;
    for (size_t i = 0; i < levels.size(); ++i) {
        const float encoded = float(i) / 255;
        levels[i] = light == Light::Linear ? SrgbCurve::linear(encoded) : encoded;
    }
    return levels;
}

Pixel fromRgb(QRgb rgb, Light light, const Levels &levels)
{
    const int alpha = qAlpha(rgb);
    if (alpha == 255)
        return {levels[size_t(qRed(rgb))], levels[size_t(qGreen(rgb))], levels[size_t(qBlue(rgb))], 1};
    if (alpha == 0)
        return {};
    const auto part = [&](int component) {
        const float encoded = float(component) / float(alpha);
        return light == Light::Linear ? SrgbCurve::linear(encoded) : encoded;
    };
    return {part(qRed(rgb)), part(qGreen(rgb)), part(qBlue(rgb)), float(alpha) / 255};
}

// No filter makes sense of more, and sums of such values stay numbers.
void makeSane(Pixel *row, int count)
{
    float *values = &row->r;
    Wide::runFloats(count * kBands, [=](int i, auto many) TAMSEL_WIDE {
        using Floats = typename decltype(many)::Floats;
        const Floats most = Floats{} + 1e6F;
        auto &value = *reinterpret_cast<Floats *>(values + i);
        value = value == value ? value : Floats{}; // no number
        value = value < most ? value : most;
        value = value > -most ? value : -most;
    });
}

constexpr int kMostAtOnce = 256; // pixels, that stay in the processor's nearest memory

// Calls `finish(row, count, x, y)` for the pixels of an area behind the steps, a few at a time.
template<typename Finish>
void runRows(VipsRegion &in, const VipsRect &area, const std::vector<WorkingImage::RowStep> &steps, Finish finish)
{
    std::array<Pixel, kMostAtOnce> part;
    for (int y = area.top; y < VIPS_RECT_BOTTOM(&area); ++y) {
        for (int x = area.left; x < VIPS_RECT_RIGHT(&area); x += kMostAtOnce) {
            const int count = std::min(kMostAtOnce, VIPS_RECT_RIGHT(&area) - x);
            const Pixel *from = pixelAt(in, x, y);
            if (!steps.empty()) {
                std::memcpy(part.data(), from, size_t(count) * sizeof(Pixel));
                from = part.data();
            }
            for (const auto &step : steps)
                step(part.data(), count, x, y);
            finish(from, count, x, y);
        }
    }
}

/// Pixels as they come from a picture, behind the first steps.
class Source
{
public:
    Source(const QImage &pixels, Light light, std::vector<WorkingImage::RowStep> steps)
        : m_pixels(pixels)
        , m_light(light)
        , m_levels(levelsOf(light))
        , m_steps(std::move(steps))
        , m_isOpaque(!pixels.hasAlphaChannel())
    {}

    /// Calls `finish(row, count, x, y)` as above.
    template<typename Finish>
    void run(const VipsRect &area, Finish finish) const
    {
        std::array<Pixel, kMostAtOnce> part;
        for (int y = area.top; y < VIPS_RECT_BOTTOM(&area); ++y) {
            const auto *line = reinterpret_cast<const QRgb *>(m_pixels.constScanLine(y));
            for (int x = area.left; x < VIPS_RECT_RIGHT(&area); x += kMostAtOnce) {
                const int count = std::min(kMostAtOnce, VIPS_RECT_RIGHT(&area) - x);
                read(part.data(), line + x, count);
                for (const auto &step : m_steps)
                    step(part.data(), count, x, y);
                finish(part.data(), count, x, y);
            }
        }
    }

private:
    void read(Pixel *to, const QRgb *from, int count) const
    {
        if (!m_isOpaque) {
            std::transform(from, from + count, to, [this](QRgb rgb) { return fromRgb(rgb, m_light, m_levels); });
            return;
        }
        const float *levels = m_levels.data();
        std::transform(from, from + count, to, [levels](QRgb rgb) {
            return Pixel{levels[rgb >> 16 & 255], levels[rgb >> 8 & 255], levels[rgb & 255], 1};
        });
    }

    const QImage &m_pixels;
    Light m_light;
    Levels m_levels;
    std::vector<WorkingImage::RowStep> m_steps;
    bool m_isOpaque;
};

// Copies pixels into a piece.
auto into(VipsRegion &out)
{
    return [&out](const Pixel *row, int count, int x, int y) {
        Pixel *to = pixelAt(out, x, y);
        std::memcpy(to, row, size_t(count) * sizeof(Pixel));
        makeSane(to, count);
    };
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

bool WorkingImage::addRowStep(RowStep step)
{
    m_rowSteps.push_back(std::move(step));
    return true;
}

bool WorkingImage::addRows()
{
    if (m_source) {
        const Source source(*std::exchange(m_source, nullptr), m_sourceLight.value_or(m_light),
                            std::exchange(m_rowSteps, {}));
        return addStep(std::vector<VipsImage *>(), m_frame, Pieces::Rows,
                       [source](VipsRegion &out, VipsRegion *const *) {
                           source.run(out.valid, into(out));
                           return true;
                       });
    }
    if (m_rowSteps.empty())
        return true;
    return addStep({m_image.get()}, size(), Pieces::Rows,
                   [steps = std::exchange(m_rowSteps, {})](VipsRegion &out, VipsRegion *const *in) {
                       if (!prepareSame(*in[0], out))
                           return false;
                       runRows(*in[0], out.valid, steps, into(out));
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
            makeSane(row, area.width);
        }
        return true;
    };
    WorkingImage theirs = other;
    if (!addRows() || !theirs.addRows())
        return false;
    m_isCostly = m_isCostly || other.m_isCostly;
    return addStep({m_image.get(), theirs.m_image.get()}, size(), Pieces::Rows, run);
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
    WorkingImage theirs = other;
    if (!addRows() || !theirs.addRows())
        return false;
    m_isCostly = m_isCostly || other.m_isCostly;
    return addStep({m_image.get(), theirs.m_image.get()}, size(), Pieces::Rows, run);
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
    constexpr int side = 64;
    constexpr qint64 bytes = side * side * qint64(sizeof(Pixel));
    constexpr int most = int((64 << 20) / bytes);
    constexpr qint64 mostOfChain = 160 << 20;
    constexpr int pieceHeight = 128; // that is asked for at a time
    if (!m_isCostly)
        return true;
    // Bands of tiles from the left to the right.
    const int bands = reading == Reading::Around ? (pieceHeight + 2 * margin) / side + 2 : most;
    const int kept = std::min(most, bands * (size().width() / side + 2));
    if (*m_keptBytes + kept * bytes > mostOfChain)
        return settle();
    const bool isKept = add([kept](VipsImage *in, VipsImage **out) {
        return vips_tilecache(in, out, "tile_width", side, "tile_height", side, "max_tiles", kept, "access",
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

namespace {

/// The bytes of evenly many levels of linear light, fine enough for the darkest ones.
class ByteTable
{
public:
    static constexpr int kMost = (1 << 14) - 1;

    ByteTable()
    {
        for (size_t i = 0; i < m_bytes.size(); ++i)
            m_bytes[i] = uchar(SrgbCurve::encoded(float(i) / kMost) * 255 + 0.5F);
    }
    [[nodiscard]] QRgb operator[](int level) const { return m_bytes[size_t(level)]; }

private:
    std::array<uchar, kMost + 1> m_bytes;
};

int byteOf(float value)
{
    return value > 0 ? int(std::min(value, 1.0F) * 255 + 0.5F) : 0;
}

QRgb clearRgbFrom(const Pixel &pixel, Light light)
{
    const float alpha = pixel.a > 0 ? std::min(pixel.a, 1.0F) : 0;
    const auto part = [&](float value) {
        const float limited = value > 0 ? std::min(value, 1.0F) : 0;
        return byteOf((light == Light::Linear ? SrgbCurve::encoded(limited) : limited) * alpha);
    };
    return qRgba(part(pixel.r), part(pixel.g), part(pixel.b), byteOf(alpha));
}

using AllLevels = std::array<int, kMostAtOnce * kBands>;

// From 0 to `most`; 0 for no number.
void findLevels(AllLevels &levels, const Pixel *from, int count, float last)
{
    const float *values = &from->r;
    int *to = levels.data();
    Wide::runFloats(count * kBands, [=](int i, auto many) TAMSEL_WIDE {
        using Floats = typename decltype(many)::Floats;
        using Ints = typename decltype(many)::Ints;
        const Floats most = Floats{} + last;
        Floats level = *reinterpret_cast<const Floats *>(values + i) * most + 0.5F;
        level = level > 0 ? level : Floats{};
        level = level < most ? level : most;
        *reinterpret_cast<Ints *>(to + i) = __builtin_convertvector(level, Ints);
    });
}

// At most kMostAtOnce pixels.
void writeOpaque(QRgb *to, const Pixel *from, int count, Light light)
{
    static const ByteTable bytes;
    AllLevels levels;
    findLevels(levels, from, count, light == Light::Linear ? ByteTable::kMost : 255);
    const int *level = levels.data();
    if (light == Light::Encoded) {
        for (int x = 0; x < count; ++x, level += kBands)
            to[x] = 0xff000000U | QRgb(level[0]) << 16 | QRgb(level[1]) << 8 | QRgb(level[2]);
        return;
    }
    for (int x = 0; x < count; ++x, level += kBands)
        to[x] = 0xff000000U | bytes[level[0]] << 16 | bytes[level[1]] << 8 | bytes[level[2]];
}

// Whether every pixel is opaque.
bool writeClear(QRgb *to, const Pixel *from, int count, Light light)
{
    writeOpaque(to, from, count, light);
    bool isOpaque = true;
    for (int x = 0; x < count; ++x) {
        if (from[x].a >= 1)
            continue;
        to[x] = clearRgbFrom(from[x], light);
        isOpaque = isOpaque && qAlpha(to[x]) == 255;
    }
    return isOpaque;
}

int visitPiece(VipsRegion *piece, void *, void *visit, void *, gboolean *)
{
    return guarded([&] { return (*static_cast<std::function<bool(VipsRegion &)> *>(visit))(*piece); });
}

// Small pictures are made side by side; a large one is waited for.
int threadsFor(QSize size)
{
    constexpr qint64 large = 500'000;
    return qint64(size.width()) * size.height() < large ? 1 : std::clamp(QThread::idealThreadCount(), 1, 8);
}

}

bool WorkingImage::sink(std::function<bool(VipsRegion &)> visit) const
{
    VipsImage *last = nullptr;
    if (vips_copy(m_image.get(), &last, nullptr) != 0)
        return false;
    vips_image_set_int(last, VIPS_META_CONCURRENCY, threadsFor(size()));
    const bool isDone = vips_sink(last, nullptr, visitPiece, nullptr, &visit, nullptr) == 0;
    g_object_unref(last);
    return isDone && !isSet(m_cancelled);
}

bool WorkingImage::visitPieces(std::function<bool(VipsRegion &)> visit) const
{
    WorkingImage whole = *this;
    return whole.addRows() && whole.sink(std::move(visit));
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

namespace {

// In large pages of memory, which the kernel hands out faster than many small ones.
QImage largeImage(QSize size, QImage::Format format)
{
    constexpr size_t page = 2 << 20;
    const size_t bytes = size_t(size.width()) * size_t(size.height()) * sizeof(QRgb);
    void *memory = bytes >= 4 * page ? std::aligned_alloc(page, (bytes + page - 1) / page * page) : nullptr;
    if (!memory)
        return {size, format};
    madvise(memory, bytes, MADV_HUGEPAGE); // if the system has them
    return {static_cast<uchar *>(memory),
            size.width(),
            size.height(),
            size.width() * qsizetype(sizeof(QRgb)),
            format,
            std::free,
            memory};
}

// Calls `start` that many times; fewer threads do where the system has no more.
template<typename Start>
void startThreads(int count, Start start)
{
    try {
        for (int i = 0; i < count; ++i)
            start();
    } catch (const std::exception &) {
    }
}

// Runs `work(rows)` for bands of rows on several threads, until one of them tells false.
bool forBands(QSize size, const std::function<bool(const VipsRect &)> &work)
{
    constexpr int height = 16;
    std::atomic<int> next = 0;
    std::atomic<bool> isDone = true;
    const auto run = [&] {
        for (int top = next.fetch_add(height); top < size.height() && isDone; top = next.fetch_add(height)) {
            const VipsRect band{0, top, size.width(), std::min(height, size.height() - top)};
            if (guarded([&] { return work(band); }) != 0)
                isDone = false;
        }
    };
    std::vector<std::thread> threads;
    startThreads(threadsFor(size) - 1, [&] { threads.emplace_back(run); });
    run();
    for (std::thread &thread : threads)
        thread.join();
    return isDone;
}

}

QImage WorkingImage::pixels()
{
    if (!setForm(Alpha::Straight, m_light) || !fitFrame())
        return {};
    QImage image = largeImage(m_frame, m_mayBeClear ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
    if (image.isNull())
        return {};
    uchar *bits = image.bits(); // once: the threads must not detach the image
    std::atomic<bool> isOpaque = true;
    const auto write = [&](const Pixel *row, int count, int x, int y) {
        auto *to = reinterpret_cast<QRgb *>(bits + y * image.bytesPerLine()) + x;
        if (!m_mayBeClear)
            writeOpaque(to, row, count, m_light);
        else if (!writeClear(to, row, count, m_light))
            isOpaque = false;
    };
    bool isDone = false;
    if (m_source) {
        const Source source(*m_source, m_sourceLight.value_or(m_light), m_rowSteps);
        isDone = forBands(m_frame, [&](const VipsRect &band) {
            source.run(band, write);
            return !isSet(m_cancelled);
        });
    } else {
        isDone = sink([&](VipsRegion &piece) {
            runRows(piece, piece.valid, m_rowSteps, write);
            return !isSet(m_cancelled);
        });
    }
    if (isOpaque)
        image.reinterpretAsFormat(QImage::Format_RGB32);
    return isDone ? image : QImage();
}
