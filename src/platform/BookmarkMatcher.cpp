#include "BookmarkMatcher.h"

#include "PosixSupport.h"
#include "StoredFile.h"

#include <algorithm>

BookmarkMatcher::BookmarkMatcher(const QList<QByteArray> &bookmarks, std::shared_ptr<const Volumes> volumes)
    : m_bookmarks(bookmarks)
    , m_volumes(volumes ? std::move(volumes) : Volumes::current())
{
    m_lost.reserve(static_cast<std::size_t>(bookmarks.size()));
    for (qsizetype index = 0; index < bookmarks.size(); ++index) {
        const auto view = BookmarkView::of(bookmarks[index]);
        if (!view || view->kind() != FileKind::File)
            continue;
        m_lost.push_back(
            {.index = index,
             .stored = *view,
             .inode = view->inode(),
             .volume = m_volumes->withIdentity(view->volume().toByteArray(), view->mountPoint().toByteArray())});
        m_byInode.insert(view->inode(), &m_lost.back());
    }
}

QList<BookmarkMatcher::Match> BookmarkMatcher::match(const QStringList &paths, const std::stop_token &stop)
{
    for (qsizetype index = 0; index < paths.size() && !m_lost.empty() && !stop.stop_requested(); ++index) {
        const QByteArray path = Posix::nativePath(paths[index]);
        const auto present = examineFile(kNoFolder, path.constData());
        const Volume *volume = present ? m_volumes->withMountId(present->mountId).volume : nullptr;
        if (volume && present->identity.kind == FileKind::File)
            findByIdentity({index, {path, *present, volume}});
    }
    findByContent(stop);
    std::sort(m_matches.begin(), m_matches.end(), [](const Match &left, const Match &right) {
        return std::pair(left.path, left.bookmark) < std::pair(right.path, right.bookmark);
    });
    return m_matches;
}

void BookmarkMatcher::findByIdentity(Candidate candidate)
{
    FoundPlace &place = candidate.place;
    const InodeTrust trust = place.volume->inodeTrust();
    bool isKnown = false;
    for (LostFile *lost : m_byInode.values(place.file.identity.inode)) {
        if (!lost->isOpen || lost->volume != place.volume ||
            !isStoredFile(lost->stored, place.file, kNoFolder, place.path.constData(), trust))
            continue;
        lost->isOpen = false;
        isKnown = true;
        m_matches.append({candidate.path, lost->index});
    }
    if (isKnown)
        m_taken.insert({place.file.device, place.file.identity.inode});
    else
        m_unknown.push_back(std::move(candidate));
}

/// Nothing when it is told to stop: whether a copy is the only one is known at the end.
void BookmarkMatcher::findByContent(const std::stop_token &stop)
{
    ContentSearch search(m_taken, {});
    for (LostFile &lost : m_lost)
        if (lost.isOpen)
            search.add(lost);
    QHash<QByteArray, qsizetype> pathOf;
    for (const Candidate &candidate : m_unknown) {
        if (stop.stop_requested())
            return;
        if (!search.wants(candidate.place.file))
            continue;
        pathOf.insert(candidate.place.path, candidate.path);
        search.examineCandidate(candidate.place, kNoFolder, candidate.place.path.constData());
    }
    search.conclude(
        [&](const LostFile &lost, const FoundPlace &place) {
            m_matches.append({pathOf.value(place.path), lost.index, /*byContent=*/true});
        },
        [](const LostFile &) {});
}
