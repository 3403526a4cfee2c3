#pragma once

#include "DispatchQueue.h"
#include "LibraryEditor.h"
#include "MainThreadLink.h"
#include "Trash.h"

#include <QHash>

#include <memory>

class QVUndoManager;

/// Moves the files of photos to the trash, with every photo of the library that shows one of them. Cannot be undone.
/// Main thread.
class PhotoTrash
{
public:
    /// `editor` and `undo` outlive it; `trash` is used on a thread of its own.
    PhotoTrash(LibraryEditor &editor, QVUndoManager &undo, std::shared_ptr<Trash> trash);

    /// Those whose files can be moved: looked at now, they are not lost.
    [[nodiscard]] static PIGroup::PhotoList trashable(const PIGroup::PhotoList &photos);

    struct Question
    {
        QString title;
        QString text;
    };
    [[nodiscard]] static Question question(const PIGroup::PhotoList &photos);

    /// Takes the photos out of all groups but the one for undeleted files and clears the undo history. The files follow
    /// in the background. Photos whose files could not be moved come back, in a new folder of that group, and an alert
    /// tells why.
    void trash(const PIGroup::PhotoList &photos);
    /// Files are still on their way.
    [[nodiscard]] bool isBusy() const { return !m_jobs.isEmpty(); }

private:
    /// A photo, and where its file was when it went.
    struct Trashed
    {
        std::shared_ptr<PIPhoto> photo;
        QString path;
    };

    void removeFromLibrary(const PIGroup::PhotoList &photos);
    void recycled(quint64 job, const QList<Trash::Failure> &failures);
    void takeBack(const PIGroup::PhotoList &photos, const QString &reason);

    LibraryEditor &m_editor;
    QVUndoManager &m_undo;
    std::shared_ptr<Trash> m_trash;
    MainThreadLink<PhotoTrash> m_link{*this};
    QHash<quint64, QList<Trashed>> m_jobs; ///< those under way
    quint64 m_lastJob = 0;
    DispatchQueue m_worker; ///< last: its blocks end first
};
