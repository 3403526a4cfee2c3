#pragma once

#include <QtGlobal>

#include <atomic>

/// A share of the memory that decoders take which must hold a whole picture, whatever size is wanted of it. All shares
/// together are bounded: who comes when they are given out waits in line. Any thread; small shares never wait, so that
/// cached thumbnails can be read on the main thread.
class MemoryShare
{
public:
    /// What all shares together may take, and so what the largest picture of such a kind may.
    [[nodiscard]] static qint64 mostBytes();
    static constexpr qint64 kSmallBytes = qint64(1) << 20;

    /// Waits until the share is there or `cancelled` becomes true.
    explicit MemoryShare(qint64 bytes, const std::atomic<bool> *cancelled = nullptr);
    ~MemoryShare();
    MemoryShare(const MemoryShare &) = delete;
    MemoryShare &operator=(const MemoryShare &) = delete;

    /// False when it was cancelled, or is more than there can ever be.
    [[nodiscard]] bool isGranted() const { return m_isGranted; }

private:
    qint64 m_counted = 0;
    bool m_isGranted = false;
};
