#include "BookmarkResolver.h"

#include "NativePath.h"
#include "PosixSupport.h"
#include "VolumeMounter.h"

#include <algorithm>

using namespace std::chrono_literals;

BookmarkResolver::BookmarkResolver(const QList<QByteArray> &bookmarks, const BookmarkOptions &options)
    : m_options(options)
    , m_limits{options.stop, Clock::now() + options.timeLimit}
    , m_volumes(options.volumes ? options.volumes : Volumes::current())
    , m_wanted(options.copyExtensions)
{
    m_progress.total = bookmarks.size();
    decode(bookmarks);
}

void BookmarkResolver::decode(const QList<QByteArray> &bookmarks)
{
    m_lost.reserve(static_cast<std::size_t>(bookmarks.size()));
    const BookmarkData *neighbour = nullptr;
    for (qsizetype index = 0; index < bookmarks.size(); ++index) {
        LostFile &lost = m_lost.emplace_back();
        lost.index = index;
        if (!lost.data.read(bookmarks[index], neighbour)) {
            m_lost.pop_back();
            add({index, Status::Missing});
            continue;
        }
        if (lost.data.fingerprint && acceptsCopies(index))
            m_wanted.addWantedName(NativePath::fileName(lost.data.volumePath));
        neighbour = &lost.data;
    }
}

void BookmarkResolver::run()
{
    if (m_options.mounting == BookmarkOptions::Mounting::Allowed)
        mountVolumes();
    placeOnVolumes();
    searchByIdentity();
    searchByContent();
    closeAllOpen(Status::Missing);
    report();
}

namespace {

std::shared_ptr<const Volumes> mountBySystem(const QByteArray &volume)
{
    return VolumeMounter().mount(volume) ? Volumes::current() : nullptr;
}

}

/// Each volume that is away is tried once.
void BookmarkResolver::mountVolumes()
{
    QSet<QByteArray> tried;
    for (const LostFile &lost : m_lost) {
        const QByteArray &volume = lost.data.volume;
        if (m_options.stop.stop_requested() || m_volumes->withIdentity(volume) || tried.contains(volume))
            continue;
        tried.insert(volume);
        if (const auto volumes = m_options.mount ? m_options.mount(volume) : mountBySystem(volume))
            m_volumes = volumes;
    }
}

/// Closes those whose volume is away: nothing is searched for them.
void BookmarkResolver::placeOnVolumes()
{
    const LostFile *neighbour = nullptr;
    for (LostFile &lost : m_lost) {
        if (placeOnVolume(lost, neighbour))
            searchOf(*lost.volume).add(lost);
        else
            close(lost, Status::VolumeAway);
        neighbour = &lost;
    }
}

/// Takes over from the bookmark before it what is the same, which in a library is nearly everything.
bool BookmarkResolver::placeOnVolume(LostFile &lost, const LostFile *neighbour) const
{
    const BookmarkData &data = lost.data;
    if (neighbour && neighbour->data.volume == data.volume && neighbour->data.mountPoint == data.mountPoint &&
        NativePath::parentView(neighbour->data.volumePath) == NativePath::parentView(data.volumePath)) {
        lost.volume = neighbour->volume;
        lost.mount = neighbour->mount;
        lost.oldFolder = neighbour->oldFolder;
        return lost.mount;
    }
    lost.volume = m_volumes->withIdentity(data.volume);
    lost.mount = lost.volume ? lost.volume->mountFor(data.volumePath, data.mountPoint) : nullptr;
    const auto path = lost.mount ? lost.mount->pathFor(data.volumePath) : std::nullopt;
    if (path)
        lost.oldFolder = *path == lost.mount->point ? *path : NativePath::parent(*path);
    return lost.mount;
}

VolumeSearch &BookmarkResolver::searchOf(const Volume &volume)
{
    for (const auto &search : m_searches)
        if (&search->volume() == &volume)
            return *search;
    const auto whenFound = [this](LostFile &lost, const FoundPlace &place) { found(lost, place); };
    m_searches.push_back(std::make_unique<VolumeSearch>(volume, m_wanted, m_limits, whenFound, [this] { tick(); }));
    return *m_searches.back();
}

bool BookmarkResolver::mayWalk(const Volume &volume) const
{
    if (m_options.reach == BookmarkOptions::Reach::OldFolders)
        return false;
    return !volume.isNetwork() || m_options.mounting == BookmarkOptions::Mounting::Allowed;
}

bool BookmarkResolver::acceptsCopies(qsizetype index) const
{
    return m_options.copies == BookmarkOptions::Copies::Accepted && !m_options.originalsOnly.contains(index);
}

void BookmarkResolver::searchByIdentity()
{
    for (const auto &search : m_searches) {
        search->searchOldFolders();
        if (mayWalk(search->volume()))
            search->searchOutwards();
        if (mayWalk(search->volume()) && !search->isCutShort())
            continue;
        const bool isOutOfReach = m_options.reach == BookmarkOptions::Reach::Everywhere && !search->isCutShort();
        for (LostFile &lost : m_lost)
            if (lost.isOpen && lost.volume == &search->volume())
                close(lost, isOutOfReach ? Status::Unreached : Status::Unsearched);
    }
}

