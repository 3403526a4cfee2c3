#pragma once

#include "DirectoryReader.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QHash>
#include <QSet>
#include <QString>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <stop_token>
#include <utility>
#include <vector>

class Volumes;

/// Reads folders and the folders beneath them by directory reads alone: no stat per entry where the file system reports
/// types. It follows no links, does not touch what is mounted where it may not enter, stays on the file system on which
/// each walk begins unless told otherwise, passes over what the user may not read, and reads no folder twice in its
/// life, however many walks it makes.
class DirectoryWalk
{
public:
    struct Folder
    {
        QByteArray path;
        int descriptor = -1; ///< open only while the visitor runs
        quint64 device = 0;
    };

    struct Entry
    {
        const char *name; ///< as valid as the visit; ends with a zero
        quint64 inode;
        EntryType type;
    };

    /// Stop ends the walk after the folder at hand.
    enum class Visit { Continue, Stop };
    /// Called with the entries of a folder, "." and ".." left out; several times for a folder that holds many.
    using Visitor = std::function<Visit(const Folder &folder, std::span<const Entry> entries)>;

    enum class Borders {
        Kept,   ///< other file systems are not entered
        Crossed ///< those that hold files of users are; what belongs to the running system is not
    };

    struct Limits
    {
        std::stop_token stop = {};
        std::chrono::steady_clock::time_point deadline = std::chrono::steady_clock::time_point::max();
        qsizetype maxFolders = 5'000'000;
        Borders borders = Borders::Kept;
        /// What is mounted; what the system tells when null.
        std::shared_ptr<const Volumes> volumes = {};
        /// Told of each folder that could not be read, or not to its end.
        std::function<void(const QByteArray &path, const QString &reason)> unreadable = {};
    };

    enum class End {
        Complete,
        Stopped, ///< by the visitor
        CutShort ///< by a limit
    };

    DirectoryWalk(Visitor visitor, Limits limits);

    /// Reads one folder; those beneath it are left to a later walk.
    End readFolder(const QByteArray &path);
    /// The names of the folders in the one that readFolder() was last given; none when that could not be read.
    [[nodiscard]] std::vector<QByteArray> subfoldersRead() const { return m_readAlone.value(m_current); }
    /// Reads the folder and everything beneath it that no earlier walk has read. Begins with what a walk that was
    /// stopped has left over.
    End walk(const QByteArray &path);
    /// Whether a limit was reached; nothing is read from then on.
    [[nodiscard]] bool isCutShort();

    [[nodiscard]] qsizetype foldersRead() const { return m_foldersRead; }
    [[nodiscard]] qsizetype entriesSeen() const { return m_entriesSeen; }
    [[nodiscard]] qsizetype unreadableFolders() const { return m_unreadableFolders; }

private:
    using Key = std::pair<quint64, quint64>; // device, inode
    using Names = std::vector<QByteArray>;
    struct Pending
    {
        QByteArray path;
        std::optional<quint64> device; ///< on which it must stand; any for the folder on which a walk begins
    };

    void noteUnreadable(const QByteArray &path, int error);
    [[nodiscard]] bool isBarred(const QByteArray &path) const;
    [[nodiscard]] bool mayEnter(int folder) const;
    End visitFolder(const Pending &pending, Names &subfolders);
    End readOpenFolder(const Folder &folder, Names &subfolders);
    Visit visitPiece(const Folder &folder, std::span<const char> piece, Names &subfolders);
    void collect(const Folder &folder, std::span<const char> piece, Names &subfolders);

    Visitor m_visitor;
    Limits m_limits;
    std::shared_ptr<const Volumes> m_volumes;
    QSet<Key> m_walked;
    QHash<Key, Names> m_readAlone; ///< folders whose subfolders are still to be walked
    std::vector<Pending> m_pending;
    Key m_current;
    std::vector<char> m_room;
    std::vector<Entry> m_entries;
    qsizetype m_foldersRead = 0;
    qsizetype m_entriesSeen = 0;
    qsizetype m_unreadableFolders = 0;
    bool m_cutShort = false;
};
