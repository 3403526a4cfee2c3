#include "ImageCache.h"

#include <chrono>

namespace {

/// Seconds that never run backwards, so that a corrected clock cannot make entries look younger than the newest.
double steadySeconds()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

}

ImageCache::ImageCache(Clock clock)
    : m_clock(clock ? std::move(clock) : steadySeconds)
{}

Image ImageCache::imageForGuid(const QString &guid) const
{
    const std::lock_guard lock(m_mutex);
    return m_entries.value(guid).image;
}

void ImageCache::storeImage(const Image &image, const QString &forGuid)
{
    const double now = m_clock();
    const std::lock_guard lock(m_mutex);
    if (image.isNull()) {
        m_entries.remove(forGuid);
        return;
    }
    Entry &entry = m_entries[forGuid];
    if (entry.image.isSameAs(image))
        return;
    entry = {image, now};
    while (m_entries.size() > kCapacity) {
        auto oldest = m_entries.end();
        double oldestTime = now;
        for (auto it = m_entries.begin(); it != m_entries.end(); ++it) {
            if (it.key() != forGuid && it->time < oldestTime) {
                oldest = it;
                oldestTime = it->time;
            }
        }
        if (oldest == m_entries.end())
            return;
        m_entries.erase(oldest);
    }
}
