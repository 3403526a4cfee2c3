#include "EmbeddedThumbnails.h"

#include "Decoder.h"
#include "OpenFile.h"

#include <QFileInfo>

#include <algorithm>
#include <optional>

namespace {

constexpr int kThreads = 2;
constexpr qint64 kBudgetBytes = qint64(32) << 20;

QImage readFromFile(const QString &path)
{
    const auto file = openRegularFile(path);
    if (!file)
        return {};
    return Decoder::embeddedThumbnail(file->descriptor.number(), QFileInfo(path).fileName()).value_or(QImage());
}

}

/// What the reading threads and the main thread share; outlives the object while a block runs.
struct EmbeddedThumbnails::Shared
{
    std::function<void(const QString &)> ready; // main thread
    Reader reader;
    PixelPool pool{kBudgetBytes};
    std::atomic<bool> closed = false;

    std::mutex mutex;         // guards what follows
    std::vector<File> wanted; // most wanted last
    QSet<QString> busy;
    QSet<QString> without;
    int readers = 0; // blocks that will look at `wanted` again before they end

    [[nodiscard]] std::optional<File> takeNext();
    void finish(const QString &guid, bool found);
};

/// Nothing when the reader is to end.
std::optional<EmbeddedThumbnails::File> EmbeddedThumbnails::Shared::takeNext()
{
    const std::lock_guard lock(mutex);
    if (closed || wanted.empty()) {
        --readers;
        return std::nullopt;
    }
    File file = std::move(wanted.back());
    wanted.pop_back();
    busy.insert(file.guid);
    return file;
}

void EmbeddedThumbnails::Shared::finish(const QString &guid, bool found)
{
    const std::lock_guard lock(mutex);
    busy.remove(guid);
    if (!found)
        without.insert(guid);
}

EmbeddedThumbnails::EmbeddedThumbnails(std::function<void(const QString &guid)> ready, Reader reader)
    : m_shared(std::make_shared<Shared>())
    , m_queue(QStringLiteral("hmphoto.embedded"), kThreads, DispatchQueue::AtEnd::LeaveBehind) // a disk may not answer
{
    m_shared->ready = std::move(ready);
    m_shared->reader = reader ? std::move(reader) : Reader(readFromFile);
}

EmbeddedThumbnails::~EmbeddedThumbnails()
{
    m_shared->closed = true;
}

QImage EmbeddedThumbnails::find(const QString &guid)
{
    return m_shared->pool.find(guid);
}

void EmbeddedThumbnails::want(std::vector<File> files)
{
    std::reverse(files.begin(), files.end());
    const std::lock_guard lock(m_shared->mutex);
    std::erase_if(files, [this](const File &file) {
        return m_shared->without.contains(file.guid) || m_shared->busy.contains(file.guid) ||
               !m_shared->pool.find(file.guid).isNull();
    });
    m_shared->wanted = std::move(files);
    const int useful = std::min(kThreads, int(m_shared->wanted.size()));
    for (; m_shared->readers < useful; ++m_shared->readers)
        m_queue.async([shared = m_shared] { readAll(shared); });
}

void EmbeddedThumbnails::forget(const QString &guid)
{
    m_shared->pool.remove(guid);
    const std::lock_guard lock(m_shared->mutex);
    m_shared->without.remove(guid);
}

void EmbeddedThumbnails::readAll(const std::shared_ptr<Shared> &shared)
{
    while (const auto file = shared->takeNext()) {
        const QImage picture = shared->reader(file->path);
        if (!picture.isNull())
            shared->pool.insert(file->guid, picture);
        shared->finish(file->guid, !picture.isNull());
        if (picture.isNull())
            continue;
        runOnMain([shared, guid = file->guid] {
            if (!shared->closed)
                shared->ready(guid);
        });
    }
}
