#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QtGlobal>

#include <atomic>

/// The bytes of a picture: a stretch of a file, read by position so that the descriptor's own position does not
/// matter, or memory that outlives this object. Cheap to copy. Reads nothing more once it is cancelled.
class ByteSource
{
public:
    ByteSource(int descriptor, qint64 size)
        : m_descriptor(descriptor)
        , m_size(size)
    {}
    explicit ByteSource(QByteArrayView memory)
        : m_memory(memory.data())
        , m_size(memory.size())
    {}

    [[nodiscard]] qint64 size() const { return m_size; }
    /// The stretch from `offset`, cut to what there is.
    [[nodiscard]] ByteSource part(qint64 offset, qint64 length) const;

    void setCancelled(const std::atomic<bool> *cancelled) { m_cancelled = cancelled; }
    [[nodiscard]] const std::atomic<bool> *cancelled() const { return m_cancelled; }
    [[nodiscard]] bool isCancelled() const { return m_cancelled && m_cancelled->load(std::memory_order_relaxed); }

    /// Reads up to `count` bytes from `position` and tells how many; 0 at the end, after an error, or when cancelled.
    qint64 read(qint64 position, void *to, qint64 count) const;
    [[nodiscard]] QByteArray bytes(qint64 position, qint64 count) const;

private:
    int m_descriptor = -1;
    const char *m_memory = nullptr;
    qint64 m_start = 0;
    qint64 m_size = 0;
    const std::atomic<bool> *m_cancelled = nullptr;
};
