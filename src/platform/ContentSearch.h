#pragma once

#include "ContentCandidates.h"
#include "LostFile.h"

#include <QHash>
#include <QSet>

#include <functional>
#include <utility>
#include <vector>

/// Looks among candidates for the content of files that are nowhere to be found by identity. A copy is accepted only
/// when it is the only one and only one lost file can claim it.
class ContentSearch
{
public:
    /// A file by device and inode number.
    using Object = std::pair<quint64, quint64>;

    /// `taken` files are something else already, as are those with a path of `pathsInUse`.
    ContentSearch(QSet<Object> taken, QSet<QByteArray> pathsInUse);

    /// Adds a file that is missing; passed over when its content is not known or empty.
    void add(LostFile &lost);
    [[nodiscard]] bool wantsAnything() const { return !m_bySize.isEmpty(); }

    /// Examines the candidates of one volume. False when `isCutShort` said so before the end.
    [[nodiscard]] bool examine(const Volume &volume, const ContentCandidates &candidates,
                               const std::function<bool()> &isCutShort);
    /// Whether a file may be a copy, as far as its facts tell.
    [[nodiscard]] bool wants(const PresentFile &file) const;
    /// Examines one such file, which stands at `name` inside the open folder (see kNoFolder).
    void examineCandidate(const FoundPlace &place, int folder, const char *name);

    /// After all volumes were examined: calls one of the two for each lost file for which a copy was met.
    using Found = std::function<void(LostFile &lost, const FoundPlace &place)>;
    using Ambiguous = std::function<void(LostFile &lost)>;
    void conclude(const Found &found, const Ambiguous &ambiguous) const;

private:
    struct Claim
    {
        LostFile *lost = nullptr;
        FoundPlace place;      ///< of the copy met first
        qsizetype copies = 0;  ///< different files, not different names
        bool isProven = false; ///< the copy is the file itself, as far as its volume can tell
    };

    [[nodiscard]] bool examineFolder(const Volume &volume, const QByteArray &folder,
                                     const std::vector<const char *> &names, const std::function<bool()> &isCutShort);
    void claim(Claim &claim, const FoundPlace &place);

    QSet<Object> m_taken;
    QSet<QByteArray> m_pathsInUse;
    std::vector<Claim> m_claims;
    QHash<quint64, QList<std::size_t>> m_bySize; ///< into m_claims
};
