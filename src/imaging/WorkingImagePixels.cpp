#include "PixelRuns.h"
#include "PixelSource.h"
#include "WorkingImage.h"

#include <QThread>

#include <algorithm>
#include <cstdlib>
#include <thread>

#include <sys/mman.h>

namespace {

int visitPiece(VipsRegion *piece, void *, void *visit, void *, gboolean *)
{
    return PixelRuns::guarded([&] { return (*static_cast<std::function<bool(VipsRegion &)> *>(visit))(*piece); });
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
    // Twice as wide as libvips' own: less is computed for the margins of neighbours, and memory is read in longer runs.
    constexpr int width = 256;
    constexpr int height = 128;
    const bool isDone = vips_sink_tile(last, width, height, nullptr, visitPiece, nullptr, &visit, nullptr) == 0;
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
            if (PixelRuns::guarded([&] { return work(band); }) != 0)
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
    const auto write = [=, this, &isOpaque](const PixelBlock &block, int count, int x, int y) {
        if (!m_mayBeClear)
            PixelBytes::writeOpaque(at(x, y), block, count, m_light);
        else if (!PixelBytes::writePremultiplied(at(x, y), block, count, m_light))
            isOpaque = false;
    };
    if (m_source) {
        const PixelSource source(*m_source, m_sourceLight.value_or(m_light));
        return forBands(m_frame, [&](const VipsRect &band) {
            PixelRuns::run(band, m_pointSteps, source.reader(), write);
            return !isSet(m_cancelled);
        });
    }
    return sink([&](VipsRegion &piece) {
        PixelRuns::run(piece.valid, m_pointSteps, PixelRuns::from(piece), write);
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
