#pragma once

#include <QString>
#include <QStringList>

/// Shows a modal alert and returns the zero-based index of the button that ended it. Without `buttons` it shows "OK"
/// alone, and the Escape key answers 1, a "Cancel" that is out of sight. With them Escape answers `escapeButton`; -1
/// stands for the button named "Cancel", which a translated one is not. Main thread.
int GiveAlert(const QString &title, const QString &message, const QStringList &buttons = {}, int escapeButton = -1);

/// How many alerts are showing now.
[[nodiscard]] int alertNesting();

/// The alert sound for a command that has nothing to act on.
void Beep();
