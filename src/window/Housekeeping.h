#pragma once

#include "DispatchQueue.h"
#include "FileCommands.h"
#include "MakeProgressDialog.h"
#include "OrphanList.h"

#include <QObject>
#include <QTimer>

#include <memory>
#include <stop_token>

class ImportRunner;
class LibraryEditor;
class QWidget;

/// The window's commands around files: looking for image files that the library does not know, and emptying the folder
/// of cached thumbnails. Both run in the background.
class Housekeeping final : public QObject
{
    Q_OBJECT

public:
    /// All outlive it.
    Housekeeping(LibraryEditor &editor, ImportRunner &importRunner, QWidget &window);
    ~Housekeeping() override;

    /// Searches the folder and shows what was found, or that nothing was, in place of a search that runs. Nothing
    /// happens without a folder.
    void findOrphansCore(const QString &folder);
    /// Gives the missing photos that were picked their files back and adds the other files that were.
    void orphansPicked(const OrphanList &orphans, bool success);
    void clearCaches();

private:
    struct Search;

    void stopSearch();
    void showProgress();
    void reattach(const QList<FileCommands::MovedFile> &files);
    static void tellGone(qsizetype count);
    static void tellSkipped(const OrphanSearchResult &result);
    void searchEnded(const QString &folder, const OrphanSearchResult &result);

    LibraryEditor &m_editor;
    ImportRunner &m_importRunner;
    QWidget &m_window;
    std::shared_ptr<Search> m_search; ///< null: none runs
    ProgressDialogPointer m_progress;
    QTimer m_progressTimer;
    DispatchQueue m_worker; ///< last: its blocks end first
};
