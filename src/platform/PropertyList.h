#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>

#include <optional>

/// Property lists: written as XML, read as XML or binary. A list's values are QVariants that hold QString, bool,
/// qlonglong, double, QByteArray, QDateTime, QVariantList or QVariantHash (QVariantMap is taken as well when writing).
/// Whoever reads one checks each value's type, as with anything from outside.
namespace PropertyList {

/// Nothing when the bytes are no property list, or one that is nested or grows beyond all reason; then `reason` (when
/// given) tells why. A value of a kind that is not listed above becomes an invalid QVariant.
[[nodiscard]] std::optional<QVariant> fromData(const QByteArray &bytes, QString *reason = nullptr);
/// The XML form; nothing when a value has no place in it.
[[nodiscard]] std::optional<QByteArray> toXml(const QVariant &value, QString *reason = nullptr);

[[nodiscard]] std::optional<QVariant> read(const QString &path, QString *reason = nullptr);
/// Writes the whole list flushed to disk, or leaves the file as it was.
[[nodiscard]] bool write(const QString &path, const QVariant &value, QString *reason = nullptr);

/// Whether XML can hold the text at all: no control characters except tab and line ends, no halves of pairs.
[[nodiscard]] bool isStorableText(const QString &text);

}
