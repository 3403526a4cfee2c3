#pragma once

#include "BookmarkResolution.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

class Volumes;
struct FileIdentity;

/// A bookmark: opaque bytes that find a file or folder again after it was renamed or moved, its folder was renamed or
/// moved, or its volume was mounted elsewhere. Whatever is found was checked to be the file and not another one that
/// bears its name, its inode number or its size. All functions may be called from any thread.
namespace FileBookmark {

/// Of what stands at an absolute path, links followed. Costs two small reads of the file. Nothing on failure; then
/// `reason` (when given) tells why. A file that may not be read gets a bookmark too, one that cannot tell copies.
[[nodiscard]] std::optional<QByteArray> create(const QString &path, QString *reason = nullptr);
/// The same for a caller who makes many and knows what is mounted.
[[nodiscard]] std::optional<QByteArray> create(const QString &path, const Volumes &volumes, QString *reason = nullptr);

/// Whether the bookmark still holds the number, birth, size and date of the file that a caller has just looked at. When
/// not, although the path is right, the file was changed or replaced since, and wants a fresh bookmark.
/// Where a volume makes up its numbers anew with every mount, they do not count; only to tell that, what is mounted is
/// asked for, unless `volumes` are given.
[[nodiscard]] bool isCurrent(const QByteArray &bookmark, const FileIdentity &present, const Volumes *volumes = nullptr);

/// Whether a present file was written later than the bookmarked one had been. A file that was there before,
/// and was only moved to its place, was not.
[[nodiscard]] bool isOlderThan(const QByteArray &bookmark, const FileIdentity &present);
/// Whether a present file was last written before the bookmarked one was, so that it cannot have been saved over it.
[[nodiscard]] bool isNewerThan(const QByteArray &bookmark, const FileIdentity &present);

/// The size of the bookmarked file; 0 for a folder and for what is no bookmark.
[[nodiscard]] quint64 fileSize(const QByteArray &bookmark);

/// Whether both are of files with the same content, as far as can be told. False for what is no bookmark.
[[nodiscard]] bool haveSameContent(const QByteArray &left, const QByteArray &right);

/// Where the bookmark's volume was mounted, to tell the user which one is away; empty for what is no bookmark.
[[nodiscard]] QString mountPoint(const QByteArray &bookmark);

/// Finds one file. May walk a whole volume: never on the main thread while there is a window.
[[nodiscard]] BookmarkResolution resolve(const QByteArray &bookmark, const BookmarkOptions &options = {});

/// Finds many files with one walk of each volume at most, and hands them to `options.resolved` as they are found.
/// Returns when all is told.
void resolveMany(const QList<QByteArray> &bookmarks, const BookmarkOptions &options);

}
