#pragma once

#include "PhotoSurvey.h"

/// Finds the photos that have a keyword, once for each folder in which they stand, while the main thread goes on with
/// other things. Main thread.
class KeywordSearch
{
public:
    /// Called with the photos that each piece of the library adds, in the order of the tree.
    using Found = std::function<void(const PIGroup::PhotoList &photos)>;

    /// `groups`, the library's, outlive the search.
    KeywordSearch(const PhotoSurvey::Groups &groups, Found found,
                  qsizetype photosPerPiece = PhotoSurvey::kPhotosPerPiece);

    /// Nothing that an earlier search found arrives from now on.
    void search(quint64 keyword);
    void cancel() { m_survey.cancel(); }
    [[nodiscard]] bool isRunning() const { return m_survey.isRunning(); }

private:
    const PhotoSurvey::Groups &m_groups;
    Found m_found;
    PIGroup::PhotoList m_piece;
    PhotoSurvey m_survey;
};
