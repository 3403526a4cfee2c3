#pragma once

#include "DispatchQueue.h"
#include "MakeProgressDialog.h"
#include "PIGroup.h"
#include "PhotoExport.h"

#include <QObject>

#include <memory>

class ExportDialog;
class LibraryActions;
class LibraryEditor;
class QWidget;
class UserDefaults;

/// The commands that write photos, as they are shown, to new image files: one, several into a folder, or by e-mail.
class ExportCommands final : public QObject
{
    Q_OBJECT

public:
    /// Lets the actions run the commands. All outlive it; `window` becomes its parent.
    ExportCommands(LibraryEditor &editor, UserDefaults &defaults, LibraryActions &actions, QWidget &window);
    ~ExportCommands() override;

    void saveImageAs();
    void exportPhotos();
    void emailPhotos();
    [[nodiscard]] bool isExporting() const { return m_export != nullptr; }
    /// Ends an export soon, as nobody will be there to be told what failed; photos that are complete stay.
    void cancel();

private:
    [[nodiscard]] QList<ExportedPhoto> selectedCopies() const;
    [[nodiscard]] QString lastFolder() const;
    [[nodiscard]] bool ask(ExportDialog &dialog) const;
    void start(const ExportOrder &order);
    void exportFinished(const ExportOutcome &outcome);
    void tellReservations(const QList<ExportFailure> &reservations);
    void send(const QStringList &attachments, const QString &folder);

    LibraryEditor &m_editor;
    UserDefaults &m_defaults;
    QWidget &m_window;
    std::unique_ptr<PhotoExport> m_export;
    ProgressDialogPointer m_progress;
    bool m_isClosing = false;
    DispatchQueue m_files; ///< for the size of a photo and for old copies. Last: its blocks end first
};
