#pragma once

#include "BookmarkResolution.h"
#include "DispatchQueue.h"
#include "LocatorFileFinder.h"
#include "MainThreadLink.h"

#include <QSet>
#include <QTimer>

#include <functional>
#include <stop_token>

class PhotoLibrary;
class PIFileRef;

/// Looks in the background for the files that are not where they were, and lets the library's references and photos
/// follow what is found, batch by batch. All are first looked for near their old places, which is quick; the rest
/// together with one walk, and once only: what was not found then is looked for near its old place from then on, unless
/// another walk is asked for. Main thread.
class LostFileSearch
{
public:
    struct Summary
    {
        qsizetype found = 0;   ///< at other places
        qsizetype missing = 0; ///< looked for everywhere and not found, or not until the end
        bool cancelled = false;
        bool timedOut = false; ///< there was no time to look everywhere, or a disk did not answer
    };

    /// Called a few times a second while a walk is under way, with the number of files that it has found.
    using Progress = std::function<void(qsizetype found, const BookmarkProgress &walk)>;
    /// Called a few times a second while files are found.
    using Moved = std::function<void()>;
    /// Called when nothing is left to look for, also when that came to nothing.
    using Finished = std::function<void(const Summary &)>;

    /// `library` and `finder` outlive the search. `options` tells how far it may go.
    LostFileSearch(PhotoLibrary &library, LocatorFileFinder &finder, const BookmarkOptions &options = {});
    ~LostFileSearch();
    LostFileSearch(const LostFileSearch &) = delete;
    LostFileSearch &operator=(const LostFileSearch &) = delete;

    void setProgress(Progress progress) { m_progress = std::move(progress); }
    /// Tells for which files people wait: one that is no longer what stood at its path is announced as changed before
    /// it is looked for everywhere.
    void setIsWatched(std::function<bool(const PIFileRef &file)> isWatched) { m_isWatched = std::move(isWatched); }
    void setMoved(Moved moved) { m_moved = std::move(moved); }
    void setFinished(Finished finished) { m_finished = std::move(finished); }

    /// These were announced as changed: that is not to be done again when the search tells so too.
    void noteAnnounced(const QSet<const PIFileRef *> &files);
    /// Looks for everything that the finder noted since the last time; nothing happens when it noted nothing.
    void start();
    /// The next time that these are noted they are walked for again.
    void allowAnotherWalk(const QList<std::shared_ptr<PIFileRef>> &files);
    /// Ends the walk, or forgoes it. What was found so far stays; the rest stays lost.
    void cancel();
    [[nodiscard]] bool isRunning() const { return m_near.running || m_far.running; }

private:
    using Files = QList<LocatorFileFinder::Unsettled>;
    struct Stage
    {
        explicit Stage(const QString &label)
            : queue(label, 4, DispatchQueue::AtEnd::LeaveBehind) // a disk may not answer
        {}
        bool running = false;
        int run = 0;         ///< counts up when one begins, and when it is waited for no longer
        QTimer patience;     ///< with a disk
        qsizetype found = 0; ///< at other places
        qsizetype open = 0;  ///< missing ones that nothing was told of yet
        std::stop_source stop;
        DispatchQueue queue;
    };

    void run(Stage &stage, const Files &files);
    void take(Stage &stage, const QList<SearchedFile> &files);
    [[nodiscard]] qsizetype follow(const QList<SearchedFile> &files);
    void noteContent(PIFileRef &ref, bool isNews);
    void announceAtOnce(const Files &files);
    void tellOfFound();
    void tellOfRewritten();
    void takeProgress(Stage &stage, const BookmarkProgress &walk);
    void giveUp(Stage &stage);
    void end(Stage &stage, int run);
    void walkForRest();
    [[nodiscard]] QSet<QString> pathsInUse() const;

    PhotoLibrary &m_library;
    LocatorFileFinder &m_finder;
    const BookmarkOptions m_options;
    Progress m_progress;
    Moved m_moved;
    Finished m_finished;
    Summary m_summary;
    QSet<const PIFileRef *> m_shownAnew; ///< found, or lost for another reason than was thought; references stay
    QTimer m_tellOfFound;                ///< what tells photos goes through the whole library
    QSet<PIFileRef *> m_rewritten;       ///< with a new content
    QSet<PIFileRef *> m_touched;         ///< the same without being news: to be read again
    QTimer m_tellOfRewritten;            ///< a file may be written for a while: it is not to be read again all the time
    std::function<bool(const PIFileRef &)> m_isWatched;
    QSet<QString> m_announced; ///< guids of files that were, while it is not known yet what became of them
    QSet<QString> m_walkAgain; ///< guids of files
    Files m_rest;              ///< not found near their old places, and to be walked for
    MainThreadLink<LostFileSearch> m_link{*this};
    Stage m_near;
    Stage m_far;
};
