#pragma once

#include <QList>
#include <QString>

#include <optional>

enum class EntryType { File, Folder, Link, Other };

/// One name in a folder.
struct DirectoryEntry
{
    QString name;
    EntryType type = EntryType::Other;
    quint64 inode = 0;
};

/// What one folder holds, without "." and "..", in the file system's order.
struct DirectoryListing
{
    QList<DirectoryEntry> entries;
    /// Names that are not valid UTF-8: no path can be told for them, so they are left out and counted.
    int undecodableNames = 0;
};

/// Reads one folder by directory reads alone: no stat per entry where the file system reports types.
/// Nothing when it cannot be read; then `reason` (when given) tells why.
[[nodiscard]] std::optional<DirectoryListing> readDirectory(const QString &path, QString *reason = nullptr);

/// What stands at `path`, links followed; nothing when there is nothing.
[[nodiscard]] std::optional<EntryType> entryTypeAt(const QString &path);
