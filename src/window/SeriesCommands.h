#pragma once

#include "DispatchQueue.h"
#include "FileRun.h"
#include "MakeProgressDialog.h"

#include <QObject>

#include <memory>

class LibraryActions;
class QWidget;
class UserDefaults;

/// The commands that change many files in one go: that rename them, and that give them dates in even steps.
class SeriesCommands final : public QObject
{
    Q_OBJECT

public:
    /// Lets the actions run the commands. All outlive it; `window` becomes its parent.
    SeriesCommands(LibraryEditor &editor, UserDefaults &defaults, LibraryActions &actions, QWidget &window);
    ~SeriesCommands() override;

    /// Shows the sheet for the selected photos.
    void performRenameForWindow();
    /// Shows the sheet for these, in the order of their folder.
    void redatePhotos(const PIGroup::PhotoList &photos);
    /// Files are being changed.
    [[nodiscard]] bool isBusy() const { return m_run != nullptr; }
    /// Ends that after the file that is being changed, without a word to the user.
    void cancel();

private:
    /// What is told of a run.
    struct Words
    {
        QString title;
        QString failure; ///< the title when something fails
        QString one;     ///< how many files are done
        QString many;
    };
    using Start = std::function<std::unique_ptr<FileRun>(const FileRun::Progress &, const FileRun::Ended &)>;
    /// `total` files will be done if nothing fails.
    void run(const Words &words, qsizetype total, const Start &start);
    void showProgress(const QString &text, qsizetype done);
    void ended(const Words &words, const FileRun::Outcome &outcome);

    LibraryEditor &m_editor;
    UserDefaults &m_defaults;
    QWidget &m_window;
    std::unique_ptr<FileRun> m_run;
    ProgressDialogPointer m_progress;
    bool m_isClosing = false;
    DispatchQueue m_worker; ///< last: its blocks end first
};
