#pragma once

#include "PIGroup.h"

#include <QTimer>

#include <functional>

/// Goes through all photos of the library a piece at a time, between the events of the main thread, so that nobody
/// waits for it and no other thread reads what may be changing. Photos are visited in the order of the tree, once for
/// each folder in which they stand. The library may change meanwhile: visited is what it held at the start. Main
/// thread.
class PhotoSurvey
{
public:
    using Groups = QList<std::shared_ptr<PIGroup>>;
    using Visit = std::function<void(const std::shared_ptr<PIPhoto> &)>;
    enum class Piece { Middle, Last };
    /// Called after each piece. It and the visits may begin or end a survey.
    using PieceDone = std::function<void(Piece)>;

    static constexpr qsizetype kPhotosPerPiece = 4096;

    explicit PhotoSurvey(qsizetype photosPerPiece = kPhotosPerPiece);

    /// Ends one that is under way.
    void start(const Groups &groups, Visit visit, PieceDone pieceDone);
    void cancel();
    [[nodiscard]] bool isRunning() const { return m_turns.isActive(); }

private:
    void visitPiece();
    [[nodiscard]] bool isAtEnd() const { return m_list == m_lists.size(); }

    qsizetype m_photosPerPiece;
    QTimer m_turns;
    quint32 m_sequence = 0;            ///< counts the surveys, so that one that was ended stops at once
    QList<PIGroup::PhotoList> m_lists; ///< of the folders; shared with them until they change
    qsizetype m_list = 0;
    qsizetype m_photo = 0;
    Visit m_visit;
    PieceDone m_pieceDone;
};
