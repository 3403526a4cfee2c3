#pragma once

#include <QByteArray>
#include <QList>
#include <QSet>
#include <QString>

#include <chrono>
#include <functional>
#include <memory>
#include <stop_token>

class Volumes;

/// What became of one bookmark.
struct BookmarkResolution
{
    enum class Status {
        Found,
        VolumeAway, ///< the volume on which the file stood is not mounted; nothing was searched
        Missing,    ///< looked for everywhere, and not there
        Ambiguous,  ///< the file is gone, and more than one file could be a copy of it
        Unsearched, ///< the search was cancelled, ran out of time or was to reach no further
        Unnameable, ///< found where the path is no text, so that nobody can open it
        Unreached,  ///< neither at nor beside its old place, and its volume is a network one, which is not walked
    };

    qsizetype index = 0; ///< of the bookmark in the list that was given
    Status status = Status::Missing;
    QString path = {};     ///< when found
    bool stale = false;    ///< when found: something that the bookmark holds is no longer so
    QByteArray fresh = {}; ///< when stale: the bookmark to keep from now on
};

struct BookmarkProgress
{
    qsizetype resolved = 0;
    qsizetype total = 0;
    qsizetype foldersRead = 0;
};

/// How far a search may go, and how it reports. The functions are called on the searching thread.
struct BookmarkOptions
{
    enum class Mounting { Refused, Allowed };
    /// Whether network volumes may be walked and volumes that are away may be mounted.
    Mounting mounting = Mounting::Refused;
    /// Whether a file that is nowhere to be found may be replaced by the only one with its content.
    enum class Copies { Refused, Accepted };
    Copies copies = Copies::Accepted;
    /// Where copies are accepted: the bookmarks, by their index, for which they are not.
    QSet<qsizetype> originalsOnly = {};
    /// Where copies are accepted: the extensions that they may have, in lower case and without the dot, besides those
    /// of the files that are looked for. A copy that is not seen is not counted, so let these be all that may matter.
    QSet<QByteArray> copyExtensions = {};
    enum class Reach {
        OldFolders, ///< the old paths and what stands beside them, also beside a folder that is gone; no walk: quick
        Everywhere,
    };
    Reach reach = Reach::Everywhere;
    /// Files that are known to be something else, such as those of other references: no copies.
    QSet<QString> pathsInUse = {};
    std::chrono::milliseconds timeLimit = std::chrono::minutes(2);
    std::stop_token stop = {};
    /// Receives every bookmark's resolution exactly once, some at a time, as they become known.
    std::function<void(const QList<BookmarkResolution> &)> resolved = {};
    /// Called a few times a second while folders are being read, and at the end.
    std::function<void(const BookmarkProgress &)> progress = {};
    /// What is mounted; what the system tells when null.
    std::shared_ptr<const Volumes> volumes = {};
    /// Where mounting is allowed: mounts a volume that is away and tells what is mounted then, null when that failed.
    /// The desktop's disk service is asked when empty.
    std::function<std::shared_ptr<const Volumes>(const QByteArray &volume)> mount = {};
};
