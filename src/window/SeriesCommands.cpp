#include "SeriesCommands.h"

#include "BatchRename.h"
#include "DateSeries.h"
#include "GiveAlert.h"
#include "LibraryActions.h"
#include "LogString.h"
#include "PIDateSeriesDialog.h"
#include "PIRenameDialog.h"
#include "PhotoEdits.h"
#include "TextForPeople.h"

#include <QProgressBar>
#include <QProgressDialog>

#include <algorithm>

SeriesCommands::SeriesCommands(LibraryEditor &editor, UserDefaults &defaults, LibraryActions &actions, QWidget &window)
    : QObject(&window)
    , m_editor(editor)
    , m_defaults(defaults)
    , m_window(window)
    , m_worker(QStringLiteral("hmphoto.series"), 1, DispatchQueue::AtEnd::LeaveBehind)
{
    actions.bind(Command::RenameFiles, [this](bool) { performRenameForWindow(); });
    actions.bind(Command::IncrementDate, [this](bool) { redatePhotos(PhotoEdits(m_editor).selectedPhotos()); });
}

SeriesCommands::~SeriesCommands() = default;

namespace {

void tellOfBusyDisk()
{
    GiveAlert(SeriesCommands::tr("Files are still being changed."),
              SeriesCommands::tr("Please wait until that has ended. A disk may take long to answer."));
}

}

void SeriesCommands::performRenameForWindow()
{
    if (isBusy()) {
        tellOfBusyDisk();
        return;
    }
    auto *dialog = PIRenameDialog::initWithController(m_editor, m_defaults, m_window);
    if (!dialog) {
        Beep();
        return;
    }
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QDialog::accepted, this, [this, dialog] {
        const auto &steps = dialog->plan().steps();
        const auto total =
            std::count_if(steps.cbegin(), steps.cend(), [](const auto &step) { return !step.newPath.isEmpty(); });
        run({tr("Rename Files"), tr("Rename failed."), tr("One file renamed"), tr("%n files renamed")}, total,
            [&](const FileRun::Progress &progress, const FileRun::Ended &ended) {
                return BatchRename::start(m_editor, m_worker, dialog->plan(), dialog->photos(), progress, ended);
            });
    });
    dialog->open();
}

void SeriesCommands::redatePhotos(const PIGroup::PhotoList &photos)
{
    if (isBusy()) {
        tellOfBusyDisk();
        return;
    }
    if (photos.size() < 2) {
        Beep();
        return;
    }
    auto *dialog = new PIDateSeriesDialog(photos, m_defaults, &m_window);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QDialog::accepted, this, [this, dialog] {
        run({tr("Date Series"), tr("The dates could not be changed."), tr("The date of one file changed"),
             tr("The dates of %n files changed")},
            DateSeries::datedFiles(DateSeries::pathsOf(dialog->photos())).size(),
            [&](const FileRun::Progress &progress, const FileRun::Ended &ended) {
                return dialog->series().start(m_editor, m_worker, dialog->photos(), progress, ended);
            });
    });
    dialog->open();
}

void SeriesCommands::run(const Words &words, qsizetype total, const Start &start)
{
    m_isClosing = false;
    m_progress = makeProgressDialog(words.title, words.title + u'…', m_window);
    m_progress->setWindowModality(Qt::WindowModal);
    m_progress->setMaximum(static_cast<int>(total));
    m_run = start(
        [this, words, total](qsizetype done) {
            showProgress(tr("%1, of %2").arg(CountText(done, words.one, words.many)).arg(total), done);
        },
        [this, words](const FileRun::Outcome &outcome) { ended(words, outcome); });
    connect(m_progress.get(), &QProgressDialog::canceled, this, [this] {
        m_progress.reset(); // at once: a disk may never answer
        m_run->cancel();
    });
}

/// By the bar itself: the dialog would turn to other events, which may end the run, while the run tells of itself.
void SeriesCommands::showProgress(const QString &text, qsizetype done)
{
    if (!m_progress)
        return;
    m_progress->setLabelText(text);
    if (auto *bar = m_progress->findChild<QProgressBar *>())
        bar->setValue(static_cast<int>(done));
}

void SeriesCommands::cancel()
{
    m_isClosing = true;
    if (m_run)
        m_run->cancel();
}

void SeriesCommands::ended(const Words &words, const FileRun::Outcome &outcome)
{
    m_progress.reset();
    m_run.reset();
    if (m_isClosing && !outcome.failure.isEmpty())
        LogString("%@ %@", words.failure, outcome.failure);
    else if (!outcome.failure.isEmpty())
        GiveAlert(words.failure, outcome.failure);
    else if (outcome.isCancelled && !m_isClosing)
        GiveAlert(words.title, tr("Stopped. %1.").arg(CountText(outcome.done, words.one, words.many)));
}
