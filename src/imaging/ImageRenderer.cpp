#include "ImageRenderer.h"

namespace {

/// A cancelled rendering may take a moment to notice; the next one does not wait for it.
constexpr int kThreads = 2;

}

ImageRenderer::ImageRenderer(PixelPool &pool)
    : m_pool(pool)
    , m_queue(QStringLiteral("hmphoto.render"), kThreads, DispatchQueue::AtEnd::LeaveBehind)
{}

ImageRenderer::~ImageRenderer()
{
    cancel();
}

void ImageRenderer::render(const PixelRequest &request, Done done)
{
    run([this, request, done = std::move(done)](const std::atomic<bool> &cancelled) {
        return [this, request, done, pixels = request.make(cancelled)] {
            if (pixels)
                m_pool.insert(request.key(), *pixels);
            done(pixels);
        };
    });
}

void ImageRenderer::run(Work work)
{
    cancel();
    const auto cancelled = std::make_shared<std::atomic<bool>>(false);
    m_current = cancelled;
    m_queue.async([this, cancelled, work = std::move(work)] {
        if (*cancelled)
            return;
        // Cancelling happens on the main thread only, so what is not cancelled there has an owner to hand it to.
        runOnMain([this, cancelled, then = work(*cancelled)] {
            if (*cancelled)
                return;
            m_current.reset();
            then();
        });
    });
}

void ImageRenderer::cancel()
{
    if (m_current)
        *m_current = true;
    m_current.reset();
}
