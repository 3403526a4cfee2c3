#include "VolumeSearch.h"

#include "FolderOfSizes.h"
#include "NativePath.h"
#include "StoredFile.h"

#include <algorithm>

VolumeSearch::VolumeSearch(const Volume &volume, ContentCandidates candidates, DirectoryWalk::Limits limits,
                           Found found, Tick tick)
    : m_volume(volume)
    , m_trust(volume.inodeTrust())
    , m_found(std::move(found))
    , m_tick(std::move(tick))
    , m_candidates(std::move(candidates))
    , m_walk([this](const auto &folder, auto entries) { return visit(folder, entries); }, std::move(limits))
{}

void VolumeSearch::add(LostFile &lost)
{
    ++m_openCount;
    // Neighbours in a library often share their folder.
    const bool isSameFolder = !m_oldFolders.empty() && m_oldFolders.back().place == lost.place;
    const QByteArray &folder = lost.place->folder;
    const std::size_t at = isSameFolder ? m_oldFolders.size() - 1 : m_oldFolderAt.value(folder, m_oldFolders.size());
    if (at == m_oldFolders.size()) {
        m_oldFolderAt.insert(folder, at);
        m_oldFolders.push_back({folder, lost.place, {}});
    }
    m_oldFolders[at].files.push_back(&lost);
}

void VolumeSearch::searchOldFolders()
{
    // Reading a folder tells of all its files at once. Where inode numbers tell little, each path is looked at.
    constexpr std::size_t kFewFiles = 8;
    for (const OldFolder &folder : m_oldFolders)
        if (m_trust == InodeTrust::MadeUp || folder.files.size() <= kFewFiles)
            tryOldPaths(folder);
    prepareWalk();
    for (const OldFolder &folder : m_oldFolders)
        if (hasOpen(folder) && folderExists(folder.path))
            readOldFolder(folder);
    // Where inode numbers tell little, a path does only as long as it is the old one.
    if (m_openCount > 0 && m_trust != InodeTrust::MadeUp)
        searchRenamedFolders();
}

void VolumeSearch::searchOutwards()
{
    for (QSet<QByteArray> starts = startsOutwards(); !starts.isEmpty() && m_openCount > 0;) {
        QList<QByteArray> deepestFirst(starts.cbegin(), starts.cend());
        std::sort(deepestFirst.begin(), deepestFirst.end(), [](const QByteArray &left, const QByteArray &right) {
            return left.count('/') != right.count('/') ? left.count('/') > right.count('/') : left < right;
        });
        starts.clear();
        for (const QByteArray &start : std::as_const(deepestFirst)) {
            if (m_walk.walk(start) != DirectoryWalk::End::Complete)
                return;
            const bool isTop = std::any_of(m_volume.mounts.cbegin(), m_volume.mounts.cend(),
                                           [&](const Mount &mount) { return mount.point == start; });
            if (!isTop)
                starts.insert(NativePath::parent(start));
        }
    }
    if (m_openCount > 0)
        walkEverywhere();
}

void VolumeSearch::walkRest()
{
    m_goal = Goal::Candidates;
    walkEverywhere();
}

void VolumeSearch::walkEverywhere()
{
    for (const Mount &mount : m_volume.widestMounts())
        if (m_walk.walk(mount.point) != DirectoryWalk::End::Complete)
            return;
}

bool VolumeSearch::isHere(const PresentFile &file) const
{
    return std::any_of(m_volume.mounts.cbegin(), m_volume.mounts.cend(),
                       [&](const Mount &mount) { return mount.id == file.mountId; });
}

bool VolumeSearch::folderExists(const QByteArray &path)
{
    if (const auto known = m_folderExists.constFind(path); known != m_folderExists.cend())
        return *known;
    const auto present = examineFile(kNoFolder, path.constData());
    const bool exists = present && present->identity.kind == FileKind::Folder && isHere(*present);
    m_folderExists.insert(path, exists);
    return exists;
}

bool VolumeSearch::hasOpen(const OldFolder &folder)
{
    return std::any_of(folder.files.cbegin(), folder.files.cend(), [](const LostFile *lost) { return lost->isOpen; });
}

