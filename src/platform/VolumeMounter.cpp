#include "VolumeMounter.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QVariantMap>

VolumeMounter::VolumeMounter()
    : VolumeMounter(QDBusConnection::systemBus())
{}

VolumeMounter::VolumeMounter(const QDBusConnection &bus)
    : m_bus(std::make_unique<QDBusConnection>(bus))
{}

VolumeMounter::~VolumeMounter() = default;

namespace {

QDBusMessage diskCall(const QString &object, const char *interface, const char *function)
{
    return QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.UDisks2"), object,
                                          QStringLiteral("org.freedesktop.UDisks2.") + QLatin1String(interface),
                                          QLatin1String(function));
}

/// The service's objects for the devices that hold the file system: usually one.
QDBusReply<QList<QDBusObjectPath>> devicesOf(const QByteArray &uuid, const QDBusConnection &bus)
{
    QDBusMessage call = diskCall(QStringLiteral("/org/freedesktop/UDisks2/Manager"), "Manager", "ResolveDevice");
    call << QVariantMap{{QStringLiteral("uuid"), QString::fromLatin1(uuid)}} << QVariantMap();
    return bus.call(call);
}

}

bool VolumeMounter::mount(const QByteArray &identity, QString *reason)
{
    constexpr int kPatience = 120'000; // milliseconds: somebody may be typing a password
    const QByteArray prefix = "uuid:";
    QString why = QStringLiteral("No such volume is attached");
    if (identity.startsWith(prefix)) {
        const auto devices = devicesOf(identity.sliced(prefix.size()), *m_bus);
        for (const QDBusObjectPath &device : devices.value()) {
            QDBusMessage call = diskCall(device.path(), "Filesystem", "Mount");
            call << QVariantMap();
            const QDBusMessage answer = m_bus->call(call, QDBus::Block, kPatience);
            if (answer.type() == QDBusMessage::ReplyMessage)
                return true;
            why = answer.errorMessage();
        }
        if (!devices.isValid())
            why = devices.error().message();
    }
    if (reason)
        *reason = why;
    return false;
}
