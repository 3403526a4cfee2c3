#include "ImportRunner.h"

#include "GiveAlert.h"
#include "TextForPeople.h"
#include "UserDefaults.h"
#include "WindowPreferences.h"

#include <QProgressDialog>
#include <QWidget>

ImportRunner::ImportRunner(LibraryEditor &editor, const UserDefaults &defaults, QWidget &window)
    : QObject(&window)
    , m_editor(editor)
    , m_defaults(defaults)
    , m_window(window)
    , m_workers(QStringLiteral("hmphoto.import"), 1)
{}

ImportRunner::~ImportRunner() = default;

void ImportRunner::run(PhotoImport::Request request, Finished finished)
{
    m_waiting.push_back({std::move(request), std::move(finished)});
    if (!m_import)
        startNext();
}

void ImportRunner::cancelAll()
{
    for (Job &job : std::exchange(m_waiting, {}))
        m_dropped.push_back(std::move(job));
    if (m_import)
        m_import->cancel();
}

void ImportRunner::startNext()
{
    Job job = std::move(m_waiting.front());
    m_waiting.pop_front();

    m_progress = makeProgressDialog(tr("Add Photos"), tr("Looking for photos…"), m_window);
    m_progress->setWindowModality(Qt::WindowModal);
    connect(m_progress.get(), &QProgressDialog::canceled, this, &ImportRunner::cancelAll);

    if (m_defaults.value(WindowPreferences::kReadMetadata))
        job.request.readWords = &PictureWords::ofFile;
    m_import = std::make_unique<PhotoImport>(m_editor, m_workers, std::move(job.request));
    Q_EMIT runningChanged(true);
    m_import->start(
        [this](int photosAdded) {
            m_progress->setLabelText(CountText(photosAdded, tr("%n photo found"), tr("%n photos found")));
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
    tellDropped();
    reportSkipped(outcome.scan);
    if (!m_waiting.empty() && !m_import)
        startNext();
}

void ImportRunner::tellDropped()
{
    PhotoImport::Outcome nothing;
    nothing.scan.cancelled = true;
    for (const Job &job : std::exchange(m_dropped, {})) {
        if (job.finished)
            job.finished(nothing);
    }
}

void ImportRunner::reportSkipped(const ScanSummary &scan)
{
    QStringList lines;
    if (scan.skippedNames > 0)
        lines << CountText(
            scan.skippedNames,
            tr("%n name is not valid UTF-8 and could not be added. Rename this file, then add the folder again."),
            tr("%n names are not valid UTF-8 and could not be added. Rename these files, then add the folder again."));
    if (scan.unreadableFolders > 0)
        lines << CountText(scan.unreadableFolders, tr("%n folder could not be read. The system log names it."),
                           tr("%n folders could not be read. The system log names them."));
    if (!lines.isEmpty())
        GiveAlert(tr("Some files were skipped."), lines.join(u'\n'));
}
