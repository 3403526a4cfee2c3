#pragma once

#include "PhotoMatcher.h"
#include "PhotoWalk.h"

class PhotoLibrary;
class QDeadlineTimer;

/// A search through the library. It pauses when its time is up, so that the main thread can run it between other
/// things; what changes in between may be met as it was or as it is.
class PhotoSearch
{
public:
    /// Looks at the photos that `walk`, one through the groups of `library`, comes to.
    PhotoSearch(const FindCriteria &criteria, const PhotoLibrary &library, PhotoWalk walk);

    enum class Pause {
        Match,
        TimeIsUp,
        End, ///< no photo is left, and none will be
    };
    /// Goes on to the next match, or until the deadline.
    [[nodiscard]] Pause goOn(const QDeadlineTimer &deadline);
    /// The next match, however long it takes; nothing at the end.
    [[nodiscard]] std::optional<PhotoWalk::Place> next();
    /// Where the last match is.
    [[nodiscard]] const PhotoWalk::Place &place() const { return m_place; }

private:
    PhotoMatcher m_matcher;
    PhotoWalk m_walk;
    PhotoWalk::Place m_place;
};
