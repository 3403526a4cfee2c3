#pragma once

#include "DispatchQueue.h"
#include "MakeProgressDialog.h"
#include "PhotoImport.h"

#include <QObject>

#include <deque>
#include <memory>

class QWidget;
class UserDefaults;

/// Runs imports one after the other, with a progress dialog for those that take longer than a moment, and tells of
/// names that had to be left out.
class ImportRunner final : public QObject
{
    Q_OBJECT

public:
    using Finished = PhotoImport::Finished;

    /// All outlive this.
    ImportRunner(LibraryEditor &editor, const UserDefaults &defaults, QWidget &window);
    ~ImportRunner() override;

    void run(PhotoImport::Request request, Finished finished);
    [[nodiscard]] bool isRunning() const { return m_import != nullptr; }
    /// Ends the running import soon and drops those that wait; each of them still tells its `finished`.
    void cancelAll();

Q_SIGNALS:
    void runningChanged(bool running);

private:
    struct Job
    {
        PhotoImport::Request request;
        Finished finished;
    };

    void startNext();
    void importFinished(const PhotoImport::Outcome &outcome, const Finished &finished);
    void tellDropped();
    void reportSkipped(const ScanSummary &scan);

    LibraryEditor &m_editor;
    const UserDefaults &m_defaults;
    QWidget &m_window;
    DispatchQueue m_workers;
    std::deque<Job> m_waiting;
    std::deque<Job> m_dropped; ///< wait for the running one, to be told of after it
    std::unique_ptr<PhotoImport> m_import;
    ProgressDialogPointer m_progress;
};
