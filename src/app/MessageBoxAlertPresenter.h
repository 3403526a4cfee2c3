#pragma once

#include "AlertPresenter.h"

/// Shows alerts as message boxes over the active window.
class MessageBoxAlertPresenter final : public AlertPresenter
{
public:
    int present(const Alert &alert) override;
    void beep() override;
};
