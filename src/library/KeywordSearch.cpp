#include "KeywordSearch.h"

#include "PIPhoto.h"

#include <utility>

KeywordSearch::KeywordSearch(const PhotoSurvey::Groups &groups, Found found, qsizetype photosPerPiece)
    : m_groups(groups)
    , m_found(std::move(found))
    , m_survey(photosPerPiece)
{}

void KeywordSearch::search(quint64 keyword)
{
    m_piece.clear();
    m_survey.start(
        m_groups,
        [this, keyword](const std::shared_ptr<PIPhoto> &photo) {
            if (photo->hasKeyword(keyword))
                m_piece.append(photo);
        },
        [this](PhotoSurvey::Piece) {
            if (const PIGroup::PhotoList piece = std::exchange(m_piece, {}); !piece.isEmpty())
                m_found(piece);
        });
}
