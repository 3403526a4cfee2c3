#pragma once

#include <QString>

/// The kernel's note of the most memory of a process since its start, or since the note was cleared; 0 where there is
/// none.
[[nodiscard]] double peakMegabytes(const QString &process = QStringLiteral("self"));
/// For this process.
void clearPeak();
