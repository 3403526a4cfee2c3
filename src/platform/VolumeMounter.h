#pragma once

#include "Volumes.h"

#include <QByteArray>
#include <QString>

#include <memory>

class QDBusConnection;

/// Has the desktop's disk service mount a volume that is attached but not mounted. It may ask the user for permission
/// or a password, and waits for that.
class VolumeMounter
{
public:
    /// On the system's message bus, or on another one where a service stands in.
    VolumeMounter();
    explicit VolumeMounter(const QDBusConnection &bus);
    ~VolumeMounter();
    VolumeMounter(const VolumeMounter &) = delete;
    VolumeMounter &operator=(const VolumeMounter &) = delete;

    /// By Volume::identity(). False when the volume is not attached, has no UUID to find it by, or was refused.
    [[nodiscard]] bool mount(const QByteArray &identity, QString *reason = nullptr);

private:
    std::unique_ptr<QDBusConnection> m_bus;
};
