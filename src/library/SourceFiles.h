#pragma once

#include <QSet>
#include <QString>
#include <QStringList>

#include <atomic>

/// Where exports must not write: the files of photos, and the places of missing ones. All block: any thread but the
/// main one.
namespace SourceFiles {

/// Whether the path leads to one of the files, under whatever name: through links, as another hard link, or as the
/// place of one that is missing. False also when it was cancelled.
[[nodiscard]] bool isAmong(const QStringList &files, const QString &path, const std::atomic<bool> &cancelled);

/// The names of those files that belong into the folder, also of missing ones, in small letters.
[[nodiscard]] QSet<QString> namesIn(const QString &folder, const QStringList &files);

}
