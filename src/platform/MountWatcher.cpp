#include "MountWatcher.h"

#include <QSocketNotifier>

#include <fcntl.h>

MountWatcher::MountWatcher(QObject *parent)
    : QObject(parent)
    , m_mounts(::open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC))
{
    if (!m_mounts.isValid())
        return;
    // The kernel reports a changed list as an exceptional condition of the file.
    auto *notifier = new QSocketNotifier(m_mounts.number(), QSocketNotifier::Exception, this);
    connect(notifier, &QSocketNotifier::activated, this, &MountWatcher::mountsChanged);
}
