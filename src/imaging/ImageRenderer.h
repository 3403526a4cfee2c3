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
    using Work = std::function<std::function<void()>(const std::atomic<bool> &cancelled)>;

    /// `pool` outlives the renderer and may be shared.
    explicit ImageRenderer(PixelPool &pool);
    ~ImageRenderer();
    ImageRenderer(const ImageRenderer &) = delete;
    ImageRenderer &operator=(const ImageRenderer &) = delete;

    /// What the pool holds of `image`, which was last rendered under `key`, at that size; null when it has nothing.
    [[nodiscard]] QImage find(const QString &key, const Image &image, QSize size);
    /// Calls `done` in a later turn of the event loop, unless another request or `cancel` comes first.
    void render(const QString &key, const Image &image, QSize size, Done done);
    /// Does other work that showing the picture takes, on the same terms: `work` runs on a thread of the queue, what it
    /// returns on the main thread.
    void run(Work work);
    void cancel();

private:
    PixelPool &m_pool;
    QCache<QString, Image> m_made;                // of which image the pool's pixels under a key are
    std::shared_ptr<std::atomic<bool>> m_current; // whether what is under way is cancelled
    DispatchQueue m_queue;                        // last: its blocks end first
};
