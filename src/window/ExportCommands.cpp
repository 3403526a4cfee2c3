#include "ExportCommands.h"

#include "EmailDialog.h"
#include "ExportDialog.h"
#include "GiveAlert.h"
#include "InBackground.h"
#include "LibraryActions.h"
#include "LibraryEditor.h"
#include "LibraryNotifications.h"
#include "LogString.h"
#include "MailProgram.h"
#include "PISaveFormatViewController.h"
#include "PhotoEdits.h"
#include "PhotoLibrary.h"
#include "SaveImage.h"
#include "TextForPeople.h"
#include "UniqueFileName.h"
#include "UserDefaults.h"
#include "WindowPreferences.h"

#include <QDir>
#include <QProgressDialog>
#include <QStandardPaths>

#include <algorithm>

namespace {

QString listOf(const QList<ExportFailure> &failures)
{
    constexpr qsizetype most = 8;
    QStringList lines;
    for (const ExportFailure &failure : failures.first(std::min(most, failures.size())))
        lines << failure.name + QStringLiteral(": ") + failure.reason;
    if (failures.size() > most)
        lines << ExportCommands::tr("… and %1 more").arg(failures.size() - most);
    return lines.join(QLatin1Char('\n'));
}

/// What failed and why, the first of many. Why nothing at all could be written is told once.
QString failureText(const ExportOutcome &outcome)
{
    const QList<ExportFailure> &failures = outcome.failures;
    const QString &reason = failures.first().reason;
    const auto isAlike = [&](const ExportFailure &failure) { return failure.reason == reason; };
    if (failures.size() > 1 && outcome.written.isEmpty() && std::all_of(failures.begin(), failures.end(), isAlike))
        return reason;
    return listOf(failures);
}

}

ExportCommands::ExportCommands(LibraryEditor &editor, UserDefaults &defaults, LibraryActions &actions, QWidget &window)
    : QObject(&window)
    , m_editor(editor)
    , m_defaults(defaults)
    , m_window(window)
    , m_files(QStringLiteral("hmphoto.exportFiles"), 1, DispatchQueue::AtEnd::LeaveBehind)
{
    actions.bind(Command::SaveImageAs, [this](bool) { saveImageAs(); });
    actions.bind(Command::ExportPhotos, [this](bool) { exportPhotos(); });
    actions.bind(Command::EmailPhotos, [this](bool) { emailPhotos(); });
}

ExportCommands::~ExportCommands() = default;

void ExportCommands::cancel()
{
    m_isClosing = true;
    if (m_export)
        m_export->cancel();
}

QList<ExportedPhoto> ExportCommands::selectedCopies() const
{
    m_editor.library().notifications().post(kNormalizeNotification);
    QList<ExportedPhoto> copies;
    for (const auto &photo : PhotoEdits(m_editor).selectedPhotos()) {
        const PictureRecipe recipe = photo->recipe(m_editor.library().imageCache());
        copies << ExportedPhoto{recipe, PhotoExport::nameFor(recipe.path)};
    }
    return copies;
}

QString ExportCommands::lastFolder() const
{
    const QString last = m_defaults.value(WindowPreferences::kLastExportFolder);
    const bool isThere = !last.isEmpty() && QFileInfo(last).isDir();
    return isThere ? last : QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
}

bool ExportCommands::ask(ExportDialog &dialog) const
{
    dialog.setDirectory(lastFolder());
    if (dialog.exec() != QDialog::Accepted)
        return false;
    m_defaults.setValue(WindowPreferences::kLastExportFolder, dialog.folder());
    return true;
}

void ExportCommands::saveImageAs()
{
    const QList<ExportedPhoto> photos = selectedCopies();
    if (photos.size() != 1 || m_export) {
        Beep();
        return;
    }
    ExportDialog dialog(ExportDialog::Target::File, &m_window);
    dialog.setWindowTitle(tr("Save Image As"));
    inBackground(
        m_files, &dialog, [recipe = photos.first().recipe] { return recipe.open().shown.size(); },
        [&dialog](QSize size) { dialog.panel().setImageSize(size); });
    dialog.suggestName(UniqueFileName(lastFolder(), photos.first().name, extensionForFormat(g_saveFormat)));
    if (ask(dialog))
        start({photos, {}, dialog.path(), ExportSettings::chosen()});
}

