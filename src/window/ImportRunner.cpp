#include "ImportRunner.h"

#include "GiveAlert.h"

#include <QProgressDialog>
#include <QWidget>

namespace {

constexpr int kProgressDelayMilliseconds = 500;

}

ImportRunner::ImportRunner(LibraryEditor &editor, QWidget &window)
    : QObject(&window)
    , m_editor(editor)
    , m_window(window)
    , m_workers(QStringLiteral("hmphoto.import"), 1)
{}

ImportRunner::~ImportRunner()
{
    cancelAll();
}

void ImportRunner::run(PhotoImport::Request request, Finished finished)
{
    m_waiting.push_back({std::move(request), std::move(finished)});
    if (!m_import)
        startNext();
}

void ImportRunner::cancelAll()
{
    m_waiting.clear();
    if (m_import)
        m_import->cancel();
}

void ImportRunner::startNext()
{
    Job job = std::move(m_waiting.front());
    m_waiting.pop_front();

    m_progress = std::make_unique<QProgressDialog>(&m_window);
    m_progress->setWindowModality(Qt::WindowModal);
    m_progress->setMinimumDuration(kProgressDelayMilliseconds);
    m_progress->setRange(0, 0);
    m_progress->setWindowTitle(tr("Add Photos"));
    m_progress->setLabelText(tr("Looking for photos…"));
    m_progress->setValue(0);
    connect(m_progress.get(), &QProgressDialog::canceled, this, &ImportRunner::cancelAll);

    m_import = std::make_unique<PhotoImport>(m_editor, m_workers, std::move(job.request));
    Q_EMIT runningChanged(true);
    m_import->start(
        [this](int photosAdded) {
            m_progress->setLabelText(tr("%n photos added", nullptr, photosAdded));
            m_progress->setValue(0);
        },
        [this, finished = std::move(job.finished)](const PhotoImport::Outcome &outcome) {
            importFinished(outcome, finished);
        });
}

void ImportRunner::importFinished(const PhotoImport::Outcome &outcome, const Finished &finished)
{
    const Finished callBack = finished; // the import owns the one given, and ends here
    m_import.reset();
    m_progress.reset();
    if (m_waiting.empty())
        Q_EMIT runningChanged(false);
    if (callBack)
        callBack(outcome);
    reportSkipped(outcome.scan);
    if (!m_waiting.empty() && !m_import)
        startNext();
}

void ImportRunner::reportSkipped(const ScanSummary &scan)
{
    QStringList lines;
    if (scan.skippedNames > 0)
        lines << tr(
            "%n names are not valid UTF-8 and could not be added. Rename these files, then add the folder again.",
            nullptr, static_cast<int>(scan.skippedNames));
    if (scan.unreadableFolders > 0)
        lines << tr("%n folders could not be read. The system log names them.", nullptr,
                    static_cast<int>(scan.unreadableFolders));
    if (!lines.isEmpty())
        GiveAlert(tr("Some files were skipped."), lines.join(u'\n'));
}
