#include "MovedFilesRun.h"

#include "PhotoLibrary.h"

#include <QProgressDialog>

#include <algorithm>
#include <utility>

namespace {

/// Few, because taking them is work for the main thread.
constexpr qsizetype kBatch = 50;

}

MovedFilesRun::MovedFilesRun(PhotoLibrary &library, qsizetype total, Ended ended, QObject *parent)
    : QObject(parent)
    , m_library(library)
    , m_total(total)
    , m_ended(std::move(ended))
{}

MovedFilesRun::~MovedFilesRun()
{
    m_stop.request_stop();
}

void MovedFilesRun::start(PhotoLibrary &library, DispatchQueue &queue, const QList<FileCommands::MovedFile> &files,
                          const QString &title, QWidget &window, QObject *parent, const Ended &ended)
{
    if (files.isEmpty())
        return;
    auto *run = new MovedFilesRun(library, files.size(), ended, parent);
    run->showProgress(title, window);
    queue.async([files, prepare = library.fileFinder().preparation(), stop = run->m_stop.get_token(),
                 toHere = run->m_link.toHere()] {
        for (qsizetype at = 0; at < files.size() && !stop.stop_requested(); at += kBatch) {
            const auto ready = FileCommands::preparedFiles(files.mid(at, kBatch), prepare);
            toHere([ready, looked = std::min(at + kBatch, files.size())](MovedFilesRun &here) {
                here.take(ready, looked);
            });
        }
    });
}

void MovedFilesRun::showProgress(const QString &title, QWidget &window)
{
    m_progress = makeProgressDialog(title, tr("Looking at the files…"), window);
    m_progress->setWindowModality(Qt::WindowModal);
    connect(m_progress.get(), &QProgressDialog::canceled, this, [this] { end(/*isCancelled=*/true); });
}

void MovedFilesRun::take(const QList<FileCommands::MovedFile> &ready, qsizetype looked)
{
    if (!m_ended)
        return;
    m_taken += FileCommands::takeMovedFiles(m_library, ready);
    m_progress->setLabelText(tr("%L1 of %L2 files looked at, %L3 found").arg(looked).arg(m_total).arg(m_taken));
    if (looked == m_total)
        end(/*isCancelled=*/false);
}

void MovedFilesRun::end(bool isCancelled)
{
    m_stop.request_stop();
    m_progress.reset();
    deleteLater(); // the dialog may be what called
    if (const Ended ended = std::exchange(m_ended, {}))
        ended({m_taken, m_total - m_taken, isCancelled});
}
