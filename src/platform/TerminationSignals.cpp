#include "TerminationSignals.h"

#include "PosixSupport.h"
#include "SystemLog.h"

#include <QSocketNotifier>

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>

namespace {

constexpr std::array kSignals = {SIGTERM, SIGINT, SIGHUP};

std::array<int, 2> channel = {-1, -1}; // the handler writes into the second what the notifier reads from the first

/// Does nothing that a signal handler may not do.
void handle(int)
{
    const int error = errno;
    const char byte = 1;
    [[maybe_unused]] const ssize_t written = ::write(channel[1], &byte, 1);
    errno = error;
}

void closeChannel()
{
    for (int &end : channel) {
        if (end >= 0)
            ::close(end);
        end = -1;
    }
}

}

TerminationSignals::TerminationSignals(std::function<void()> asked, QObject *parent)
    : QObject(parent)
    , m_asked(std::move(asked))
{
    if (::pipe2(channel.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
        SystemLog::write(QStringLiteral("Signals to end will not be asked about"));
        return;
    }
    m_notifier = std::make_unique<QSocketNotifier>(channel[0], QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, [this] {
        char byte = 0;
        while (::read(channel[0], &byte, 1) > 0) {
        }
        m_asked();
    });
    struct sigaction action = {};
    action.sa_handler = handle;
    action.sa_flags = static_cast<int>(SA_RESTART | static_cast<unsigned>(SA_RESETHAND)); // the second one is the usual
    for (const int signal : kSignals)
        ::sigaction(signal, &action, nullptr);
}

TerminationSignals::~TerminationSignals()
{
    if (!m_notifier)
        return;
    for (const int signal : kSignals)
        std::signal(signal, SIG_DFL);
    m_notifier.reset();
    closeChannel();
}
