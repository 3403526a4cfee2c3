#include "AlertPresenter.h"
#include "FileViewer.h"
#include "SystemLog.h"
#include "TestRunner.h"

#include <QDBusConnection>
#include <QDesktopServices>
#include <QProcess>
#include <QStandardPaths>
#include <QTest>
#include <QUrl>

/// A file manager on the message bus that notes what it is asked to show.
class FakeFileManager : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")

public:
    QStringList shown;

public Q_SLOTS:
    Q_SCRIPTABLE void ShowItems(const QStringList &addresses, const QString &) { shown = addresses; }
};

class TestDesktopServices : public QObject
{
    Q_OBJECT

    QProcess m_bus;
    QStringList m_opened;

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void revealAsksTheFileManager();
    void logLineIsOneLine();
    void alertBeforeThereIsAUserIsLoggedAndAnswered();

public Q_SLOTS:
    void noteOpened(const QUrl &address) { m_opened.append(address.toLocalFile()); }
};

void TestDesktopServices::initTestCase()
{
    QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "noteOpened");
    m_bus.start(QStringLiteral("dbus-daemon"),
                {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--print-address")});
    if (m_bus.waitForStarted() && m_bus.waitForReadyRead())
        qputenv("DBUS_SESSION_BUS_ADDRESS", m_bus.readLine().trimmed());
    else
        qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
}

void TestDesktopServices::cleanupTestCase()
{
    QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
    m_bus.terminate();
    m_bus.waitForFinished();
}

void TestDesktopServices::revealAsksTheFileManager()
{
    const QStringList paths = {QStringLiteral("/photos/ü 1#.jpg"), QStringLiteral("/photos/2.jpg"),
                               QStringLiteral("/other/3.jpg")};
    revealInFileViewer({});
    revealInFileViewer(paths); // nobody answers yet
    QTRY_COMPARE(m_opened, QStringList({QStringLiteral("/photos"), QStringLiteral("/other")}));
    if (m_bus.state() != QProcess::Running)
        QSKIP("no message bus can be started here");

    FakeFileManager manager;
    const QString address = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
    QDBusConnection bus = QDBusConnection::connectToBus(address, QStringLiteral("file manager"));
    QVERIFY(bus.registerObject(QStringLiteral("/org/freedesktop/FileManager1"), &manager,
                               QDBusConnection::ExportScriptableSlots));
    QVERIFY(bus.registerService(QStringLiteral("org.freedesktop.FileManager1")));
    revealInFileViewer(paths);
    QTRY_COMPARE(manager.shown.size(), 3);
    QCOMPARE(manager.shown.first(), QStringLiteral("file:///photos/%C3%BC%201%23.jpg"));
    QCOMPARE(m_opened.size(), 2);
    QDBusConnection::disconnectFromBus(QStringLiteral("file manager"));
}

void TestDesktopServices::logLineIsOneLine()
{
    QStringList lines;
    SystemLog::setSink([&](const QString &line) { lines.append(line); });
    SystemLog::write(QStringLiteral("Can't read \"a\r\nb\u2028c\u001b[2J\0d %s\""));
    SystemLog::setSink({});
    SystemLog::write(QStringLiteral("after the sink has gone"));
    QCOMPARE(lines, QStringList({QStringLiteral("Can't read \"a  b c [2J d %s\"")}));
}

void TestDesktopServices::alertBeforeThereIsAUserIsLoggedAndAnswered()
{
    QStringList lines;
    SystemLog::setSink([&](const QString &line) { lines.append(line); });
    const QStringList buttons = {QStringLiteral("Save"), QStringLiteral("Don't Save"), QStringLiteral("Cancel")};
    Alert alert{QStringLiteral("Title"), QStringLiteral("Message"), buttons};
    QCOMPARE(AlertPresenter::shared().present(alert), 2);
    alert.escapeButton = 0;
    QCOMPARE(AlertPresenter::shared().present(alert), 0);
    SystemLog::setSink({});
    QCOMPARE(lines.size(), 2);
    QVERIFY(lines.first().contains(QLatin1String("Message")));
}

REGISTER_TEST(TestDesktopServices)
#include "TestDesktopServices.moc"
