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

#include <QProgressDialog>

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

void SeriesCommands::performRenameForWindow()
{
    PIRenameDialog *dialog = isBusy() ? nullptr : PIRenameDialog::initWithController(m_editor, m_defaults, m_window);
    if (!dialog) {
        Beep();
        return;
    }
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QDialog::accepted, this, [this, dialog] {
        run(tr("Rename Files"), {tr("One file renamed"), tr("%n files renamed")}, tr("Rename failed."),
            [&](const FileRun::Progress &progress, const FileRun::Ended &ended) {
                return BatchRename::start(m_editor, m_worker, dialog->plan(), dialog->photos(), progress, ended);
            });
    });
    dialog->open();
}

void SeriesCommands::redatePhotos(const PIGroup::PhotoList &photos)
{
    if (isBusy() || photos.size() < 2) {
        Beep();
        return;
    }
    auto *dialog = new PIDateSeriesDialog(photos, m_defaults, &m_window);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QDialog::accepted, this, [this, dialog] {
        run(tr("Date Series"), {tr("The date of one file changed"), tr("The dates of %n files changed")},
            tr("The dates could not be changed."), [&](const FileRun::Progress &progress, const FileRun::Ended &ended) {
                return dialog->series().start(m_editor, m_worker, dialog->photos(), progress, ended);
            });
    });
    dialog->open();
}

void SeriesCommands::run(
    const QString &title, const Texts &texts, const QString &alert,
    const std::function<std::unique_ptr<FileRun>(const FileRun::Progress &, const FileRun::Ended &)> &start)
{
    m_isClosing = false;
    m_progress = makeProgressDialog(title, title + u'…', m_window);
    m_progress->setWindowModality(Qt::WindowModal);
    m_run = start(
        [this, texts](qsizetype done) {
            if (m_progress)
                m_progress->setLabelText(CountText(done, texts.first, texts.second));
        },
        [this, alert](const FileRun::Outcome &outcome) { ended(alert, outcome); });
    connect(m_progress.get(), &QProgressDialog::canceled, this, [this] {
        m_progress.reset(); // at once: a disk may never answer
        m_run->cancel();
    });
}

void SeriesCommands::cancel()
{
    m_isClosing = true;
    if (m_run)
        m_run->cancel();
}

void SeriesCommands::ended(const QString &alert, const FileRun::Outcome &outcome)
{
    m_progress.reset();
    m_run.reset();
    if (m_isClosing && !outcome.failure.isEmpty())
        LogString("%@ %@", alert, outcome.failure);
    else if (!outcome.failure.isEmpty())
        GiveAlert(alert, outcome.failure);
}
