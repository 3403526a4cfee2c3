#include "PrintCommands.h"

#include "GiveAlert.h"
#include "LibraryActions.h"
#include "LibraryEditor.h"
#include "LibraryNotifications.h"
#include "LibraryView.h"
#include "PhotoEdits.h"
#include "PhotoLibrary.h"
#include "PrintSheet.h"
#include "StringUtilities.h"
#include "TextForPeople.h"

#include <QProgressDialog>

#include <utility>

PrintCommands::PrintCommands(LibraryEditor &editor, UserDefaults &defaults, LibraryActions &actions, QWidget &window)
    : QObject(&window)
    , m_editor(editor)
    , m_defaults(defaults)
    , m_window(window)
{
    actions.bind(Command::PrintSelected, [this](bool) { printPhotos(PhotoEdits(m_editor).selectedPhotos()); });
    actions.bind(Command::PrintFolder, [this](bool) {
        if (const auto folder = m_editor.view().shownFolder())
            printPhotos(std::as_const(*folder).photos());
    });
    actions.bind(Command::PageSetup, [this](bool) { PrintSheet::askForPageSetup(m_defaults, m_window); });
}

PrintCommands::~PrintCommands() = default;

QList<PrintedPhoto> PrintCommands::printed(const PIGroup::PhotoList &photos) const
{
    QList<PrintedPhoto> result;
    for (const auto &photo : photos) {
        const QString path = photo->fileRef() ? photo->fileRef()->path() : QString();
        const QString name = QVString::lastPathComponent(path);
        result.append(
            {photo->recipe(m_editor.library().imageCache()), photo->caption().isEmpty() ? name : photo->caption()});
    }
    return result;
}

void PrintCommands::printPhotos(const PIGroup::PhotoList &photos)
{
    if (photos.isEmpty() || m_run) {
        Beep();
        return;
    }
    m_editor.library().notifications().post(kNormalizeNotification);
    const QList<PrintedPhoto> copies = printed(photos);
    PrintSheet sheet(copies, m_defaults, m_editor.library().thumbnails().pixelPool(), &m_window);
    if (sheet.exec() == QDialog::Accepted)
        start(*sheet.job(), copies);
}

void PrintCommands::start(const PrintJob &job, const QList<PrintedPhoto> &photos)
{
    PIPrintView view = PrintSheet::viewFor(photos, job.paper);
    view.setGrey(job.ticket.isGrey);
    m_run = std::make_unique<PrintRun>();
    m_progress = makeProgressDialog(tr("Print"), tr("Printing…"), m_window);
    connect(m_progress.get(), &QProgressDialog::canceled, m_run.get(), &PrintRun::cancel);
    connect(m_run.get(), &PrintRun::pageBegun, m_progress.get(), [this](int number, int ofPages) {
        m_progress->setLabelText(tr("Printing page %1 of %2").arg(number + 1).arg(ofPages));
    });
    connect(m_run.get(), &PrintRun::photosDrawn, m_progress.get(), [this](int number, int ofPhotos) {
        if (m_progress->wasCanceled())
            return; // a value would show the dialog again
        m_progress->setMaximum(ofPhotos);
        m_progress->setValue(number);
        if (number == ofPhotos)
            m_progress->setLabelText(tr("Handing the pages over…"));
    });
    connect(m_run.get(), &PrintRun::finished, this,
            [this](const PrintRun::Outcome &outcome) { printOperationFinished(outcome); });
    m_run->start(job, view);
}

void PrintCommands::cancel()
{
    if (m_run)
        m_run->cancel();
}

void PrintCommands::printOperationFinished(const PrintRun::Outcome &outcome)
{
    m_progress.reset();
    m_run.release()->deleteLater(); // the sender
    if (!outcome.isPrinted && !outcome.isCancelled)
        GiveAlert(tr("Printing failed."), outcome.reason.isEmpty()
                                              ? tr("The printer could not be used, or the file could not be written.")
                                              : outcome.reason);
    else if (outcome.isPrinted && outcome.incompletePages > 0)
        GiveAlert(tr("Some photos are missing from the print."),
                  CountText(outcome.incompletePages, tr("The files of photos on one page could not be read."),
                            tr("The files of photos on %n pages could not be read.")));
}
