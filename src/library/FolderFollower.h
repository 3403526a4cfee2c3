#pragma once

#include "FolderWatcher.h"

#include <QObject>
#include <QSet>
#include <QTimer>

#include <deque>
#include <memory>

class PIFileRef;
class PIFolder;
class PhotoLibrary;

/// Follows what happens on disk to the files of the folder on show: a file that goes missing is noted and reported, one
/// that is back is shown again, and one that was written is announced as changed. Looks at files in small slices.
class FolderFollower final : public QObject
{
    Q_OBJECT

public:
    explicit FolderFollower(PhotoLibrary &library, QObject *parent = nullptr);

    /// The folder whose files are followed from now on; null for none.
    void setFolder(const std::shared_ptr<PIFolder> &folder);
    /// Looks at every file of the folder, as when the window comes to the front after others were used.
    void lookAgain();

Q_SIGNALS:
    /// Files of the folder were looked at; some may have been noted as lost.
    void looked();

private:
    void watchFolders();
    void namesChanged(const QString &diskFolder);
    void fileWritten(const QString &path);
    void lookAtSome();

    PhotoLibrary &m_library;
    FolderWatcher m_watcher;
    std::shared_ptr<PIFolder> m_folder;
    QSet<QString> m_changedFolders; ///< on disk, since the last look
    std::deque<std::weak_ptr<PIFileRef>> m_toLookAt;
    QTimer m_settle; ///< a rename is two events, and a copy of many files thousands: they are awaited together
    QTimer m_slice;
};
