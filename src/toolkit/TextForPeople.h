#pragma once

#include <QString>
#include <QtGlobal>

/// A size in decimal units with two decimals and grouped thousands: "1,000.00 KB", "1.50 MB".
[[nodiscard]] QString FileSizeString(quint64 bytes);

/// `one` for a count of one, else `many`; "%n" in it becomes the count.
[[nodiscard]] QString CountText(qint64 count, const QString &one, const QString &many);

/// What is shown of an error: its reason, else its description, else "An unknown error occurred."; typographic
/// quotes are straightened.
[[nodiscard]] QString reason(const QString &failureReason, const QString &description = {});
