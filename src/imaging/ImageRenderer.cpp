#include "ImageRenderer.h"

namespace {

/// A cancelled rendering may take a moment to notice; the next one does not wait for it.
constexpr int kThreads = 2;
constexpr int kRemembered = 100;

QString poolKey(const QString &key, QSize size)
{
    return QStringLiteral("%1 %2x%3").arg(key).arg(size.width()).arg(size.height());
}

}

ImageRenderer::ImageRenderer(PixelPool &pool)
    : m_pool(pool)
    , m_made(kRemembered)
    , m_queue(QStringLiteral("hmphoto.render"), kThreads, DispatchQueue::AtEnd::LeaveBehind)
{}

ImageRenderer::~ImageRenderer()
{
    cancel();
}

QImage ImageRenderer::find(const QString &key, const Image &image, QSize size)
{
    const Image *made = m_made.object(key);
    return made && made->isSameAs(image) ? m_pool.find(poolKey(key, size)) : QImage();
}

void ImageRenderer::render(const QString &key, const Image &image, QSize size, Done done)
{
    run([this, key, image, size, done = std::move(done)](const std::atomic<bool> &cancelled) {
        return [this, key, image, size, done, pixels = image.pixels(size, &cancelled)] {
            if (pixels) {
                m_made.insert(key, new Image(image));
                m_pool.insert(poolKey(key, size), *pixels);
            }
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
