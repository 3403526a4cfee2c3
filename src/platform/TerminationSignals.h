#pragma once

#include <QObject>

#include <functional>
#include <memory>

class QSocketNotifier;

/// Turns the signals that ask a process to end (SIGTERM, SIGINT, SIGHUP) into a call on the main thread, so that
/// unsaved work can be asked about. A second signal ends the process as usual. One at a time; main thread.
class TerminationSignals final : public QObject
{
public:
    explicit TerminationSignals(std::function<void()> asked, QObject *parent = nullptr);
    ~TerminationSignals() override;

private:
    std::function<void()> m_asked;
    std::unique_ptr<QSocketNotifier> m_notifier;
};
