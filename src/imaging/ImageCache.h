#pragma once

#include "Image.h"

#include <QHash>
#include <QString>

#include <functional>
#include <mutex>

/// Full-size image handles by guid (of a photo or of a file reference): at most 100, the one stored longest ago goes
/// first, never the one just stored. Any thread.
class ImageCache
{
public:
    static constexpr int kCapacity = 100;
    /// Seconds; a fake in tests.
    using Clock = std::function<double()>;

    explicit ImageCache(Clock clock = {});

    /// Null when there is none. Looking does not make the entry younger.
    [[nodiscard]] Image imageForGuid(const QString &guid) const;
    /// A null image removes the entry; storing the very same image again leaves its time alone.
    void storeImage(const Image &image, const QString &forGuid);

private:
    struct Entry
    {
        Image image;
        double time = 0;
    };

    mutable std::mutex m_mutex;
    QHash<QString, Entry> m_entries;
    Clock m_clock;
};
