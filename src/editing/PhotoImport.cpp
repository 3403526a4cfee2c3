#include "PhotoImport.h"

#include "DispatchQueue.h"
#include "LibraryView.h"
#include "PIFolder.h"
#include "PIPhoto.h"
#include "PhotoLibrary.h"
#include "StringUtilities.h"

#include <QElapsedTimer>

#include <condition_variable>
#include <mutex>

namespace {

/// How long one turn of the event loop may be busy with taking photos in.
constexpr qint64 kSliceMilliseconds = 8;
/// The walk waits when it is this far ahead, so that a huge tree costs no memory.
constexpr size_t kMaxPending = 20000;

}

struct PhotoImport::Channel
{
    std::mutex mutex;
    std::condition_variable room;
    std::deque<ScanStep> steps;
    bool wakeUpSent = false;
    bool walkDone = false;
    ScanSummary summary;
    std::atomic<bool> cancelled = false;
    PhotoImport *import = nullptr; ///< main thread only; null once the import is gone

    /// Asks the main thread to take what is here, unless it has been asked already.
    static void wakeUp(const std::shared_ptr<Channel> &channel)
    {
        runOnMain([channel] {
            if (channel->import)
                channel->import->takeSlice();
        });
    }

    static void add(const std::shared_ptr<Channel> &channel, ScanStep step)
    {
        std::unique_lock lock(channel->mutex);
        channel->room.wait(lock, [&] { return channel->steps.size() < kMaxPending || channel->cancelled; });
        channel->steps.push_back(std::move(step));
        if (std::exchange(channel->wakeUpSent, true))
            return;
        lock.unlock();
        wakeUp(channel);
    }
};

PhotoImport::PhotoImport(LibraryEditor &editor, DispatchQueue &workers, Request request)
    : m_editor(editor)
    , m_workers(workers)
    , m_request(std::move(request))
    , m_channel(std::make_shared<Channel>())
{
    m_channel->import = this;
}

PhotoImport::~PhotoImport()
{
    m_channel->import = nullptr;
    cancel();
}

void PhotoImport::start(Progress progress, Finished finished)
{
    m_progress = std::move(progress);
    m_finished = std::move(finished);
    m_workers.async([channel = m_channel, paths = m_request.paths] {
        const ScanSummary summary = scanForImages(
            paths, [&](ScanStep step) { Channel::add(channel, std::move(step)); }, channel->cancelled);
        {
            const std::lock_guard lock(channel->mutex);
            channel->summary = summary;
            channel->walkDone = true;
        }
        Channel::wakeUp(channel);
    });
}

void PhotoImport::cancel()
{
    m_channel->cancelled = true;
    const std::lock_guard lock(m_channel->mutex);
    m_channel->room.notify_all();
}

void PhotoImport::takeSlice()
{
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < kSliceMilliseconds) {
        std::optional<ScanStep> step;
        bool done = false;
        {
            const std::lock_guard lock(m_channel->mutex);
            if (m_channel->cancelled)
                m_channel->steps.clear();
            if (!m_channel->steps.empty()) {
                step = std::move(m_channel->steps.front());
                m_channel->steps.pop_front();
            } else {
                m_channel->wakeUpSent = false;
                done = m_channel->walkDone;
            }
            m_channel->room.notify_all();
        }
        if (done)
            return finish();
        if (!step)
            return;
        if (!take(*step)) {
            m_outcome.accepted = false;
            cancel();
        }
    }
    if (m_progress)
        m_progress(m_outcome.photosAdded + static_cast<int>(m_loosePhotos.size()));
    Channel::wakeUp(m_channel);
}

bool PhotoImport::take(const ScanStep &step)
{
    switch (step.kind) {
    case ScanStep::Kind::FolderBegins:
        return beginFolder(step.path);
    case ScanStep::Kind::FolderEnds:
        m_openFolders.pop_back();
        return true;
    case ScanStep::Kind::Image:
        break;
    }
    auto photo = std::make_shared<PIPhoto>(m_editor.library().fileRefs().fileRefForPath(step.path));
    if (m_openFolders.empty()) {
        m_loosePhotos.append(std::move(photo));
    } else {
        m_openFolders.back()->photos().append(std::move(photo));
        ++m_outcome.photosAdded;
    }
    return true;
}

bool PhotoImport::beginFolder(const QString &path)
{
    std::shared_ptr<PIGroup> parent = m_openFolders.empty() ? chooseParent() : m_openFolders.back();
    bool created = false;
    if (!parent) {
        const auto target = m_editor.selectOrCreateFolder(m_request.undoName);
        if (!target)
            return false;
        parent = target->folder;
        created = target->created;
    }
    if (!created && m_request.undoName != UndoName::AlreadyRecorded &&
        !m_editor.recorder().setUndoAction(UndoAction::FolderList, m_request.undoName,
                                           {.container = parent, .photo = {}}))
        return false;
    m_request.undoName = UndoName::AlreadyRecorded;

    const auto folder = created ? std::static_pointer_cast<PIFolder>(parent) : parent->makeNewFolder();
    folder->setName(QVString::lastPathComponent(path));
    if (!m_outcome.firstFolder)
        m_outcome.firstFolder = folder;
    m_openFolders.push_back(folder);
    return true;
}

std::shared_ptr<PIGroup> PhotoImport::chooseParent()
{
    if (m_request.toFolder)
        return m_request.toFolder;
    if (const auto shown = m_editor.view().shownFolder())
        return shown;
    return m_editor.view().selectedItem();
}

void PhotoImport::finish()
{
    m_channel->import = nullptr;
    m_outcome.scan = m_channel->summary;
    m_outcome.scan.cancelled = m_channel->cancelled; // the walk may have been through already
    if (m_outcome.accepted && !m_loosePhotos.isEmpty()) {
        m_outcome.accepted =
            m_editor.addPhotos(m_loosePhotos, m_request.toFolder, m_request.atIndex, m_request.undoName);
        if (m_outcome.accepted)
            m_outcome.photosAdded += static_cast<int>(m_loosePhotos.size());
    }
    const Finished finished = std::move(m_finished);
    const Outcome outcome = std::move(m_outcome);
    if (finished)
        finished(outcome);
}
