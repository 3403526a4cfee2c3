#pragma once

#include "DispatchQueue.h"
#include "FileCommands.h"
#include "MainThreadLink.h"
#include "MakeProgressDialog.h"

#include <QObject>

#include <functional>
#include <memory>
#include <stop_token>

class QWidget;

/// Gives missing files the places where they may be now: those are looked at on another thread, with progress and a way
/// to end it, and taken as they turn out right, some at a time. It deletes itself at its end.
class MovedFilesRun final : public QObject
{
    Q_OBJECT

public:
    struct Outcome
    {
        qsizetype taken = 0;
        qsizetype notFound = 0; ///< or not looked for any more
        bool isCancelled = false;
    };
    using Ended = std::function<void(const Outcome &)>;

    /// Begins at once. The library, the queue and the window, over which progress is shown under `title`, outlive
    /// `parent`.
    static void start(PhotoLibrary &library, DispatchQueue &queue, const QList<FileCommands::MovedFile> &files,
                      const QString &title, QWidget &window, QObject *parent, const Ended &ended);
    ~MovedFilesRun() override;

private:
    MovedFilesRun(PhotoLibrary &library, qsizetype total, Ended ended, QObject *parent);
    void showProgress(const QString &title, QWidget &window);
    void take(const QList<FileCommands::MovedFile> &ready, qsizetype looked);
    void end(bool isCancelled);

    PhotoLibrary &m_library;
    const qsizetype m_total;
    qsizetype m_taken = 0;
    Ended m_ended; ///< null: that was told
    std::stop_source m_stop;
    ProgressDialogPointer m_progress;
    MainThreadLink<MovedFilesRun> m_link{*this};
};
