#pragma once

#include "OrphanPaths.h"

#include <QByteArray>
#include <QList>
#include <QMultiMap>
#include <QSet>
#include <QString>
#include <QStringList>

#include <functional>
#include <stop_token>

/// A file that a reference leads to in vain.
struct MissingFile
{
    QString guid; ///< of the reference
    QByteArray bookmark;
};

struct OrphanRequest
{
    QString folder;
    QStringList knownPaths = {}; ///< files that are no orphans
    QList<MissingFile> missing = {};
    QList<MissingFile> away = {}; ///< on volumes that are not mounted
};

struct OrphanSearchResult
{
    OrphanPaths orphans;
    /// The orphans that are missing files: their places among the orphans, and the references that miss them. Seldom
    /// more than one for an orphan.
    QMultiMap<qsizetype, QString> missing = {};
    /// Those of them that are known by their content alone. There may be more copies where no orphans were looked for,
    /// so it is likely but not certain that they are what is missed.
    QSet<qsizetype> byContent = {};
    /// The orphans with the content of a file that is away, likewise; none that is a missing file.
    QMultiMap<qsizetype, QString> copiesOfAway = {};
    qsizetype filesSeen = 0;
    int undecodableNames = 0; ///< image files whose names are not valid UTF-8
    qsizetype unreadableFolders = 0;
    bool cancelled = false;
};

/// Walks the folder and everything beneath it for regular files with the extension of a readable picture, in either
/// case, whose full path is not known, and tells which of them are missing files. Links beneath the folder are not
/// followed, a trash and the user's cache folder are passed over unless the folder is in one, and no file is examined
/// by itself where the file system reports types, but for orphans while something is missing. `progress` is told how
/// many files were seen. Blocks: any thread but the main one.
[[nodiscard]] OrphanSearchResult findOrphans(const OrphanRequest &request, const std::stop_token &stop,
                                             const std::function<void(qsizetype filesSeen)> &progress = {});