void ExportCommands::exportPhotos()
{
    const QList<ExportedPhoto> photos = selectedCopies();
    if (photos.isEmpty() || m_export) {
        Beep();
        return;
    }
    ExportDialog dialog(ExportDialog::Target::Folder, &m_window);
    dialog.setWindowTitle(CountText(photos.size(), tr("Export %n Photo"), tr("Export %n Photos")));
    if (ask(dialog))
        start({photos, dialog.path(), {}, ExportSettings::chosen()});
}

void ExportCommands::start(const ExportOrder &order)
{
    m_isClosing = false;
    m_export = std::make_unique<PhotoExport>();
    m_progress = makeProgressDialog(tr("Export"), tr("Exporting…"), m_window);
    connect(m_progress.get(), &QProgressDialog::canceled, m_export.get(), &PhotoExport::cancel);
    connect(m_export.get(), &PhotoExport::progressed, m_progress.get(), [this](int done, int of) {
        if (m_progress->wasCanceled() || of == 1)
            return;
        m_progress->setMaximum(of);
        m_progress->setLabelText(tr("Exporting photo %1 of %2").arg(qMin(done + 1, of)).arg(of));
        m_progress->setValue(done);
    });
    connect(m_export.get(), &PhotoExport::finished, this, &ExportCommands::exportFinished);
    // Also those that no folder shows at the moment: deleting and cutting can be undone.
    m_export->start(order, [&library = m_editor.library()] { return library.fileRefs().knownPaths(); });
}

void ExportCommands::exportFinished(const ExportOutcome &outcome)
{
    m_progress.reset();                // first: it could still come up, over an alert
    m_export.release()->deleteLater(); // the sender
    const int failures = static_cast<int>(outcome.failures.size());
    if (m_isClosing && failures > 0)
        LogString("Photos could not be exported: %@", failureText(outcome));
    else if (outcome.isRefused)
        GiveAlert(tr("This file belongs to the photo library."),
                  tr("An export never replaces the file of a photo. Please choose another name or another folder."));
    else if (failures > 0)
        GiveAlert(CountText(failures, tr("One photo could not be exported."), tr("%n photos could not be exported.")),
                  failureText(outcome));
    tellReservations(outcome.reservations);
}

void ExportCommands::tellReservations(const QList<ExportFailure> &reservations)
{
    const int count = int(reservations.size());
    if (count > 0 && m_isClosing)
        LogString("Photos were exported, but not as they should be: %@", listOf(reservations));
    else if (count > 0)
        GiveAlert(CountText(count, tr("One photo was exported, but not as it should be."),
                            tr("%n photos were exported, but not as they should be.")),
                  listOf(reservations));
}

void ExportCommands::emailPhotos()
{
    const QList<ExportedPhoto> photos = selectedCopies();
    if (photos.isEmpty()) {
        Beep();
        return;
    }
    EmailDialog dialog(photos, m_defaults, m_files, &m_window);
    if (dialog.exec() != QDialog::Accepted)
        return;
    m_files.async([] { EmailDialog::removeOldCopies(); });
    const QStringList attachments = dialog.attachments();
    send(attachments, dialog.keepCopies());
}

void ExportCommands::send(const QStringList &attachments, const QString &folder)
{
    composeMail(attachments, this, [this, folder](MailOutcome outcome) {
        if (outcome != MailOutcome::Opened)
            m_files.async([folder] { QDir(folder).removeRecursively(); });
        if (outcome == MailOutcome::NoProgram)
            GiveAlert(tr("No mail program was found."),
                      tr("Photos are handed to the mail program by the command \"xdg-email\". It is not installed, or "
                         "no mail program is set up."));
        else if (outcome == MailOutcome::Failed)
            GiveAlert(tr("The photos could not be handed to the mail program."),
                      tr("The mail program reported an error."));
    });
}
