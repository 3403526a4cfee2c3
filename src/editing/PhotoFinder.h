#pragma once

#include "FindCriteria.h"
#include "PhotoSearch.h"

class LibraryEditor;

/// Finds photos by the criteria of the last search: shows one match after the other in the window, or puts all of them
/// into a folder of search results. Main thread.
class PhotoFinder
{
public:
    /// `editor` outlives it.
    explicit PhotoFinder(LibraryEditor &editor);

    [[nodiscard]] const FindCriteria &currentFindCriteria() const { return m_criteria; }
    void setCurrentFindCriteria(const FindCriteria &criteria) { m_criteria = criteria; }

    enum class Outcome {
        Found, ///< and shown; for a folder of results also when nothing was
        NothingFound,
        Refused, ///< the folder of results could not be made
    };
    /// Finds what the criteria tell, from where they tell.
    Outcome find();
    /// Shows the next match after the selected photos.
    Outcome findAgain();
    /// Shows the last match before the selected photos.
    Outcome findPrevious();

    /// Where a search begins now; without a folder it is the library's first photo, also when the folder on show holds
    /// search results, which are never searched.
    [[nodiscard]] PhotoWalk::Place startOf(FindCriteria::Start start) const;
    [[nodiscard]] PhotoSearch search(const FindCriteria &criteria, const PhotoWalk::Place &start) const;
    /// Makes the folder visible and selects the photo alone.
    void show(const PhotoWalk::Place &place);
    /// The library's folder of that guid; null when there is none any more.
    [[nodiscard]] std::shared_ptr<PIFolder> folder(const QString &guid) const;

private:
    [[nodiscard]] std::shared_ptr<PIFolder> searchedFolder() const;
    Outcome showNext(const PhotoWalk::Place &start);
    Outcome storeAll();

    LibraryEditor &m_editor;
    FindCriteria m_criteria;
};
