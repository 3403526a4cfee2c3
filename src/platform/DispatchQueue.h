#pragma once

#include <QString>

#include <functional>
#include <memory>

/// A labelled queue that runs blocks concurrently on threads of its own, in the order in which they were submitted.
/// A barrier block waits for everything submitted before it and holds back everything submitted after it.
/// All functions may be called from any thread.
class DispatchQueue
{
public:
    using Block = std::function<void()>;
    /// What becomes of blocks that run when the queue ends.
    enum class AtEnd {
        Wait,
        /// They are waited for only a moment. For blocks that may be deep in a library that cannot be interrupted,
        /// and that touch nothing which goes away.
        LeaveBehind
    };

    /// `maxThreads` 0 means one thread per processor.
    explicit DispatchQueue(const QString &label, int maxThreads = 0, AtEnd atEnd = AtEnd::Wait);
    /// Drops the blocks that have not started.
    ~DispatchQueue();
    /// Whether blocks that were left behind still run: then the program must end without destroying what they use.
    [[nodiscard]] static bool isAnyLeftBehind();
    DispatchQueue(const DispatchQueue &) = delete;
    DispatchQueue &operator=(const DispatchQueue &) = delete;

    [[nodiscard]] QString label() const;
    void async(Block block);
    void barrierAsync(Block block);
    /// Returns when every block submitted so far has run. Never call it from a block of this queue.
    void waitUntilIdle();
    /// Blocks submitted and not yet finished, barriers included.
    [[nodiscard]] int pendingCount() const;

private:
    struct State;
    struct LeftBehind;
    std::shared_ptr<State> m_state;
    AtEnd m_atEnd;
};

/// Runs `block` on the main thread in a later turn of its event loop; blocks keep the order in which one thread
/// handed them over. Dropped silently once the application object is gone.
void runOnMain(std::function<void()> block);
