#include "FolderWatcher.h"

#include <QFile>
#include <QSet>
#include <QSocketNotifier>

#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace {

constexpr quint32 kNameEvents = IN_CREATE | IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE;
constexpr quint32 kGoneEvents = IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT;
constexpr quint32 kEvents = kNameEvents | kGoneEvents | IN_CLOSE_WRITE;

QString folderAbove(const QString &path)
{
    return path.left(qMax<qsizetype>(path.lastIndexOf(u'/'), 0));
}

/// Without the root, which does not move.
QSet<QString> foldersAbove(const QSet<QString> &folders)
{
    QSet<QString> above;
    for (const QString &folder : folders)
        for (QString path = folderAbove(folder); !path.isEmpty() && !above.contains(path); path = folderAbove(path))
            if (!folders.contains(path) && above.size() < FolderWatcher::kMaxFoldersAbove)
                above.insert(path);
    return above;
}

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

void FolderWatcher::setFolders(const QStringList &folders, const Volumes &volumes)
{
    if (!m_inotify.isValid())
        return;
    QSet<QString> wanted;
    for (const QString &folder : folders)
        if (wanted.size() < kMaxFolders && !volumes.isRemote(QFile::encodeName(folder)))
            wanted.insert(folder);
    const QSet<QString> above = foldersAbove(wanted);
    const QStringList present = m_watchOfPath.keys();
    for (const QString &path : present) {
        const quint32 events = wanted.contains(path) ? kEvents : above.contains(path) ? kGoneEvents : 0;
        if (m_watches.value(m_watchOfPath.value(path)).value(path) != events)
            remove(path);
    }
    for (const QString &path : wanted)
        add(path, kEvents);
    for (const QString &path : above)
        add(path, kGoneEvents);
}

qsizetype FolderWatcher::watchedCount() const
{
    qsizetype count = 0;
    for (const EventsOfPath &paths : m_watches)
        count += std::count(paths.cbegin(), paths.cend(), kEvents);
    return count;
}

void FolderWatcher::add(const QString &path, quint32 events)
{
    if (m_watchOfPath.contains(path))
        return;
    const int watch = ::inotify_add_watch(m_inotify.number(), QFile::encodeName(path).constData(),
                                          events | IN_ONLYDIR | IN_EXCL_UNLINK | IN_MASK_ADD);
    if (watch < 0)
        return;
    m_watches[watch].insert(path, events);
    m_watchOfPath.insert(path, watch);
}

void FolderWatcher::remove(const QString &path)
{
    const auto watch = m_watches.find(m_watchOfPath.take(path));
    if (watch == m_watches.end())
        return;
    watch->remove(path);
    if (!watch->isEmpty())
        return;
    ::inotify_rm_watch(m_inotify.number(), watch.key());
    m_watches.erase(watch);
}

void FolderWatcher::removeTree(const QString &folder)
{
    const QStringList present = m_watchOfPath.keys();
    for (const QString &path : present)
        if (path == folder || path.startsWith(folder + u'/'))
            remove(path);
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
    const EventsOfPath paths = m_watches.value(watch);
    if (mask & (kGoneEvents | IN_IGNORED))
        for (auto path = paths.keyBegin(); path != paths.keyEnd(); ++path)
            removeTree(*path); // what is watched is no longer what stands at the path
    for (auto path = paths.cbegin(); path != paths.cend(); ++path)
        tell(path.key(), mask & path.value(), name);
}

void FolderWatcher::tell(const QString &path, quint32 events, const QByteArray &name)
{
    if (events & kGoneEvents)
        Q_EMIT folderGone(path);
    else if (events & kNameEvents)
        Q_EMIT namesChanged(path);
    else if (events & IN_CLOSE_WRITE)
        Q_EMIT fileWritten(path + u'/' + QFile::decodeName(name));
}
