#pragma once

#include "OpenFile.h"

#include <QObject>

/// Tells when something was mounted or unmounted, so that files of a volume that was away can be looked at again.
/// Several changes at once are told once. Main thread.
class MountWatcher final : public QObject
{
    Q_OBJECT

public:
    explicit MountWatcher(QObject *parent = nullptr);

Q_SIGNALS:
    void mountsChanged();

private:
    FileDescriptor m_mounts;
};
