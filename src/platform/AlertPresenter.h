#pragma once

#include <QString>
#include <QStringList>

/// A question or message put to the user, and the buttons that may answer it.
struct Alert
{
    QString title;         ///< may be empty
    QString message;       ///< may be empty
    QStringList buttons;   ///< shown in this order
    int escapeButton = -1; ///< index answered by the Escape key and by closing; -1: the last button
    int hiddenButton = -1; ///< index of a button that is not shown, only answered by Escape; -1: none
};

/// Shows alerts. The lower folders reach the user through this alone; the application installs one with widgets.
class AlertPresenter
{
public:
    virtual ~AlertPresenter() = default;
    /// Shows the alert modally and returns the index of the button that ended it. Main thread.
    virtual int present(const Alert &alert) = 0;
    /// A short sound instead of an alert, for a command that has nothing to act on.
    virtual void beep() = 0;

    /// The presenter in use; before one is installed, one that logs the alert and answers `escapeButton`.
    [[nodiscard]] static AlertPresenter &shared();
    /// Installs `presenter` (not owned; null restores the logging one) and returns what was there, null for that one.
    static AlertPresenter *install(AlertPresenter *presenter);
};