namespace {

/// Where inode numbers are made up, a file that was born when the stored one was and stands where it stood may be that
/// file, changed in place; or one of the same moment, as cameras make them, that was given its name.
bool mayBeChangedInPlace(const BookmarkView &stored, const FileIdentity &present, InodeTrust trust)
{
    return trust == InodeTrust::MadeUp && stored.kind() == present.kind && stored.birth() &&
           stored.birth() == present.birth;
}

}

void VolumeSearch::tryOldPaths(const OldFolder &folder)
{
    std::vector<std::pair<LostFile *, FoundPlace>> changed;
    if (folderExists(folder.path))
        for (LostFile *lost : folder.files)
            if (lost->isOpen && !isCutShort())
                if (const auto place = tryOldPath(*lost))
                    changed.emplace_back(lost, *place);
    if (changed.empty())
        return;
    const FolderOfSizes neighbours(folder.path, m_volume);
    for (const auto &[lost, place] : changed)
        take(*lost, neighbours.placeOf(lost->stored).value_or(place));
}

/// Takes the file that was meant. Tells what may be that file, changed in place.
std::optional<FoundPlace> VolumeSearch::tryOldPath(LostFile &lost)
{
    const auto path = lost.place->mount->pathFor(lost.stored.volumePath().toByteArray());
    auto present = path ? examineFile(kNoFolder, path->constData()) : std::nullopt;
    if (!present || !isHere(*present))
        return {};
    if (isStoredFile(lost.stored, *present, kNoFolder, path->constData(), m_trust))
        take(lost, {*path, *present, &m_volume});
    else if (mayBeChangedInPlace(lost.stored, present->identity, m_trust))
        return FoundPlace{*path, *present, &m_volume};
    return {};
}

void VolumeSearch::prepareWalk()
{
    m_wanted = InodeTable<LostFile>(m_openCount);
    for (const OldFolder &folder : m_oldFolders)
        for (LostFile *lost : folder.files)
            if (lost->isOpen)
                m_wanted.add(lost->inode, lost);
}

void VolumeSearch::readOldFolder(const OldFolder &folder)
{
    const qsizetype unreadable = m_walk.unreadableFolders();
    m_walk.readFolder(folder.path);
    // A folder that does not tell its names may still be entered by those who know them.
    if (m_walk.unreadableFolders() != unreadable)
        tryOldPaths(folder);
}

namespace {

/// The folder on the way to `path` that is gone while `survivor`, in which it stood, is not.
QByteArray topmostGone(const QByteArray &path, const QByteArray &survivor)
{
    const qsizetype end = path.indexOf('/', survivor.size() > 1 ? survivor.size() + 1 : 1);
    return end < 0 ? path : path.first(end);
}

}

void VolumeSearch::searchRenamedFolders()
{
    QHash<QByteArray, OldFolders> gone; // all that stood in one folder, however deep
    for (const OldFolder &folder : m_oldFolders)
        if (hasOpen(folder) && !folderExists(folder.path))
            gone[topmostGone(folder.path, nearestSurvivor(folder.path))].push_back(&folder);
    for (auto entry = gone.cbegin(); entry != gone.cend(); ++entry)
        searchBeside(entry.key(), entry.value());
}

/// A folder that holds one of the files under the name that it had is the one that was renamed, and then holds most.
void VolumeSearch::searchBeside(const QByteArray &gone, const OldFolders &folders)
{
    constexpr std::size_t kFoldersToTry = 4; // some of the files may be gone besides
    const QByteArray survivor = NativePath::parent(gone);
    if (!folderExists(survivor))
        return;
    m_walk.readFolder(survivor);
    for (const QByteArray &name : m_walk.subfoldersRead()) {
        if (isCutShort())
            return;
        const QByteArray sibling = NativePath::join(survivor, name);
        const auto now = [&](const OldFolder *folder) { return NativePath::rebased(folder->path, gone, sibling); };
        const auto end = folders.cbegin() + static_cast<std::ptrdiff_t>(std::min(folders.size(), kFoldersToTry));
        if (std::none_of(folders.cbegin(), end, [&](const OldFolder *folder) {
                return isInPlace(now(folder), survivor) && holdsAny(now(folder), *folder);
            }))
            continue;
        for (const OldFolder *folder : folders)
            if (hasOpen(*folder) && isInPlace(now(folder), survivor))
                m_walk.readFolder(now(folder));
    }
}

