#include "PhotoSurvey.h"

#include "PIFolder.h"

#include <utility>

PhotoSurvey::PhotoSurvey(qsizetype photosPerPiece)
    : m_photosPerPiece(photosPerPiece)
{
    m_turns.setInterval(0);
    QObject::connect(&m_turns, &QTimer::timeout, &m_turns, [this] { visitPiece(); });
}

namespace {

void addLists(QList<PIGroup::PhotoList> &lists, const PIGroup &above)
{
    for (const auto &folder : above.folders()) {
        lists.append(std::as_const(*folder).photos());
        addLists(lists, *folder);
    }
}

}

void PhotoSurvey::start(const Groups &groups, Visit visit, PieceDone pieceDone)
{
    cancel();
    for (const auto &group : groups)
        addLists(m_lists, *group);
    m_visit = std::move(visit);
    m_pieceDone = std::move(pieceDone);
    m_turns.start();
}

void PhotoSurvey::cancel()
{
    ++m_sequence;
    m_turns.stop();
    m_lists.clear();
    m_list = 0;
    m_photo = 0;
}

void PhotoSurvey::visitPiece()
{
    const quint32 sequence = m_sequence;
    const auto visit = m_visit; // they may exchange themselves
    const auto pieceDone = m_pieceDone;
    for (qsizetype left = m_photosPerPiece; left > 0 && sequence == m_sequence && !isAtEnd();) {
        if (m_photo == m_lists.at(m_list).size()) {
            ++m_list;
            m_photo = 0;
            continue;
        }
        --left;
        const auto photo = m_lists.at(m_list).at(m_photo++);
        visit(photo);
    }
    if (sequence != m_sequence)
        return;
    const Piece piece = isAtEnd() ? Piece::Last : Piece::Middle;
    if (piece == Piece::Last)
        cancel();
    pieceDone(piece);
}
