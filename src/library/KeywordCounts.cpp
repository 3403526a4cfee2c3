#include "KeywordCounts.h"

#include "KeywordVocabulary.h"
#include "PIPhoto.h"

#include <utility>

KeywordCounts::KeywordCounts(const PhotoSurvey::Groups &groups, const KeywordVocabulary &vocabulary, Counted counted,
                             qsizetype photosPerPiece)
    : m_groups(groups)
    , m_vocabulary(vocabulary)
    , m_counted(std::move(counted))
    , m_survey(photosPerPiece)
{}

void KeywordCounts::count()
{
    if (m_survey.isRunning())
        m_countsAgain = true;
    else
        start();
}

void KeywordCounts::start()
{
    m_countsAgain = false;
    m_photoNumber = 0;
    m_counting.clear();
    m_survey.start(
        m_groups, [this](const std::shared_ptr<PIPhoto> &photo) { add(*photo); },
        [this](PhotoSurvey::Piece piece) { pieceDone(piece); });
}

void KeywordCounts::add(const PIPhoto &photo)
{
    ++m_photoNumber;
    const auto keywords = photo.keywordIndexes();
    for (const quint64 keyword : keywords) {
        if (keyword >= static_cast<quint64>(m_vocabulary.count()))
            continue; // cannot be shown
        if (keyword >= m_counting.size())
            m_counting.resize(static_cast<size_t>(m_vocabulary.count()));
        Tally &tally = m_counting[keyword];
        if (std::exchange(tally.lastPhoto, m_photoNumber) != m_photoNumber)
            ++tally.photos;
    }
}

void KeywordCounts::pieceDone(PhotoSurvey::Piece piece)
{
    if (piece != PhotoSurvey::Piece::Last)
        return;
    m_tallies = std::exchange(m_counting, {});
    m_isCounted = true;
    if (m_countsAgain)
        start();
    m_counted();
}

std::optional<qsizetype> KeywordCounts::photosWith(quint64 keyword) const
{
    if (!m_isCounted)
        return std::nullopt;
    return keyword < m_tallies.size() ? m_tallies[keyword].photos : 0;
}
