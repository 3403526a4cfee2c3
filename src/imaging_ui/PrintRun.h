#pragma once

#include "DispatchQueue.h"
#include "MainThreadLink.h"
#include "PIPrintView.h"

#include <QObject>

#include <functional>
#include <memory>

class QPrinter;

/// Prints in the background, page by page. Main thread.
class PrintRun final : public QObject
{
    Q_OBJECT

public:
    struct Outcome
    {
        bool isPrinted = false; ///< false also when cancelled
        bool isCancelled = false;
        int incompletePages = 0; ///< with photos that could not be read
    };
    /// The pages that a printer's dialog chose, counted from 1, as often as the printer does not repeat them itself.
    [[nodiscard]] static QList<int> pagesFor(const QPrinter &printer, int totalPages);

    explicit PrintRun(QObject *parent = nullptr);
    ~PrintRun() override;

    /// Once. Takes the printer, which nobody else uses from now on.
    void start(std::unique_ptr<QPrinter> printer, const PIPrintView &view);
    void cancel() { *m_cancelled = true; }

Q_SIGNALS:
    void pageBegun(int number, int ofPages);
    void finished(const PrintRun::Outcome &outcome);

private:
    std::shared_ptr<std::atomic<bool>> m_cancelled = std::make_shared<std::atomic<bool>>(false);
    MainThreadLink<PrintRun> m_link{*this};
    DispatchQueue m_worker; ///< last: its blocks end first
};
