#pragma once

#include "LibraryEditor.h"
#include "MainThreadLink.h"
#include "TakenTogether.h"

#include <QByteArray>
#include <QSemaphore>
#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <stop_token>

class DispatchQueue;
class PIFileRef;

/// A command on the files of many photos, carried out one after the other on a worker, as a disk may not answer, while
/// the library follows. What is done when it is cancelled stays done. Main thread.
class FileRun
{
public:
    struct Outcome
    {
        qsizetype done = 0; ///< files
        bool isCancelled = false;
        QString failure = {}; ///< the text of an alert; empty when nothing failed
    };
    /// One file by its path, with all references to it.
    struct File
    {
        QString path;
        QList<std::shared_ptr<PIFileRef>> references;
    };
    /// Those of the photos, in their order; a file comes as often as it has photos among them.
    [[nodiscard]] static QList<File> filesOf(const PIGroup::PhotoList &photos, const PhotoLibrary &library);
    /// What became of one file.
    struct Done
    {
        qsizetype file = 0; ///< its place among those given
        QString path;       ///< by now
        QByteArray bookmark = {};
    };
    /// On the worker: does the work until that is stopped, tells each file that is done, and returns why it failed. To
    /// tell may take a while, so that the work never runs far ahead of what the library knows.
    using Tell = std::function<void(const Done &)>;
    using Work = std::function<QString(const std::stop_token &stop, const Tell &tell)>;
    using Progress = std::function<void(qsizetype done)>;
    using Ended = std::function<void(const Outcome &)>;

    /// Begins at once on a thread of the queue, which outlives it, as the editor does. The progress is told now and
    /// then, and the end once, also of what was cancelled.
    FileRun(LibraryEditor &editor, DispatchQueue &queue, const QList<File> &files, Work work, Progress progress,
            Ended ended);
    ~FileRun();
    FileRun(const FileRun &) = delete;
    FileRun &operator=(const FileRun &) = delete;

    /// After the file that is being worked on.
    void cancel();

private:
    void take(const QList<Done> &done);
    void endWhenTaken();

    LibraryEditor &m_editor;
    const QList<File> m_files;
    Progress m_progress;
    Ended m_ended;
    qsizetype m_done = 0;
    std::optional<Outcome> m_outcome; ///< once nothing more will be told
    std::stop_source m_stop;
    std::shared_ptr<QSemaphore> m_room; ///< for files that are done and not taken up yet
    TakenTogether<Done> m_results;
    MainThreadLink<FileRun> m_link{*this};
};
