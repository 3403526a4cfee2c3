#pragma once

#include "DispatchQueue.h"
#include "PixelPool.h"

#include <QImage>
#include <QSet>
#include <QString>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

/// Small pictures that come cheap, read in the background for what is on show: those that camera files carry, while
/// their thumbnails are being made, or what another reader gives. Main thread, except for the reading.
class EmbeddedThumbnails
{
public:
    struct File
    {
        QString guid; ///< of the file reference, or what else tells files apart
        QString path;
    };
    using Reader = std::function<QImage(const QString &path)>; ///< any thread; null when there is none

    /// `ready` is called on the main thread with the guid of each file whose picture has come.
    explicit EmbeddedThumbnails(std::function<void(const QString &guid)> ready, Reader reader = {});
    ~EmbeddedThumbnails();
    EmbeddedThumbnails(const EmbeddedThumbnails &) = delete;
    EmbeddedThumbnails &operator=(const EmbeddedThumbnails &) = delete;

    /// Null while it is unknown, and when the file has none.
    [[nodiscard]] QImage find(const QString &guid);
    /// These files are wanted now, the most wanted first. Files wanted before and not read yet are dropped; those known
    /// or known to carry no picture are not read again.
    void want(std::vector<File> files);
    /// The file's content changed.
    void forget(const QString &guid);

private:
    struct Shared;
    static void readAll(const std::shared_ptr<Shared> &shared);

    std::shared_ptr<Shared> m_shared;
    DispatchQueue m_queue; // last: its blocks end first
};
