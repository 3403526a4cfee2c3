#pragma once

#include "DispatchQueue.h"
#include "Image.h"
#include "PixelPool.h"

#include <QCache>
#include <QSize>
#include <QString>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

/// Makes the pixels of one image at a time in the background, for whoever shows one picture large: the newest request
/// wins, the one before it is cancelled. What was made stays in a pool for the way back. Main thread.
class ImageRenderer
{
public:
    /// On the main thread; nothing when the picture could not be made.
    using Done = std::function<void(const std::optional<QImage> &pixels)>;

    /// `pool` outlives the renderer and may be shared.
    explicit ImageRenderer(PixelPool &pool);
    ~ImageRenderer();
    ImageRenderer(const ImageRenderer &) = delete;
    ImageRenderer &operator=(const ImageRenderer &) = delete;

    /// What the pool holds of `image`, which was last rendered under `key`, at that size; null when it has nothing.
    [[nodiscard]] QImage find(const QString &key, const Image &image, QSize size);
    /// Calls `done` in a later turn of the event loop, unless another request or `cancel` comes first.
    void render(const QString &key, const Image &image, QSize size, Done done);
    void cancel();

private:
    struct Request;

    PixelPool &m_pool;
    QCache<QString, Image> m_made; // of which image the pool's pixels under a key are
    std::shared_ptr<Request> m_current;
    DispatchQueue m_queue; // last: its blocks end first
};
