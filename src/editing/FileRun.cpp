#include "FileRun.h"

#include "DispatchQueue.h"
#include "FileFinder.h"
#include "LibraryNotifications.h"
#include "LibraryView.h"
#include "PhotoLibrary.h"

#include <utility>

QList<FileRun::File> FileRun::filesOf(const PIGroup::PhotoList &photos, const PhotoLibrary &library)
{
    QHash<QString, QList<std::shared_ptr<PIFileRef>>> references;
    for (const auto &photo : photos) {
        if (const auto &file = photo->fileRef();
            file && !file->isFileLost() && !references[file->path()].contains(file))
            references[file->path()].append(file);
    }
    // The library may have more than one for a path. A lost one means another file, which stood there once.
    const auto used = library.usedFileRefs(
        [&](const PIFileRef &file) { return !file.isFileLost() && references.contains(file.path()); });
    for (const auto &file : used) {
        if (auto &known = references[file->path()]; !known.contains(file))
            known.append(file);
    }
    QList<File> files;
    for (const auto &photo : photos) {
        const QString path = photo->fileRef() ? photo->fileRef()->path() : QString();
        files.append({path, references.value(path)});
    }
    return files;
}

namespace {

constexpr int kMostUntaken = 400;

void waitForRoom(QSemaphore &room, const std::stop_token &stop)
{
    constexpr int kMilliseconds = 50;
    while (!stop.stop_requested() && !room.tryAcquire(1, kMilliseconds)) {
    }
}

}

FileRun::FileRun(LibraryEditor &editor, DispatchQueue &queue, const QList<File> &files, Work work, Progress progress,
                 Ended ended)
    : m_editor(editor)
    , m_files(files)
    , m_progress(std::move(progress))
    , m_ended(std::move(ended))
    , m_room(std::make_shared<QSemaphore>(kMostUntaken))
    , m_results([this](const QList<Done> &done) { take(done); })
{
    queue.async([work = std::move(work), stop = m_stop.get_token(), toHere = m_link.toHere(), room = m_room] {
        const QString failure = work(stop, [&](const Done &done) {
            waitForRoom(*room, stop);
            toHere([done](FileRun &here) { here.m_results.add(done); });
        });
        toHere([failure, isCancelled = stop.stop_requested()](FileRun &here) {
            here.m_outcome = Outcome{0, isCancelled, failure};
            here.endWhenTaken();
        });
    });
}

FileRun::~FileRun()
{
    m_stop.request_stop();
}

void FileRun::cancel()
{
    m_stop.request_stop();
}

/// A reference that was given another place since the run began, as by who followed the file, is left there.
void FileRun::take(const QList<Done> &done)
{
    PhotoLibrary &library = m_editor.library();
    QSet<const PIFileRef *> files;
    for (const Done &each : done) {
        const File &file = m_files.at(each.file);
        for (const auto &reference : file.references) {
            if (reference->path() != file.path && reference->path() != each.path)
                continue;
            library.fileFinder().usePrepared(each.path, each.bookmark);
            reference->setPath(each.path);
            files.insert(reference.get());
        }
        if (each.path != file.path)
            library.setDirtyForGood();
    }
    m_done += done.size();
    m_room->release(static_cast<int>(done.size()));
    library.filesChangedPlace(files);
    if (const auto current = m_editor.view().currentPhoto(); current && files.contains(current->fileRef().get()))
        library.notifications().post(kSelectNotification, current);
    m_progress(m_done);
    endWhenTaken();
}

void FileRun::endWhenTaken()
{
    if (!m_outcome || !m_results.isEmpty())
        return;
    m_outcome->done = m_done;
    // From the event loop, as it may delete this, which is in the middle of taking.
    m_link.toHere()([outcome = *std::exchange(m_outcome, {}), ended = m_ended](FileRun &) { ended(outcome); });
}
