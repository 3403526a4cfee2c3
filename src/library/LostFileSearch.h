#pragma once

#include "BookmarkResolution.h"
#include "DispatchQueue.h"
#include "LocatorFileFinder.h"

#include <functional>
#include <memory>
#include <stop_token>

class PhotoLibrary;

/// Looks in the background for the files that are not where they were, all at once, and lets the library's references
/// and photos follow what is found, batch by batch. Main thread.
class LostFileSearch
{
public:
    struct Summary
    {
        qsizetype sought = 0;
        qsizetype found = 0; ///< at another place than before
        bool cancelled = false;
    };

    /// `progress` is called a few times a second while a search runs, `finished` when it ends.
    using Progress = std::function<void(const BookmarkProgress &)>;
    using Finished = std::function<void(const Summary &)>;

    /// Both outlive the search.
    LostFileSearch(PhotoLibrary &library, LocatorFileFinder &finder);
    ~LostFileSearch();
    LostFileSearch(const LostFileSearch &) = delete;
    LostFileSearch &operator=(const LostFileSearch &) = delete;

    void setProgress(Progress progress) { m_progress = std::move(progress); }
    void setFinished(Finished finished) { m_finished = std::move(finished); }

    /// Looks for everything that was noted as lost since the last search; nothing happens when nothing was. While a
    /// search runs, the next one begins when it ends.
    void start();
    /// What was found so far stays; the rest stays lost.
    void cancel();
    [[nodiscard]] bool isRunning() const { return m_running; }

private:
    struct Link;

    void take(const QList<SearchedFile> &files);
    void end(bool cancelled);
    [[nodiscard]] QSet<QString> pathsInUse() const;

    PhotoLibrary &m_library;
    LocatorFileFinder &m_finder;
    Progress m_progress;
    Finished m_finished;
    Summary m_summary;
    bool m_running = false;
    bool m_again = false;
    std::stop_source m_stop;
    std::shared_ptr<Link> m_link; ///< leads a worker's results here, as long as there is a here
    DispatchQueue m_queue;
};
