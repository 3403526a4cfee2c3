#pragma once

#include "OpenFile.h"

#include <QHash>
#include <QObject>
#include <QStringList>

#include <memory>

class QSocketNotifier;

/// Tells when files in a bounded number of folders come, go, are renamed or written. Main thread; never waits.
class FolderWatcher final : public QObject
{
    Q_OBJECT

public:
    /// Folders beyond this many are not watched: watches are few on a machine, and shared by all programs of a user.
    static constexpr int kMaxFolders = 256;

    explicit FolderWatcher(QObject *parent = nullptr);
    ~FolderWatcher() override;

    /// Watches exactly these folders from now on; those that cannot be watched are left out.
    void setFolders(const QStringList &folders);
    [[nodiscard]] qsizetype watchedCount() const { return m_pathOfWatch.size(); }

Q_SIGNALS:
    /// Names came or went, or the folder itself moved.
    void namesChanged(const QString &folder);
    /// A file was written and closed.
    void fileWritten(const QString &path);
    /// So much happened that some of it was not told: everything is to be looked at again.
    void overflowed();

private:
    void readEvents();
    void handle(int watch, quint32 mask, const QByteArray &name);

    FileDescriptor m_inotify;
    std::unique_ptr<QSocketNotifier> m_notifier;
    QHash<int, QString> m_pathOfWatch;
    QHash<QString, int> m_watchOfPath;
};
