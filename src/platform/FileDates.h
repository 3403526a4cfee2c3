#pragma once

#include <QString>
#include <QtGlobal>

#include <optional>

/// A file's date: its modification time in whole seconds since 1970-01-01 UTC. It is the one date that people and
/// other programs see, can set, and keep when they copy; the kernel lets nobody set a birth time.
namespace FileDates {

/// Nothing when the file does not exist or cannot be examined.
[[nodiscard]] std::optional<qint64> dateOf(const QString &path);
/// Sets the date, keeping the access time; on failure, also when the file system knows no such date, the file keeps the
/// one it had and `reason` (when given) tells why.
[[nodiscard]] bool setDate(const QString &path, qint64 seconds, QString *reason = nullptr);

}
