#pragma once

#include <QRunnable>
#include <QString>

#include <atomic>

/// A piece of work for a background queue. It starts out finished, and is again when it has run.
class QVAsyncOperation : public QRunnable
{
public:
    /// Set while `run` is at work. Any thread.
    [[nodiscard]] bool isExecuting() const { return m_working; }
    [[nodiscard]] bool isFinished() const { return !m_working; }

    /// Does the work on the queue's thread; an exception is logged and counts as failure.
    void run() final;

protected:
    /// Names the operation in the log.
    [[nodiscard]] virtual QString operationName() const = 0;
    /// The work itself; true when it succeeded.
    [[nodiscard]] virtual bool performOperation() = 0;
    /// Called when the work is done, on the queue's thread.
    virtual void operationFinished(bool success);

private:
    std::atomic<bool> m_working = false;
};
