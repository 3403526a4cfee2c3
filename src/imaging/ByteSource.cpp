#include "ByteSource.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <unistd.h>

ByteSource ByteSource::part(qint64 offset, qint64 length) const
{
    ByteSource result = *this;
    offset = std::clamp(offset, qint64(0), m_size);
    result.m_start = m_start + offset;
    result.m_size = std::clamp(length, qint64(0), m_size - offset);
    return result;
}

qint64 ByteSource::read(qint64 position, void *to, qint64 count) const
{
    if (position < 0 || position >= m_size || count <= 0 || isCancelled())
        return 0;
    count = std::min(count, m_size - position);
    if (m_memory) {
        std::memcpy(to, m_memory + m_start + position, size_t(count));
        return count;
    }
    qint64 done = 0;
    while (done < count) {
        const ssize_t got =
            ::pread(m_descriptor, static_cast<char *>(to) + done, size_t(count - done), m_start + position + done);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            break;
        done += got;
    }
    return done;
}

QByteArray ByteSource::bytes(qint64 position, qint64 count) const
{
    QByteArray result(std::clamp(count, qint64(0), std::max(qint64(0), m_size - position)), Qt::Uninitialized);
    result.truncate(read(position, result.data(), result.size()));
    return result;
}
