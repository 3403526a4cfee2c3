#include "Housekeeping.h"

#include "FormatMessage.h"
#include "GiveAlert.h"
#include "ImportRunner.h"
#include "InBackground.h"
#include "LibraryEditor.h"
#include "MovedFilesRun.h"
#include "PIFolder.h"
#include "PIOrphanDialog.h"
#include "PhotoLibrary.h"
#include "TextForPeople.h"
#include "ThumbnailFolder.h"

#include <QLocale>
#include <QProgressDialog>

#include <atomic>
#include <utility>

namespace {

constexpr int kProgressMilliseconds = 100;
constexpr int kJobsAtOnce = 4; // a disk may not answer

}

/// Shared with the worker.
struct Housekeeping::Search
{
    std::stop_source stop;
    std::atomic<qsizetype> filesSeen = 0;
};

Housekeeping::Housekeeping(LibraryEditor &editor, ImportRunner &importRunner, QWidget &window)
    : QObject(&window)
    , m_editor(editor)
    , m_importRunner(importRunner)
    , m_window(window)
    , m_worker(QStringLiteral("hmphoto.housekeeping"), kJobsAtOnce, DispatchQueue::AtEnd::LeaveBehind)
{
    m_progressTimer.setInterval(kProgressMilliseconds);
    connect(&m_progressTimer, &QTimer::timeout, this, &Housekeeping::showProgress);
}

Housekeeping::~Housekeeping()
{
    stopSearch();
}

void Housekeeping::findOrphansCore(const QString &folder)
{
    if (folder.isEmpty())
        return;
    stopSearch();
    m_search = std::make_shared<Search>();
    m_progress = makeProgressDialog(tr("Find Orphan Files"), tr("Looking for photo files…"), m_window);
    m_progress->setWindowModality(Qt::WindowModal);
    connect(m_progress.get(), &QProgressDialog::canceled, this, &Housekeeping::stopSearch);
    m_progressTimer.start();

    inBackground(
        m_worker, this,
        [request = orphanRequest(m_editor.library(), folder), search = m_search] {
            return findOrphans(request, search->stop.get_token(),
                               [search](qsizetype filesSeen) { search->filesSeen = filesSeen; });
        },
        [this, folder, search = m_search](const OrphanSearchResult &result) {
            if (search == m_search)
                searchEnded(folder, result);
        });
}

/// It is not waited for: a disk that does not answer must not keep the user from searching elsewhere.
void Housekeeping::stopSearch()
{
    m_progressTimer.stop();
    m_progress.reset();
    if (m_search)
        std::exchange(m_search, {})->stop.request_stop();
}

void Housekeeping::showProgress()
{
    if (m_progress && m_search->filesSeen > 0)
        m_progress->setLabelText(tr("%1 files looked at").arg(QLocale().toString(m_search->filesSeen.load())));
}

void Housekeeping::tellSkipped(const OrphanSearchResult &result)
{
    QStringList lines;
    if (result.undecodableNames > 0)
        lines << CountText(result.undecodableNames, tr("%n name is not valid UTF-8. Rename this file first."),
                           tr("%n names are not valid UTF-8. Rename these files first."));
    if (result.unreadableFolders > 0)
        lines << CountText(result.unreadableFolders, tr("%n folder could not be read. The system log names it."),
                           tr("%n folders could not be read. The system log names them."));
    if (!lines.isEmpty())
        GiveAlert(tr("Some files were skipped."), lines.join(u'\n'));
}

void Housekeeping::searchEnded(const QString &folder, const OrphanSearchResult &result)
{
    stopSearch();
    if (result.cancelled)
        return;
    tellSkipped(result);
    if (result.orphans.count() == 0) {
        GiveAlert(tr("No orphan files found."),
                  FormatMessage(tr("No unused photo files were found in \"%@\"."), {folder}));
        return;
    }
    PIOrphanDialog::pickOrphans(std::make_shared<OrphanList>(m_editor.library(), folder, result),
                                m_editor.library().thumbnails().pixelPool(), m_window,
                                [this](const auto &orphans, bool success) { orphansPicked(*orphans, success); });
}

void Housekeeping::orphansPicked(const OrphanList &orphans, bool success)
{
    if (!success)
        return;
    reattach(orphans.filesToReattach());
    const QStringList paths = orphans.filesToAdd();
    if (paths.isEmpty())
        return;
    m_importRunner.run({.paths = paths,
                        .toFolder = nullptr,
                        .undoName = UndoName::AlreadyRecorded,
                        .makeFolder = [this] { return m_editor.makeSpecialGroupFolder(GroupType::Search); }},
                       [count = paths.size()](const PhotoImport::Outcome &outcome) {
                           if (outcome.accepted && !outcome.scan.cancelled)
                               tellGone(count - outcome.photosAdded);
                       });
}

void Housekeeping::tellGone(qsizetype count)
{
    if (count > 0)
        GiveAlert(tr("Some files are gone."), CountText(count, tr("%n file is no longer where it was found."),
                                                        tr("%n files are no longer where they were found.")));
}

void Housekeeping::reattach(const QList<FileCommands::MovedFile> &files)
{
    MovedFilesRun::start(m_editor.library(), m_worker, files, tr("Re-attach Files"), m_window, this,
                         [](const MovedFilesRun::Outcome &outcome) {
                             if (!outcome.isCancelled)
                                 tellGone(outcome.notFound);
                         });
}

void Housekeeping::clearCaches()
{
    inBackground(
        m_worker, this,
        [folder = m_editor.library().thumbnails().cacheFolder()] { return clearThumbnailFolder(folder); },
        [](const ClearedThumbnails &cleared) {
            const ClearedThumbnailsReport report = reportOf(cleared);
            GiveAlert(report.title, report.message);
        });
}
