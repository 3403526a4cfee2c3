#include "WorkingImage.h"

#include "HalfFloats.h"
#include "PixelSource.h"
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
using PointSteps = std::vector<WorkingImage::PointStep>;

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

// Calls `finish(row, count, x, y)` for the pixels of an area behind the steps, a few at a time.
template<typename Finish>
void runRows(VipsRegion &in, const VipsRect &area, const PointSteps &steps, Finish finish)
{
    std::array<Pixel, PixelBlock::kMost> part;
    inBlocks(area, [&](int x, int y, int count) {
        const Pixel *from = pixelAt(in, x, y);
        if (!steps.empty()) {
            std::memcpy(part.data(), from, size_t(count) * sizeof(Pixel));
            from = part.data();
        }
        for (const auto &step : steps)
            step.onRow(part.data(), count, x, y);
        finish(from, count, x, y);
    });
}

// The same with blocks, when no step needs to know the place.
template<typename Finish>
void runBlocks(VipsRegion &in, const VipsRect &area, const PointSteps &steps, Finish finish)
{
    PixelBlock block;
    inBlocks(area, [&](int x, int y, int count) {
        PixelBytes::load(block, pixelAt(in, x, y), count);
        for (const auto &step : steps)
            step.onBlock(block, count);
        finish(block, count, x, y);
    });
}

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
    m_pointSteps.push_back({std::move(step), {}});
    return true;
}

bool WorkingImage::addRows()
{
    if (m_source) {
        const PixelSource source(*std::exchange(m_source, nullptr), m_sourceLight.value_or(m_light),
                                 std::exchange(m_pointSteps, {}));
        return addStep(std::vector<VipsImage *>(), m_frame, Pieces::Rows,
                       [source](VipsRegion &out, VipsRegion *const *) {
                           source.run(out.valid, into(out));
                           return true;
                       });
    }
    if (m_pointSteps.empty())
        return true;
    return addStep({m_image.get()}, size(), Pieces::Rows,
                   [steps = std::exchange(m_pointSteps, {})](VipsRegion &out, VipsRegion *const *in) {
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

bool WorkingImage::computeInto(uchar *bits, qsizetype bytesPerLine, std::atomic<bool> &isOpaque)
{
    const auto at = [=](int x, int y) { return reinterpret_cast<QRgb *>(bits + y * bytesPerLine) + x; };
    const auto writeBlock = [=, this](const PixelBlock &block, int count, int x, int y) {
        PixelBytes::write(at(x, y), block, count, m_light);
    };
    const auto writeRow = [=, this, &isOpaque](const Pixel *row, int count, int x, int y) {
        if (!PixelBytes::writeClear(at(x, y), row, count, m_light))
            isOpaque = false;
    };
    const bool inBlocks = !m_mayBeClear && std::all_of(m_pointSteps.cbegin(), m_pointSteps.cend(),
                                                       [](const PointStep &step) { return bool(step.onBlock); });
    if (m_source) {
        const PixelSource source(*m_source, m_sourceLight.value_or(m_light), m_pointSteps);
        return forBands(m_frame, [&](const VipsRect &band) {
            inBlocks ? source.runBlocks(band, writeBlock) : source.run(band, writeRow);
            return !isSet(m_cancelled);
        });
    }
    return sink([&](VipsRegion &piece) {
        inBlocks ? runBlocks(piece, piece.valid, m_pointSteps, writeBlock)
                 : runRows(piece, piece.valid, m_pointSteps, writeRow);
        return !isSet(m_cancelled);
    });
}

QImage WorkingImage::pixels()
{
    if (!setForm(Alpha::Straight, m_light) || !fitFrame())
        return {};
    QImage image = largeImage(m_frame, m_mayBeClear ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
    if (image.isNull())
        return {};
    std::atomic<bool> isOpaque = true;
    // The bits are asked for once: the threads must not detach the image.
    const bool isDone = computeInto(image.bits(), image.bytesPerLine(), isOpaque);
    if (isOpaque)
        image.reinterpretAsFormat(QImage::Format_RGB32);
    return isDone ? image : QImage();
}
