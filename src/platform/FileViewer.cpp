#include "FileViewer.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDesktopServices>
#include <QFileInfo>
#include <QUrl>

#include <utility>

namespace {

void openFoldersOf(const QStringList &paths)
{
    QStringList folders;
    for (const QString &path : paths)
        folders.append(QFileInfo(path).absolutePath());
    folders.removeDuplicates();
    for (const QString &folder : std::as_const(folders))
        QDesktopServices::openUrl(QUrl::fromLocalFile(folder));
}

QDBusMessage showItemsCall(const QStringList &paths)
{
    QStringList addresses;
    for (const QString &path : paths)
        addresses.append(QString::fromUtf8(QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath()).toEncoded()));
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    call << addresses << QString();
    return call;
}

}

void revealInFileViewer(const QStringList &paths)
{
    if (paths.isEmpty())
        return;
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        openFoldersOf(paths);
        return;
    }
    auto *watcher = new QDBusPendingCallWatcher(bus.asyncCall(showItemsCall(paths)), QCoreApplication::instance());
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, [watcher, paths] {
        watcher->deleteLater();
        if (watcher->isError())
            openFoldersOf(paths);
    });
}
