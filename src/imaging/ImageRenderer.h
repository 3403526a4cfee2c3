#pragma once

#include "DispatchQueue.h"
#include "PixelPool.h"
#include "PixelRequest.h"

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

    /// What the pool holds of them, whoever made them; null when it has nothing.
    [[nodiscard]] QImage find(const PixelRequest &request) { return m_pool.find(request.key()); }
    /// Calls `done` in a later turn of the event loop, unless another request or `cancel` comes first.
    void render(const PixelRequest &request, Done done);
    /// Does other work that showing the picture takes, on the same terms: `work` runs on a thread of the queue, what it
    /// returns on the main thread.
    void run(Work work);
    void cancel();

private:
    PixelPool &m_pool;
    std::shared_ptr<std::atomic<bool>> m_current; // whether what is under way is cancelled
    DispatchQueue m_queue;                        // last: its blocks end first
};
