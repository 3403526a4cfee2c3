#pragma once

#include "ContentCandidates.h"
#include "DirectoryWalk.h"
#include "InodeTable.h"
#include "LostFile.h"
#include "TrashFolders.h"

#include <functional>
#include <vector>

/// Looks for lost files on their own volume by their identity, for all of them at once: at their old paths, in their
/// old folders, around what is left of their paths, and at last everywhere. Every folder is read once at most.
class VolumeSearch
{
public:
    /// Called when a lost file was found; it is then no longer looked for.
    using Found = std::function<void(LostFile &lost, const FoundPlace &place)>;
    /// Called for every folder (or part of a large one) that was read.
    using Tick = std::function<void()>;

    /// `candidates` knows which files are to be remembered, and remembers none yet.
    VolumeSearch(const Volume &volume, ContentCandidates candidates, DirectoryWalk::Limits limits, Found found,
                 Tick tick);

    /// Before anything is searched. `lost` is on this volume, knows its old folder and outlives the search.
    void add(LostFile &lost);

    /// Looks at the old paths and in the old folders, and where such a folder is gone in those beside it: it may have
    /// been renamed. Walks nothing.
    void searchOldFolders();
    /// Walks outwards from the old folders until all are found or the whole volume was walked.
    void searchOutwards();
    /// Walks what has not been walked yet, for the candidates.
    void walkRest();

    /// Whether a limit ended the search before everything was seen.
    [[nodiscard]] bool isCutShort() { return m_walk.isCutShort(); }
    [[nodiscard]] const ContentCandidates &candidates() const { return m_candidates; }
    [[nodiscard]] const Volume &volume() const { return m_volume; }
    [[nodiscard]] qsizetype foldersRead() const { return m_walk.foldersRead(); }

private:
    bool isHere(const PresentFile &file) const;
    bool folderExists(const QByteArray &path);
    struct OldFolder
    {
        QByteArray path;
        const OldPlace *place = nullptr; ///< that of the files added first
        std::vector<LostFile *> files;
    };
    static bool hasOpen(const OldFolder &folder);
    void tryOldPaths(const OldFolder &folder);
    std::optional<FoundPlace> tryOldPath(LostFile &lost);
    void prepareWalk();
    void readOldFolder(const OldFolder &folder);
    void searchRenamedFolders();
    using OldFolders = std::vector<const OldFolder *>;
    void searchBeside(const QByteArray &gone, const OldFolders &folders);
    [[nodiscard]] bool isInPlace(const QByteArray &path, const QByteArray &survivor);
    [[nodiscard]] bool holdsAny(const QByteArray &path, const OldFolder &folder) const;
    [[nodiscard]] QByteArray nearestSurvivor(QByteArray folder);
    [[nodiscard]] QSet<QByteArray> startsOutwards();
    DirectoryWalk::Visit visit(const DirectoryWalk::Folder &folder, std::span<const DirectoryWalk::Entry> entries);
    bool checkEntry(const DirectoryWalk::Folder &folder, const DirectoryWalk::Entry &entry);
    void walkEverywhere();
    void take(LostFile &lost, const FoundPlace &place);
    void takeEntry(LostFile &lost, const DirectoryWalk::Folder &folder, const char *name, const PresentFile &file);

    enum class Goal { LostFiles, Candidates };

    const Volume &m_volume;
    const InodeTrust m_trust;
    Goal m_goal = Goal::LostFiles;
    Found m_found;
    Tick m_tick;
    std::vector<OldFolder> m_oldFolders;
    QHash<QByteArray, std::size_t> m_oldFolderAt; ///< in m_oldFolders
    qsizetype m_openCount = 0;
    InodeTable<LostFile> m_wanted; ///< those that were open when the walk began
    QHash<QByteArray, bool> m_folderExists;
    const TrashFolders m_trash;
    ContentCandidates m_candidates; ///< none in a trash
    struct Hit
    {
        const DirectoryWalk::Entry *entry;
        const LostFile *lost; ///< the first with that inode number
    };
    std::vector<Hit> m_hits;
    FoundPlace m_place; ///< whose path keeps its memory from file to file
    DirectoryWalk m_walk;
};
