#pragma once

#include "FileCheck.h"
#include "FolderWatcher.h"
#include "PIFileRef.h"

#include <QList>
#include <QObject>
#include <QSet>
#include <QTimer>

#include <chrono>
#include <memory>

class PIFolder;
class PhotoLibrary;

/// Follows what happens on disk to the files of the folder on show: a file that goes missing is noted and shown as
/// lost, one that is back is shown again, and one that was written is announced as changed. Main thread, which never
/// looks at a file itself.
class FolderFollower final : public QObject
{
    Q_OBJECT

public:
    /// `library` and `finder` outlive this.
    FolderFollower(PhotoLibrary &library, LocatorFileFinder &finder, QObject *parent = nullptr);

    /// How long one look at files may hold up the next when a disk does not answer.
    void setPatience(std::chrono::milliseconds patience) { m_patience.setInterval(patience); }
    /// The folder whose files are followed from now on; null for none. Its files are not looked at yet.
    void setFolder(const std::shared_ptr<PIFolder> &folder);
    [[nodiscard]] const std::shared_ptr<PIFolder> &folder() const { return m_folder; }
    /// Watches where the folder's files are now: some moved, or came into it.
    void watchAgain();
    /// Looks at every file of the folder, as when the window comes to the front after others were used.
    void lookAgain();
    /// Looks at these files as well.
    void lookAt(const QList<std::shared_ptr<PIFileRef>> &files);
    /// Whether the file stands in a folder that is watched.
    [[nodiscard]] bool isWatched(const PIFileRef &file) const;

Q_SIGNALS:
    /// These files were written, which everybody was told, and will be searched for because they are not as they were.
    void announced(const QSet<const PIFileRef *> &files);

private:
    void namesChanged(const QString &diskFolder);
    void folderGone(const QString &diskFolder);
    void fileWritten(const QString &path);
    void takeUpEvents();
    void take(const FileCheck::Files &changed, const FileCheck::Files &doubtful);
    void look();
    void endLook(int look);
    void goOn();

    PhotoLibrary &m_library;
    LocatorFileFinder &m_finder;
    FolderWatcher m_watcher;
    std::shared_ptr<PIFolder> m_folder;
    QSet<QString> m_changedFolders; ///< on disk, since events were last taken up
    QSet<QString> m_goneFolders;
    QSet<QString> m_writtenPaths;
    QSet<QString> m_watched;   ///< folders on disk
    QSet<QString> m_announced; ///< guids of written files that have not been looked at since
    QSet<QString> m_toLookAt;  ///< guids of files; those that are being looked at are no longer among them
    int m_look = 0;            ///< under way; 0 for none
    QSet<QString> m_lookedAt;
    QSet<QString> m_unanswered; ///< guids in looks that are waited for no longer
    QTimer m_patience;
    QTimer m_settle; ///< a rename is two events, and a copy of many files thousands: they are taken up together
    FileCheck m_check;
};
