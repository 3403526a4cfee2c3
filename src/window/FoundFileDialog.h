#pragma once

#include <QString>

class QWidget;

/// Lets the user show where the file of that name is now: only a file of exactly this name can be chosen. Empty when
/// the user gave up. Begins with `folder`.
[[nodiscard]] QString askForFileNamed(const QString &name, const QString &folder, QWidget &window);
