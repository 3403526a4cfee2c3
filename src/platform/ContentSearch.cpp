#include "ContentSearch.h"

#include "FileFingerprint.h"
#include "NativePath.h"
#include "OpenFile.h"
#include "PosixSupport.h"

#include <fcntl.h>

#include <algorithm>

ContentSearch::ContentSearch(QSet<Object> taken, QSet<QByteArray> pathsInUse)
    : m_taken(std::move(taken))
    , m_pathsInUse(std::move(pathsInUse))
{}

void ContentSearch::add(LostFile &lost)
{
    if (!lost.stored.fingerprint() || lost.stored.size() == 0)
        return;
    m_bySize[lost.stored.size()].append(m_claims.size());
    m_claims.push_back({&lost, {}, 0, false});
}

bool ContentSearch::examine(const Volume &volume, const ContentCandidates &candidates,
                            const std::function<bool()> &isCutShort)
{
    bool isCut = false;
    candidates.visit([&](const QByteArray &folder, const std::vector<const char *> &names) {
        isCut = isCutShort() || !examineFolder(volume, folder, names, isCutShort);
        return !isCut;
    });
    return !isCut && !candidates.hasOverflowed();
}

/// Asks for each file, which may be one of very many or on a slow disk. False when it was cut short.
bool ContentSearch::examineFolder(const Volume &volume, const QByteArray &folder,
                                  const std::vector<const char *> &names, const std::function<bool()> &isCutShort)
{
    const FileDescriptor open(
        Posix::retry([&] { return ::open(folder.constData(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC); }));
    if (!open.isValid())
        return true;
    for (const char *name : names) {
        if (isCutShort())
            return false;
        const auto present = examineFile(open.number(), name);
        if (present && wants(*present))
            examineCandidate({NativePath::join(folder, name), *present, &volume}, open.number(), name);
    }
    return true;
}

bool ContentSearch::wants(const PresentFile &file) const
{
    return file.identity.kind == FileKind::File && m_bySize.contains(file.identity.size) &&
           !m_taken.contains({file.device, file.identity.inode});
}

void ContentSearch::examineCandidate(const FoundPlace &place, int folder, const char *name)
{
    const FileIdentity &file = place.file.identity;
    if (m_pathsInUse.contains(place.path))
        return;
    const auto fingerprint = readFingerprintAt(folder, name, file.size);
    if (!fingerprint)
        return;
    for (const std::size_t at : m_bySize.value(file.size))
        if (m_claims[at].lost->stored.fingerprint() == fingerprint)
            claim(m_claims[at], place);
}

namespace {

ContentSearch::Object objectOf(const FoundPlace &place)
{
    return {place.file.device, place.file.identity.inode};
}

/// Where inode numbers are made up, a file with the same content and time of birth on the same volume is no copy.
bool isTheFileItself(const LostFile &lost, const FoundPlace &place)
{
    const auto birth = lost.stored.birth();
    return place.volume == lost.volume && place.volume->inodeTrust() == InodeTrust::MadeUp && birth &&
           birth == place.file.identity.birth;
}

}

void ContentSearch::claim(Claim &claim, const FoundPlace &place)
{
    const bool isProven = isTheFileItself(*claim.lost, place);
    if (claim.copies > 0 && (objectOf(claim.place) == objectOf(place) || (claim.isProven && !isProven)))
        return;
    const bool isBetter = claim.copies == 0 || (isProven && !claim.isProven);
    claim.copies = isBetter ? 1 : claim.copies + 1;
    claim.isProven = claim.isProven || isProven;
    if (isBetter)
        claim.place = place;
}

namespace {

/// Whether two bookmarks are of one file.
bool isSameFile(const BookmarkView &left, const BookmarkView &right)
{
    return left.volume() == right.volume() && left.inode() == right.inode() && left.birth() == right.birth() &&
           left.handle() == right.handle();
}

}

void ContentSearch::conclude(const Found &found, const Ambiguous &ambiguous) const
{
    QHash<Object, QList<const Claim *>> claimants;
    for (const Claim &claim : m_claims)
        if (claim.copies == 1)
            claimants[objectOf(claim.place)].append(&claim);
    const auto isUndisputed = [&](const Claim &claim) {
        const auto rivals = claimants.value(objectOf(claim.place));
        return claim.copies == 1 && std::all_of(rivals.cbegin(), rivals.cend(), [&](const Claim *other) {
                   return isSameFile(claim.lost->stored, other->lost->stored);
               });
    };
    for (const Claim &claim : m_claims)
        if (claim.copies > 0)
            isUndisputed(claim) ? found(*claim.lost, claim.place) : ambiguous(*claim.lost);
}
