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

struct ImageRenderer::Request
{
    Image image;
    QSize size;
    Done done; // main thread
    std::atomic<bool> cancelled = false;
};

ImageRenderer::ImageRenderer(PixelPool &pool)
    : m_pool(pool)
    , m_made(kRemembered)
    , m_queue(QStringLiteral("hmphoto.render"), kThreads)
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
    cancel();
    auto request = std::make_shared<Request>();
    request->image = image;
    request->size = size;
    request->done = [this, key, image, size, done = std::move(done)](const std::optional<QImage> &pixels) {
        m_current.reset();
        if (pixels) {
            m_made.insert(key, new Image(image));
            m_pool.insert(poolKey(key, size), *pixels);
        }
        done(pixels);
    };
    m_current = request;
    m_queue.async([request] {
        if (request->cancelled)
            return;
        auto pixels = request->image.pixels(request->size, &request->cancelled);
        // Cancelling happens on the main thread only, so what is not cancelled there has an owner to hand it to.
        runOnMain([request, pixels = std::move(pixels)] {
            if (!request->cancelled)
                request->done(pixels);
        });
    });
}

void ImageRenderer::cancel()
{
    if (m_current)
        m_current->cancelled = true;
    m_current.reset();
}
