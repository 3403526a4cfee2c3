#pragma once

#include <QString>

/// Whether the file now at `place` looks like the original that a program set aside when it saved a file anew at
/// `path`: it stands beside that under the same name with something appended, or with one of the usual marks.
[[nodiscard]] bool isKeptOriginal(const QString &place, const QString &path);
