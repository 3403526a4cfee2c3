#pragma once

#include "MakeProgressDialog.h"
#include "PIGroup.h"
#include "PrintRun.h"

#include <QObject>

#include <memory>

class LibraryActions;
class LibraryEditor;
class QWidget;
class UserDefaults;

/// The commands that print photos.
class PrintCommands final : public QObject
{
    Q_OBJECT

public:
    /// Lets the actions run the commands. All outlive it; `window` becomes its parent.
    PrintCommands(LibraryEditor &editor, UserDefaults &defaults, LibraryActions &actions, QWidget &window);
    ~PrintCommands() override;

    /// Shows the sheet for these photos, and prints when it is accepted.
    void printPhotos(const PIGroup::PhotoList &photos);
    [[nodiscard]] bool isPrinting() const { return m_run != nullptr; }
    /// Ends a print soon.
    void cancel();

private:
    [[nodiscard]] QList<PrintedPhoto> printed(const PIGroup::PhotoList &photos) const;
    void start(const PrintJob &job, const QList<PrintedPhoto> &photos);
    void printOperationFinished(const PrintRun::Outcome &outcome);

    LibraryEditor &m_editor;
    UserDefaults &m_defaults;
    QWidget &m_window;
    std::unique_ptr<PrintRun> m_run;
    ProgressDialogPointer m_progress;
};
