#pragma once

#include "ContentSearch.h"
#include "LostFile.h"

#include <QHash>
#include <QStringList>

#include <memory>
#include <stop_token>
#include <utility>
#include <vector>

class Volumes;

/// Tells which of many files at known paths are those of bookmarks whose own paths lead nowhere. A file is the one that
/// was meant by its identity; else by its content, when it is the only such copy among the paths. Used once, on a
/// thread that may wait for disks.
class BookmarkMatcher
{
public:
    /// By their places in the two lists. Several bookmarks of one file match the same path.
    struct Match
    {
        qsizetype path = 0;
        qsizetype bookmark = 0;
        bool byContent = false; ///< other copies may stand elsewhere
        bool operator==(const Match &) const = default;
    };

    /// `volumes`: what is mounted; what the system tells when null.
    explicit BookmarkMatcher(const QList<QByteArray> &bookmarks, std::shared_ptr<const Volumes> volumes = {});

    /// Looks at each path once; ordered by path, then by bookmark. What was not looked at when it is told to stop
    /// matches nothing.
    [[nodiscard]] QList<Match> match(const QStringList &paths, const std::stop_token &stop = {});

private:
    struct Candidate
    {
        qsizetype path = 0;
        FoundPlace place;
    };
    void findByIdentity(Candidate candidate);
    void findByContent(const std::stop_token &stop);

    const QList<QByteArray> m_bookmarks; ///< into which m_lost looks
    std::shared_ptr<const Volumes> m_volumes;
    std::vector<LostFile> m_lost;
    QMultiHash<quint64, LostFile *> m_byInode;
    std::vector<Candidate> m_unknown; ///< what is nothing by identity
    QSet<ContentSearch::Object> m_taken;
    QList<Match> m_matches;
};
