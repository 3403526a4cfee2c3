#include "GiveAlert.h"

#include "AlertPresenter.h"

namespace {

int showingAlerts = 0;

struct NestedAlert
{
    NestedAlert() { ++showingAlerts; }
    ~NestedAlert() { --showingAlerts; }
    NestedAlert(const NestedAlert &) = delete;
    NestedAlert &operator=(const NestedAlert &) = delete;
};

}

int GiveAlert(const QString &title, const QString &message, const QStringList &buttons, int escapeButton)
{
    const QString cancel = QStringLiteral("Cancel");
    Alert alert{title, message, buttons};
    if (buttons.isEmpty()) {
        // Escape must keep answering 1 although only one button can be seen.
        alert.buttons = {QStringLiteral("OK"), cancel};
        alert.hiddenButton = 1;
    }
    alert.escapeButton = escapeButton >= 0 ? escapeButton : static_cast<int>(alert.buttons.indexOf(cancel));
    const NestedAlert nested;
    return AlertPresenter::shared().present(alert);
}

int alertNesting()
{
    return showingAlerts;
}

void Beep()
{
    AlertPresenter::shared().beep();
}
