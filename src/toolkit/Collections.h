#pragma once

#include <QStringList>
#include <QVariant>

/// Values of dictionaries and arrays converted to one type; what is missing gives false, 0.0 or 0.
[[nodiscard]] bool boolForKey(const QVariantMap &dictionary, const QString &key);
[[nodiscard]] float floatForKey(const QVariantMap &dictionary, const QString &key);
[[nodiscard]] qint64 integerForKey(const QVariantMap &dictionary, const QString &key);
[[nodiscard]] qint64 integerAtIndex(const QVariantList &array, qsizetype index);

/// Whether the array, which is sorted without regard to case, holds the text in any case. `index` (when given) gets
/// its place, or the place where it would have to be inserted.
[[nodiscard]] bool isStringInSortedArray(const QStringList &array, const QString &text, qsizetype *index = nullptr);
