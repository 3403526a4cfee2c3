#pragma once

#include <QSet>
#include <QString>
#include <QStringList>

#include <functional>
#include <stop_token>

/// Image files of a folder that the library does not know.
struct OrphanSearchResult
{
    QStringList relativePaths; ///< sorted by file name without extension, without regard to case
    qsizetype filesSeen = 0;
    int undecodableNames = 0; ///< image files whose names are not valid UTF-8
    bool cancelled = false;
};

/// Walks the folder and everything beneath it for regular files with the extension of a readable picture, in either
/// case, whose full path is not among `knownPaths`. Links are not followed, and no file is examined by itself where
/// the file system reports types. `progress` is told how many files were seen. Blocks: any thread but the main one.
[[nodiscard]] OrphanSearchResult findOrphans(const QString &folder, const QSet<QString> &knownPaths,
                                             const std::stop_token &stop,
                                             const std::function<void(qsizetype filesSeen)> &progress = {});
