#pragma once

#include <QString>

/// The text as a tool tip or label is to be given it that would take "<b>" for markup: names of files and folders show
/// as they are spelled.
[[nodiscard]] QString plainText(const QString &text);
