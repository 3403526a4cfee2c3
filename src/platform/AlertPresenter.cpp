#include "AlertPresenter.h"

#include "SystemLog.h"

#include <algorithm>
#include <utility>

namespace {

/// Stands in until there is a user to ask.
class LoggingPresenter final : public AlertPresenter
{
public:
    int present(const Alert &alert) override
    {
        SystemLog::write(alert.title + QLatin1Char(' ') + alert.message);
        const int last = static_cast<int>(std::max<qsizetype>(alert.buttons.size() - 1, 0));
        return alert.escapeButton >= 0 ? alert.escapeButton : last;
    }
    void beep() override {}
};

AlertPresenter *&installed()
{
    static AlertPresenter *presenter = nullptr;
    return presenter;
}

}

AlertPresenter &AlertPresenter::shared()
{
    static LoggingPresenter logging;
    return installed() ? *installed() : logging;
}

AlertPresenter *AlertPresenter::install(AlertPresenter *presenter)
{
    return std::exchange(installed(), presenter);
}
