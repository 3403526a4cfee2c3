#include "DesktopEntry.h"
#include "RunningServices.h"
#include "TestRunner.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

namespace {

const QString kDropbox = QStringLiteral("com.getdropbox.dropbox");
const QString kDrive = QStringLiteral("com.google.GoogleDrive");

bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly) &&
           file.write(bytes) == bytes.size();
}

QByteArray entryWith(const QByteArray &lines)
{
    return "# comment\n[Desktop Entry]\nType=Application\n" + lines + "\n[Desktop Action x]\nExec=other\n";
}

}

class TestRunningServices : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_dir;
    QStringList m_launched;
    QString m_launchedIn;

    QString path(const char *name) const { return m_dir->filePath(QString::fromUtf8(name)); }
    RunningServices services()
    {
        const auto launch = [this](const QStringList &command, const QString &workingFolder) {
            m_launched = command;
            m_launchedIn = workingFolder;
            return command.first() != QLatin1String("broken");
        };
        return RunningServices({path("proc"), {path("own"), path("shared")}, launch});
    }

private Q_SLOTS:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        m_launched.clear();
        QVERIFY(writeFile(path("proc/1/cmdline"), QByteArray("/sbin/init\0", 11)));
        QVERIFY(writeFile(path("proc/1/comm"), "init\n"));
    }

    void aRunningServiceIsKnownByItsProcess_data()
    {
        QTest::addColumn<QString>("process");
        QTest::addColumn<QByteArray>("commandLine");
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<QString>("running");
        const QString number = QStringLiteral("77");
        QTest::newRow("by the file started")
            << number << QByteArray("/opt/x/dropbox\0--quiet", 22) << QByteArray("threadname") << kDropbox;
        QTest::newRow("without arguments") << number << QByteArray("dropboxd") << QByteArray("x") << kDropbox;
        QTest::newRow("by a cut name") << number << QByteArray("/usr/bin/python3\0x", 18)
                                       << QByteArray("google-drive-oc") << kDrive;
        QTest::newRow("another program with a longer name")
            << number << QByteArray("/bin/dropbox-icon") << QByteArray("dropbox-icon") << QString();
        QTest::newRow("named in an argument only")
            << number << QByteArray("vi\0/bin/dropbox", 15) << QByteArray("vi") << QString();
        QTest::newRow("ended, not yet collected") << number << QByteArray() << QByteArray("dropbox") << QString();
        QTest::newRow("no process") << QStringLiteral("self") << QByteArray("dropbox") << QByteArray("dropbox")
                                    << QString();
    }
    void aRunningServiceIsKnownByItsProcess()
    {
        QFETCH(QString, process);
        QFETCH(QByteArray, commandLine);
        QFETCH(QByteArray, name);
        QFETCH(QString, running);
        const QString folder = path("proc/") + process;
        QVERIFY(writeFile(folder + QStringLiteral("/cmdline"), commandLine));
        QVERIFY(writeFile(folder + QStringLiteral("/comm"), name + '\n'));
        for (const QString &service : {kDropbox, kDrive, QStringLiteral("com.wuala.gui.macosx"), QString()})
            QCOMPARE(services().isServiceRunning(service), !service.isEmpty() && service == running);
    }

    void aServiceOfThisMachineIsStartedAndSeen()
    {
        // A program under the service's name that ends by itself.
        QVERIFY(QFile::copy(QStringLiteral("/bin/sleep"), path("wuala")));
        QVERIFY(writeFile(path("own/applications/wuala.desktop"), entryWith("Exec=" + path("wuala").toUtf8() + " 3")));
        RunningServices::Surroundings system = RunningServices::system();
        system.dataFolders = {path("own")};
        const RunningServices services(system);
        const QString wuala = QStringLiteral("com.wuala.gui.macosx");
        QVERIFY(services.runService(wuala));
        QTRY_VERIFY(services.isServiceRunning(wuala));
    }

    void aServiceIsStartedByItsDesktopEntry()
    {
        QVERIFY(!services().runService(kDropbox));
        QVERIFY(
            writeFile(path("shared/applications/dropbox.desktop"), entryWith("Exec=dropbox start -i %U\nPath=/opt")));
        QVERIFY(services().runService(kDropbox));
        QCOMPARE(m_launched, QStringList({QStringLiteral("dropbox"), QStringLiteral("start"), QStringLiteral("-i")}));
        QCOMPARE(m_launchedIn, QStringLiteral("/opt"));
        QVERIFY(!services().runService(kDrive));
        QVERIFY(!services().runService(QStringLiteral("com.harrowmere.unknown")));

        QVERIFY(writeFile(path("own/applications/dropbox.desktop"), entryWith("Exec=broken")));
        QVERIFY(!services().runService(kDropbox));
        QCOMPARE(m_launched, QStringList{QStringLiteral("broken")});
    }

    void anEntryThatTheUserRemovedIsNotReplacedByTheSharedOne()
    {
        QVERIFY(writeFile(path("shared/applications/dropbox.desktop"), entryWith("Exec=dropbox")));
        QVERIFY(writeFile(path("own/applications/dropbox.desktop"), "[Desktop Entry]\nHidden=true\n"));
        QVERIFY(!services().runService(kDropbox));
        QVERIFY(m_launched.isEmpty());
    }

    void entriesThatCannotBeStartedAreRefused_data()
    {
        QTest::addColumn<QByteArray>("entry");
        QTest::newRow("no command") << entryWith("Name=x");
        QTest::newRow("a link") << QByteArray("[Desktop Entry]\nType=Link\nExec=x\n");
        QTest::newRow("command in another group") << QByteArray("[Desktop Entry]\nType=Application\n[X]\nExec=x\n");
        QTest::newRow("open quotes") << entryWith("Exec=\"dropbox");
        QTest::newRow("too large") << entryWith("Exec=x") + QByteArray(2 << 20, '\n');
    }
    void entriesThatCannotBeStartedAreRefused()
    {
        QFETCH(QByteArray, entry);
        QVERIFY(writeFile(path("x.desktop"), entry));
        QVERIFY(!DesktopEntry::read(path("x.desktop")));
    }

    void commandsAreSplitAsEntriesWriteThem_data()
    {
        QTest::addColumn<QString>("exec");
        QTest::addColumn<QStringList>("command");
        const auto words = [](std::initializer_list<const char *> list) {
            QStringList result;
            for (const char *word : list)
                result.append(QString::fromLatin1(word));
            return result;
        };
        QTest::newRow("words") << QStringLiteral("a  b\tc") << words({"a", "b", "c"});
        QTest::newRow("quoted") << QStringLiteral("\"/opt/my app/a\" \"\" x") << words({"/opt/my app/a", "", "x"});
        QTest::newRow("escapes in quotes") << QStringLiteral("\"a\\\"b\\\\c\\$d\"") << words({"a\"b\\c$d"});
        QTest::newRow("field codes") << QStringLiteral("a %U --x=%f %% %i") << words({"a", "--x=", "%"});
        QTest::newRow("a code cut off") << QStringLiteral("a %") << words({"a"});
        QTest::newRow("nothing") << QString() << QStringList();
    }
    void commandsAreSplitAsEntriesWriteThem()
    {
        QFETCH(QString, exec);
        QTEST(DesktopEntry::parseExec(exec), "command");
    }
};

REGISTER_TEST(TestRunningServices)
#include "TestRunningServices.moc"
