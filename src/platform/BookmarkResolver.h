#pragma once

#include "BookmarkResolution.h"
#include "ContentSearch.h"
#include "LinkedPaths.h"
#include "LostFile.h"
#include "VolumeSearch.h"

#include <chrono>
#include <deque>
#include <memory>
#include <vector>

/// One round of looking for many files at once, however they were lost: each folder of each volume is read once at
/// most. Used once, on a thread that may wait for disks.
class BookmarkResolver
{
public:
    BookmarkResolver(const QList<QByteArray> &bookmarks, const BookmarkOptions &options);
    BookmarkResolver(const BookmarkResolver &) = delete;
    BookmarkResolver &operator=(const BookmarkResolver &) = delete;

    void run();

private:
    using Clock = std::chrono::steady_clock;
    using Status = BookmarkResolution::Status;

    void addLost(qsizetype index, const BookmarkView &stored);
    void mountVolumes();
    void placeOnVolumes();
    void findVolume(OldPlace &place) const;
    VolumeSearch &searchOf(const Volume &volume);
    [[nodiscard]] bool mayWalk(const Volume &volume) const;
    [[nodiscard]] bool acceptsCopies(qsizetype index) const;
    void searchByIdentity();
    void searchByContent();
    [[nodiscard]] QSet<QByteArray> pathsInUse();
    [[nodiscard]] bool examineCandidates(ContentSearch &search);

    void found(LostFile &lost, const FoundPlace &place);
    [[nodiscard]] static bool renew(QByteArray &fresh, const LostFile &lost, const FoundPlace &place,
                                    const QByteArray &seen);
    void close(LostFile &lost, Status status);
    void closeAllOpen(Status status);
    void add(BookmarkResolution resolution);
    void noteAdded();
    void flush();
    void tick();
    void report();

    const QList<QByteArray> m_bookmarks; ///< into which m_lost looks
    const BookmarkOptions m_options;
    const DirectoryWalk::Limits m_limits;
    std::shared_ptr<const Volumes> m_volumes;
    std::vector<LostFile> m_lost;
    std::deque<OldPlace> m_places;
    ContentCandidates m_wanted; ///< by the names of the lost files; every search begins with a copy of it
    std::vector<std::unique_ptr<VolumeSearch>> m_searches;
    std::vector<ContentSearch::Object> m_taken; ///< what was found to be one of the lost files
    LinkedPaths m_links;
    QList<BookmarkResolution> m_ready;
    BookmarkProgress m_progress;
    Clock::time_point m_lastReport = Clock::now();
};