void BookmarkResolver::searchByContent()
{
    if (m_options.copies == BookmarkOptions::Copies::Refused)
        return;
    const auto mayBeCopied = [this](const LostFile &lost) { return lost.isOpen && acceptsCopies(lost.index); };
    if (std::none_of(m_lost.cbegin(), m_lost.cend(), mayBeCopied))
        return;
    ContentSearch search(QSet<ContentSearch::Object>(m_taken.cbegin(), m_taken.cend()), pathsInUse());
    for (LostFile &lost : m_lost)
        if (mayBeCopied(lost))
            search.add(lost);
    if (!search.wantsAnything())
        return;
    if (examineCandidates(search))
        search.conclude([this](LostFile &lost, const FoundPlace &place) { found(lost, place); },
                        [this](LostFile &lost) { close(lost, Status::Ambiguous); });
    else
        closeAllOpen(Status::Unsearched);
}

QSet<QByteArray> BookmarkResolver::pathsInUse()
{
    QSet<QByteArray> paths;
    for (const QString &path : m_options.pathsInUse)
        paths.insert(m_links.withoutLinkedFolders(Posix::nativePath(path)));
    return paths;
}

/// Everywhere where the user's files may be. False when not everything was seen.
bool BookmarkResolver::examineCandidates(ContentSearch &search)
{
    for (const Volume &volume : m_volumes->all()) {
        const bool isSystem = std::all_of(volume.mounts.cbegin(), volume.mounts.cend(),
                                          [](const Mount &mount) { return mount.isSystem(); });
        if (isSystem || !mayWalk(volume))
            continue;
        VolumeSearch &walked = searchOf(volume);
        walked.walkRest();
        if (walked.isCutShort() || !search.examine(volume, walked.candidates(), [&] { return walked.isCutShort(); }))
            return false;
    }
    return true;
}

void BookmarkResolver::found(LostFile &lost, const FoundPlace &place)
{
    lost.isOpen = false;
    m_taken.emplace_back(place.file.device, place.file.identity.inode);
    const QByteArray seen = m_links.asSeenFrom(lost.data.givenPath, place.path);
    if (!QByteArrayView(seen).isValidUtf8()) {
        add({lost.index, Status::Unnameable});
        return;
    }
    BookmarkResolution resolution{lost.index, Status::Found, QString::fromUtf8(seen)};
    resolution.stale = refresh(lost, place, seen);
    if (resolution.stale)
        resolution.fresh = lost.data.encode();
    add(std::move(resolution));
}

namespace {

/// Whether that changed anything.
template<typename T>
bool update(T &stored, const T &present)
{
    if (stored == present)
        return false;
    stored = present;
    return true;
}

/// Takes over what is new of the file itself.
bool updateFile(BookmarkData &data, const FoundPlace &place, bool isSameVolume)
{
    FileIdentity &stored = data.file;
    const FileIdentity &seen = place.file.identity;
    const bool isSameObject = isSameVolume && seen.inode == stored.inode && seen.birth == stored.birth;
    const bool isSameContent = seen.size == stored.size && seen.modified == stored.modified;
    if (isSameObject && isSameContent && seen.kind == stored.kind)
        return false;
    FileIdentity present = seen;
    const char *path = place.path.constData();
    present.handle = isSameObject ? stored.handle : readHandle(kNoFolder, path);
    if (!isSameContent)
        data.fingerprint = readFingerprintAt(kNoFolder, path, present.size);
    return update(stored, present);
}

}

/// Makes the bookmark what it would be if made now, with as few questions as possible; whether that changed it.
bool BookmarkResolver::refresh(LostFile &lost, const FoundPlace &place, const QByteArray &seen)
{
    const Mount &mount = *place.volume->mountHolding(place.path);
    bool isStale = updateFile(lost.data, place, place.volume == lost.volume);
    isStale |= update(lost.data.volume, place.volume->identity);
    isStale |= update(lost.data.volumePath, mount.volumePathFor(place.path));
    isStale |= update(lost.data.mountPoint, mount.point);
    isStale |= update(lost.data.givenPath, seen == place.path ? QByteArray() : seen);
    return isStale;
}

void BookmarkResolver::close(LostFile &lost, Status status)
{
    lost.isOpen = false;
    add({lost.index, status});
}

void BookmarkResolver::closeAllOpen(Status status)
{
    for (LostFile &lost : m_lost)
        if (lost.isOpen)
            close(lost, status);
}

void BookmarkResolver::add(BookmarkResolution resolution)
{
    constexpr qsizetype kBatch = 500;
    ++m_progress.resolved;
    m_ready.append(std::move(resolution));
    if (m_ready.size() >= kBatch)
        flush();
}

void BookmarkResolver::flush()
{
    if (!m_ready.isEmpty() && m_options.resolved)
        m_options.resolved(m_ready);
    m_ready.clear();
}

void BookmarkResolver::tick()
{
    if (Clock::now() - m_lastReport >= 100ms)
        report();
}

void BookmarkResolver::report()
{
    m_lastReport = Clock::now();
    flush();
    m_progress.foldersRead = 0;
    for (const auto &search : m_searches)
        m_progress.foldersRead += search->foldersRead();
    if (m_options.progress)
        m_options.progress(m_progress);
}