/// Whether all folders on the way to `path` from `survivor` are there, on this volume and not through a link.
bool VolumeSearch::isInPlace(const QByteArray &path, const QByteArray &survivor)
{
    for (qsizetype at = path.indexOf('/', survivor.size() + 1); at >= 0; at = path.indexOf('/', at + 1))
        if (!folderExists(path.first(at)))
            return false;
    return folderExists(path);
}

bool VolumeSearch::holdsAny(const QByteArray &path, const OldFolder &folder) const
{
    constexpr int kFilesToTry = 2;
    int tried = 0;
    return std::any_of(folder.files.cbegin(), folder.files.cend(), [&](const LostFile *lost) {
        if (!lost->isOpen || ++tried > kFilesToTry)
            return false;
        const QByteArray file = NativePath::join(path, NativePath::fileName(lost->stored.volumePath()));
        auto present = examineFile(kNoFolder, file.constData());
        return present && isHere(*present) &&
               isStoredFile(lost->stored, *present, kNoFolder, file.constData(), m_trust);
    });
}

QByteArray VolumeSearch::nearestSurvivor(QByteArray folder)
{
    while (folder.size() > 1 && !folderExists(folder))
        folder = NativePath::parent(folder);
    return folder;
}

/// The folders around which the search begins: what is left of the lost files' paths.
QSet<QByteArray> VolumeSearch::startsOutwards()
{
    QSet<QByteArray> starts;
    for (const OldFolder &folder : m_oldFolders)
        if (hasOpen(folder))
            starts.insert(nearestSurvivor(folder.path));
    return starts;
}

DirectoryWalk::Visit VolumeSearch::visit(const DirectoryWalk::Folder &folder,
                                         std::span<const DirectoryWalk::Entry> entries)
{
    m_hits.clear();
    const bool mayHoldCopies = !m_trash.hold(folder.path);
    for (const DirectoryWalk::Entry &entry : entries)
        if (const LostFile *lost = m_wanted.first(entry.inode)) {
            __builtin_prefetch(lost);
            m_hits.push_back({&entry, lost});
        } else if (mayHoldCopies)
            m_candidates.consider(folder, entry);
    // In the order in which they lie on the disk and in the kernel's memory; folders give them in that of a hash.
    std::sort(m_hits.begin(), m_hits.end(),
              [](const Hit &left, const Hit &right) { return left.entry->inode < right.entry->inode; });
    for (const Hit &hit : m_hits) {
        hit.lost->stored.prefetch(); // needed after the kernel was asked
        if (!checkEntry(folder, *hit.entry) && mayHoldCopies)
            m_candidates.consider(folder, *hit.entry);
    }
    m_tick();
    const bool isDone = m_goal == Goal::LostFiles && m_openCount == 0;
    return isDone ? DirectoryWalk::Visit::Stop : DirectoryWalk::Visit::Continue;
}

/// Whether the entry is one of the lost files.
bool VolumeSearch::checkEntry(const DirectoryWalk::Folder &folder, const DirectoryWalk::Entry &entry)
{
    if (entry.type != EntryType::File && entry.type != EntryType::Folder)
        return false;
    auto present = examineFile(folder.descriptor, entry.name);
    if (!present || present->device != folder.device)
        return false;
    return m_wanted.visit(entry.inode, [&](LostFile &lost) {
        if (lost.isOpen && present->names > 1)
            (void)tryOldPath(lost); // of several names, the one that is known
        if (!lost.isOpen || !isStoredFile(lost.stored, *present, folder.descriptor, entry.name, m_trust))
            return false;
        takeEntry(lost, folder, entry.name, *present);
        return true;
    });
}

void VolumeSearch::takeEntry(LostFile &lost, const DirectoryWalk::Folder &folder, const char *name,
                             const PresentFile &file)
{
    NativePath::join(m_place.path, folder.path, name);
    m_place.file = file;
    m_place.volume = &m_volume;
    take(lost, m_place);
}

void VolumeSearch::take(LostFile &lost, const FoundPlace &place)
{
    lost.isOpen = false;
    --m_openCount;
    m_found(lost, place);
}
