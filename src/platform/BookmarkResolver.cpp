#include "BookmarkResolver.h"

#include "BookmarkData.h"
#include "NativePath.h"
#include "PosixSupport.h"
#include "VolumeMounter.h"

#include <algorithm>

using namespace std::chrono_literals;

BookmarkResolver::BookmarkResolver(const QList<QByteArray> &bookmarks, const BookmarkOptions &options)
    : m_bookmarks(bookmarks)
    , m_options(options)
    , m_limits{options.stop, Clock::now() + options.timeLimit}
    , m_volumes(options.volumes ? options.volumes : Volumes::current())
    , m_wanted(options.copyExtensions)
{
    m_progress.total = bookmarks.size();
    m_lost.reserve(static_cast<std::size_t>(bookmarks.size()));
    m_taken.reserve(m_lost.capacity());
    for (qsizetype index = 0; index < bookmarks.size(); ++index)
        if (const auto view = BookmarkView::of(bookmarks[index]))
            addLost(index, *view);
        else
            add({index, Status::Missing});
}

namespace {

/// Neighbours in a library nearly always did.
bool stoodInOneFolder(const BookmarkView &left, const BookmarkView &right)
{
    return left.kind() == FileKind::File && right.kind() == FileKind::File && left.volume() == right.volume() &&
           left.mountPoint() == right.mountPoint() &&
           NativePath::parentView(left.volumePath()) == NativePath::parentView(right.volumePath());
}

}

void BookmarkResolver::addLost(qsizetype index, const BookmarkView &stored)
{
    if (m_places.empty() || !stoodInOneFolder(m_lost.back().stored, stored))
        m_places.push_back({.example = stored});
    m_lost.push_back({.index = index, .stored = stored, .inode = stored.inode(), .place = &m_places.back()});
    if (stored.fingerprint() && acceptsCopies(index))
        m_wanted.addWantedName(NativePath::fileName(stored.volumePath()));
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
    for (const OldPlace &place : m_places) {
        const QByteArray volume = place.example.volume().toByteArray();
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
    for (OldPlace &place : m_places)
        findVolume(place);
    for (LostFile &lost : m_lost) {
        lost.volume = lost.place->volume;
        if (lost.place->mount)
            searchOf(*lost.volume).add(lost);
        else
            close(lost, Status::VolumeAway);
    }
}

void BookmarkResolver::findVolume(OldPlace &place) const
{
    const QByteArray volumePath = place.example.volumePath().toByteArray();
    const QByteArray point = place.example.mountPoint().toByteArray();
    place.volume = m_volumes->withIdentity(place.example.volume().toByteArray(), point);
    place.mount = place.volume ? place.volume->mountFor(volumePath, point) : nullptr;
    const auto path = place.mount ? place.mount->pathFor(volumePath) : std::nullopt;
    if (path)
        place.folder = *path == place.mount->point ? *path : NativePath::parent(*path);
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
    flush(); // what is known is not to wait for disks
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

/// Networks are not walked for copies, and to follow a link there may take forever.
QSet<QByteArray> BookmarkResolver::pathsInUse()
{
    QSet<QByteArray> paths;
    for (const QString &text : m_options.pathsInUse) {
        const QByteArray path = Posix::nativePath(text);
        if (m_options.mounting == BookmarkOptions::Mounting::Allowed || !m_volumes->isRemote(path))
            paths.insert(m_links.withoutLinkedFolders(path));
    }
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
    const QByteArrayView given = lost.stored.givenPath();
    QByteArray linked;
    if (!given.isEmpty())
        linked = m_links.asSeenFrom(given.toByteArray(), place.path);
    const QByteArray &seen = given.isEmpty() ? place.path : linked;
    if (!QByteArrayView(seen).isValidUtf8()) {
        add({lost.index, Status::Unnameable});
        return;
    }
    BookmarkResolution &resolution = m_ready.emplaceBack();
    resolution.index = lost.index;
    resolution.status = Status::Found;
    resolution.path = QString::fromUtf8(seen);
    resolution.stale = renew(resolution.fresh, lost, place, seen);
    noteAdded();
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

bool isUnchanged(const BookmarkView &stored, const FileIdentity &seen)
{
    return seen.inode == stored.inode() && seen.birth == stored.birth() && seen.size == stored.size() &&
           seen.modified == stored.modified() && seen.kind == stored.kind();
}

/// Takes over what is new of the file itself.
bool updateFile(BookmarkData &data, const FoundPlace &place, bool isSameVolume)
{
    FileIdentity &stored = data.file;
    const FileIdentity &seen = place.file.identity;
    const bool isSameObject = isSameVolume && seen.inode == stored.inode && seen.birth == stored.birth;
    const bool isSameContent = seen.size == stored.size && seen.modified == stored.modified;
    FileIdentity present = seen;
    const char *path = place.path.constData();
    present.handle = isSameObject ? stored.handle : readHandle(kNoFolder, path);
    if (!isSameContent)
        data.fingerprint = readFingerprintAt(kNoFolder, path, present.size);
    return update(stored, present);
}

}

/// Makes the bookmark what it would be if made now, with as few questions as possible; whether that changed it.
bool BookmarkResolver::renew(QByteArray &fresh, const LostFile &lost, const FoundPlace &place, const QByteArray &seen)
{
    const BookmarkView &stored = lost.stored;
    const Mount &mount = *place.volume->mountHolding(place.path);
    const bool isWhole = mount.root == mount.point;
    const QByteArray other = isWhole ? QByteArray() : mount.volumePathFor(place.path);
    const QByteArrayView volumePath = isWhole ? place.path : other;
    const QByteArrayView given = seen == place.path ? QByteArrayView() : QByteArrayView(seen);
    const bool isMoved =
        stored.volumePath() != volumePath || stored.mountPoint() != mount.point || stored.givenPath() != given;
    if (place.volume == lost.volume && isUnchanged(stored, place.file.identity)) {
        if (isMoved)
            fresh = stored.movedTo(volumePath, mount.point, given);
        return isMoved;
    }
    BookmarkData data = BookmarkData::of(stored);
    bool isStale = updateFile(data, place, place.volume == lost.volume) || isMoved;
    isStale |= update(data.volume, place.volume->identity);
    data.volumePath = volumePath.toByteArray();
    data.mountPoint = mount.point;
    data.givenPath = given.toByteArray();
    if (isStale)
        fresh = data.encode();
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
    m_ready.append(std::move(resolution));
    noteAdded();
}

void BookmarkResolver::noteAdded()
{
    constexpr qsizetype kBatch = 500;
    ++m_progress.resolved;
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
