#include "FolderWatcher.h"

#include <QFile>
#include <QSet>
#include <QSocketNotifier>

#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cstring>

namespace {

constexpr quint32 kNameEvents =
    IN_CREATE | IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE | IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT;
constexpr quint32 kEvents = kNameEvents | IN_CLOSE_WRITE | IN_ONLYDIR | IN_EXCL_UNLINK;

}

FolderWatcher::FolderWatcher(QObject *parent)
    : QObject(parent)
    , m_inotify(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
{
    if (!m_inotify.isValid())
        return;
    m_notifier = std::make_unique<QSocketNotifier>(m_inotify.number(), QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &FolderWatcher::readEvents);
}

FolderWatcher::~FolderWatcher() = default;

void FolderWatcher::setFolders(const QStringList &folders)
{
    if (!m_inotify.isValid())
        return;
    const QSet<QString> wanted(folders.begin(), folders.begin() + qMin<qsizetype>(folders.size(), kMaxFolders));
    const QStringList present = m_watchOfPath.keys();
    for (const QString &path : present) {
        if (wanted.contains(path))
            continue;
        const int watch = m_watchOfPath.take(path);
        if (m_pathOfWatch.remove(watch) > 0)
            ::inotify_rm_watch(m_inotify.number(), watch);
    }
    for (const QString &path : wanted) {
        if (m_watchOfPath.contains(path))
            continue;
        const int watch = ::inotify_add_watch(m_inotify.number(), QFile::encodeName(path).constData(), kEvents);
        if (watch < 0 || m_pathOfWatch.contains(watch)) // two paths may lead to one folder
            continue;
        m_pathOfWatch.insert(watch, path);
        m_watchOfPath.insert(path, watch);
    }
}

void FolderWatcher::readEvents()
{
    alignas(inotify_event) std::array<char, 16384> buffer;
    for (;;) {
        const ssize_t length = ::read(m_inotify.number(), buffer.data(), buffer.size());
        if (length <= 0)
            return;
        for (ssize_t at = 0; at + static_cast<ssize_t>(sizeof(inotify_event)) <= length;) {
            inotify_event event;
            std::memcpy(&event, buffer.data() + at, sizeof event);
            const char *name = buffer.data() + at + sizeof event;
            handle(event.wd, event.mask, QByteArray(name, static_cast<qsizetype>(strnlen(name, event.len))));
            at += static_cast<ssize_t>(sizeof event + event.len);
        }
    }
}

void FolderWatcher::handle(int watch, quint32 mask, const QByteArray &name)
{
    if (mask & IN_Q_OVERFLOW) {
        Q_EMIT overflowed();
        return;
    }
    const QString path = m_pathOfWatch.value(watch);
    if (path.isEmpty())
        return;
    if (mask & IN_IGNORED) {
        m_pathOfWatch.remove(watch);
        m_watchOfPath.remove(path);
        return;
    }
    if (mask & IN_MOVE_SELF) { // what is watched is no longer what stands at the path
        ::inotify_rm_watch(m_inotify.number(), watch);
        m_pathOfWatch.remove(watch);
        m_watchOfPath.remove(path);
    }
    if (mask & kNameEvents)
        Q_EMIT namesChanged(path);
    else if (mask & IN_CLOSE_WRITE)
        Q_EMIT fileWritten(path + u'/' + QFile::decodeName(name));
}
