#pragma once

#include "GridLayout.h"

#include <functional>
#include <vector>

/// What the scheduler knows of the tiles, by position. Main thread.
class TileSource
{
public:
    virtual ~TileSource() = default;

    /// Brings the tile's picture from memory or from the thumbnail cache. True when the thumbnail must be requested.
    virtual bool prepare(int index) = 0;
    /// True when the tile's thumbnail seems never to have been made; looks at the photo alone, not at the disk.
    [[nodiscard]] virtual bool lacksThumbnail(int index) const = 0;
    /// Starts making the thumbnail.
    virtual void request(int index) = 0;
    /// Thumbnails being made for anybody.
    [[nodiscard]] virtual int pendingJobs() const = 0;
    /// Every visible tile has been prepared once since the view moved.
    virtual void visiblePrepared() = 0;
};

/// Decides whose thumbnail is asked for next: the visible tiles from the top, then a page either side so that scrolling
/// finds them ready, then the rest of the folder outward. Few jobs are in flight at a time, so a tile that scrolls away
/// before its turn is never asked for. A photo whose thumbnail never comes holds nothing up.
class ThumbnailScheduler
{
public:
    enum class Outcome {
        More,    ///< time was up; go on in the next turn of the event loop
        Blocked, ///< jobs are running; go on when one has ended, and look again soon in case nobody tells
        Done
    };

    /// `visibleJobs` may be in flight for tiles on show, `idleJobs` for others.
    ThumbnailScheduler(TileSource &source, int visibleJobs, int idleJobs);

    /// Other photos: everything is to be looked at anew.
    void reset(int count);
    void setVisible(GridLayout::Span visible);
    /// Looks at the tiles on show again.
    void recheckVisible();
    /// Works until `timeIsUp` says so; at least one step is made.
    [[nodiscard]] Outcome advance(const std::function<bool()> &timeIsUp);

private:
    enum class Step { Went, Blocked, Finished };
    [[nodiscard]] Step prepareVisible();
    [[nodiscard]] Step requestVisible();
    [[nodiscard]] Step visitNext();
    [[nodiscard]] Step lookOnceMore();
    [[nodiscard]] int nextOutward();

    TileSource &m_source;
    int m_visibleJobs;
    int m_idleJobs;
    int m_count = 0;
    GridLayout::Span m_visible;
    int m_nextVisible = 0;
    bool m_preparedTold = false;
    std::vector<int> m_lacking; // visible tiles to request, in order
    size_t m_nextLacking = 0;
    int m_below = 0; // next tiles of the way outward
    int m_above = -1;
    bool m_downNext = true;
    int m_held = -1;           // found lacking on the way outward, waiting for a place
    bool m_allVisited = false; // the way outward was walked to both ends since the last reset
    bool m_requested = false;  // since the tiles on show were last looked at in quiet
};
