#pragma once

#include "OpenFile.h"
#include "Volumes.h"

#include <QHash>
#include <QObject>
#include <QStringList>

#include <memory>

class QSocketNotifier;

/// Tells when files in a bounded number of folders come, go, are renamed or written, and when one of those folders, or
/// one above them, is moved. Main thread; never waits.
class FolderWatcher final : public QObject
{
    Q_OBJECT

public:
    /// Folders beyond this many are not watched: watches are few on a machine, and shared by all programs of a user.
    static constexpr int kMaxFolders = 256;
    /// Likewise for the folders above, of which only moves are told.
    static constexpr int kMaxFoldersAbove = 64;

    explicit FolderWatcher(QObject *parent = nullptr);
    ~FolderWatcher() override;

    /// Watches exactly these folders from now on; those that cannot be watched are left out, and so are those on a
    /// network, where even to begin may take forever.
    void setFolders(const QStringList &folders, const Volumes &volumes = *Volumes::current());
    /// How many of these folders are watched, those above not counted.
    [[nodiscard]] qsizetype watchedCount() const;

Q_SIGNALS:
    /// Names came or went.
    void namesChanged(const QString &folder);
    /// The folder is no longer what stands at its path. Nothing beneath it is watched from then on.
    void folderGone(const QString &folder);
    /// A file was written and closed.
    void fileWritten(const QString &path);
    /// So much happened that some of it was not told: everything is to be looked at again.
    void overflowed();

private:
    void readEvents();
    void handle(int watch, quint32 mask, const QByteArray &name);
    void add(const QString &path, quint32 events);
    void remove(const QString &path);
    void removeTree(const QString &folder);
    void tell(const QString &path, quint32 events, const QByteArray &name);

    /// The paths by which one folder is wanted, and what is to be told of it by each.
    using EventsOfPath = QHash<QString, quint32>;

    FileDescriptor m_inotify;
    std::unique_ptr<QSocketNotifier> m_notifier;
    QHash<int, EventsOfPath> m_watches;
    QHash<QString, int> m_watchOfPath;
};
