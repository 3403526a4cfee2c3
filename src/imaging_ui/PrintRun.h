#pragma once

#include "DispatchQueue.h"
#include "MainThreadLink.h"
#include "PIPrintView.h"
#include "PrintJob.h"

#include <QObject>

#include <functional>
#include <memory>

/// Prints in the background, page by page: first all of it into a document, which then goes to the printer or to its
/// place, so that a cancelled print leaves nothing behind. Main thread.
class PrintRun final : public QObject
{
    Q_OBJECT

public:
    struct Outcome
    {
        bool isPrinted = false; ///< false also when cancelled
        bool isCancelled = false;
        int incompletePages = 0; ///< with photos that could not be read
        QString reason = {};     ///< why nothing is printed, where that is known
    };

    explicit PrintRun(QObject *parent = nullptr);
    ~PrintRun() override;

    /// Once.
    void start(const PrintJob &job, const PIPrintView &view);
    void cancel() { *m_cancelled = true; }

Q_SIGNALS:
    /// The page's place in the print, counted from 0.
    void pageBegun(int number, int ofPages);
    void photosDrawn(int number, int ofPhotos);
    void finished(const PrintRun::Outcome &outcome);

private:
    std::shared_ptr<std::atomic<bool>> m_cancelled = std::make_shared<std::atomic<bool>>(false);
    MainThreadLink<PrintRun> m_link{*this};
    DispatchQueue m_worker; ///< last: its blocks end first
};
