#pragma once

#include "PhotoSurvey.h"

#include <optional>
#include <vector>

class KeywordVocabulary;

/// How many photos have each keyword, one that stands in several folders counting for each of them; counted while the
/// main thread goes on with other things. Main thread.
class KeywordCounts
{
public:
    using Counted = std::function<void()>;

    /// `groups` and `vocabulary`, the library's, outlive the counts. `counted` is called whenever there are new ones.
    KeywordCounts(const PhotoSurvey::Groups &groups, const KeywordVocabulary &vocabulary, Counted counted,
                  qsizetype photosPerPiece = PhotoSurvey::kPhotosPerPiece);

    /// While they are being counted: once more after it, so that frequent changes do not keep it from ending.
    void count();
    [[nodiscard]] bool isRunning() const { return m_survey.isRunning(); }
    /// Nothing before all photos have been counted.
    [[nodiscard]] std::optional<qsizetype> photosWith(quint64 keyword) const;

private:
    void start();
    void add(const PIPhoto &photo);
    void pieceDone(PhotoSurvey::Piece piece);

    /// Of one keyword.
    struct Tally
    {
        qsizetype photos = 0;
        qsizetype lastPhoto = 0; ///< by its number: a photo may have a keyword several times
    };

    const PhotoSurvey::Groups &m_groups;
    const KeywordVocabulary &m_vocabulary;
    Counted m_counted;
    PhotoSurvey m_survey;
    bool m_countsAgain = false;
    bool m_isCounted = false;
    qsizetype m_photoNumber = 0;
    std::vector<Tally> m_counting;
    std::vector<Tally> m_tallies;
};
