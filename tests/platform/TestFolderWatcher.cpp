#include "TestRunner.h"

#include "FolderWatcher.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

class TestFolderWatcher : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tellsOfNamesAndOfWriting()
    {
        QTemporaryDir dir;
        const QString folder = dir.filePath(QString::fromUtf8("größe"));
        QVERIFY(QDir().mkpath(folder));
        const QString path = folder + QStringLiteral("/a.jpg");
        FolderWatcher watcher;
        watcher.setFolders({folder, dir.filePath(QStringLiteral("absent"))});
        QCOMPARE(watcher.watchedCount(), 1);
        QSignalSpy names(&watcher, &FolderWatcher::namesChanged);
        QSignalSpy written(&watcher, &FolderWatcher::fileWritten);

        QFile file(path);
        QVERIFY(file.open(QFile::WriteOnly));
        QTRY_COMPARE(names.size(), 1);
        QCOMPARE(names.first().first().toString(), folder);
        QCOMPARE(written.size(), 0);
        file.write("x");
        file.close();
        QTRY_COMPARE(written.size(), 1);
        QCOMPARE(written.first().first().toString(), path);

        names.clear();
        QVERIFY(QFile::rename(path, folder + QStringLiteral("/b.jpg")));
        QTRY_VERIFY(names.size() >= 2);
    }

    void aFolderThatGoesAwayIsWatchedAgainWhenItIsBack()
    {
        QTemporaryDir dir;
        const QString folder = dir.filePath(QStringLiteral("f"));
        QVERIFY(QDir().mkpath(folder));
        FolderWatcher watcher;
        watcher.setFolders({folder});
        QSignalSpy gone(&watcher, &FolderWatcher::folderGone);
        QVERIFY(QDir().rmdir(folder));
        QTRY_COMPARE(watcher.watchedCount(), 0);
        QCOMPARE(gone.size(), 1);
        QVERIFY(QDir().mkpath(folder));
        watcher.setFolders({folder});
        QCOMPARE(watcher.watchedCount(), 1);
    }

    void tellsOfAMoveFarAbove()
    {
        QTemporaryDir dir;
        const QString folder = dir.filePath(QStringLiteral("a/b/c"));
        QVERIFY(QDir().mkpath(folder));
        FolderWatcher watcher;
        watcher.setFolders({folder});
        QSignalSpy gone(&watcher, &FolderWatcher::folderGone);
        QVERIFY(QDir().rename(dir.filePath(QStringLiteral("a")), dir.filePath(QStringLiteral("z"))));
        QTRY_COMPARE(gone.size(), 1);
        QCOMPARE(gone.first().first().toString(), dir.filePath(QStringLiteral("a")));
        // What stands at the old path next is another folder.
        QVERIFY(QDir().mkpath(folder));
        watcher.setFolders({folder});
        QCOMPARE(watcher.watchedCount(), 1);
        QSignalSpy names(&watcher, &FolderWatcher::namesChanged);
        QVERIFY(QFile(dir.filePath(QStringLiteral("z/b/c/x"))).open(QFile::WriteOnly));
        QVERIFY(QFile(folder + QStringLiteral("/x")).open(QFile::WriteOnly));
        QTRY_COMPARE(names.size(), 1);
    }

    void tellsOfEachPathToOneFolder()
    {
        QTemporaryDir dir;
        const QString folder = dir.filePath(QStringLiteral("f"));
        const QString link = dir.filePath(QStringLiteral("link"));
        QVERIFY(QDir().mkpath(folder) && QFile::link(folder, link));
        FolderWatcher watcher;
        watcher.setFolders({folder, link});
        QCOMPARE(watcher.watchedCount(), 2);
        QSignalSpy names(&watcher, &FolderWatcher::namesChanged);
        QVERIFY(QFile(folder + QStringLiteral("/x")).open(QFile::WriteOnly));
        QTRY_COMPARE(names.size(), 2);
        QVERIFY(names.first() != names.last());
        // The one goes on when the other is not wanted any more.
        watcher.setFolders({link});
        names.clear();
        QVERIFY(QFile(folder + QStringLiteral("/y")).open(QFile::WriteOnly));
        QTRY_COMPARE(names.size(), 1);
        QCOMPARE(names.first().first().toString(), link);
        QSignalSpy gone(&watcher, &FolderWatcher::folderGone);
        QVERIFY(QDir().rename(folder, dir.filePath(QStringLiteral("g"))));
        QTRY_COMPARE(gone.size(), 1);
        QCOMPARE(watcher.watchedCount(), 0);
    }

    void leavesFoldersOnANetworkAlone_data()
    {
        QTest::addColumn<QByteArray>("mounted");
        QTest::addColumn<int>("watched"); // of a folder beside that at which it is mounted, and one beneath
        QTest::newRow("a disk") << QByteArray("ext4 x") << 2;
        QTest::newRow("a network") << QByteArray("nfs4 x") << 1;
        QTest::newRow("what mounts when it is touched") << QByteArray("autofs x") << 1;
    }
    void leavesFoldersOnANetworkAlone()
    {
        QFETCH(QByteArray, mounted);
        QTemporaryDir dir;
        const QStringList folders{dir.filePath(QStringLiteral("net/a")), dir.filePath(QStringLiteral("network"))};
        for (const QString &folder : folders)
            QVERIFY(QDir().mkpath(folder));
        const QByteArray point = QFile::encodeName(dir.filePath(QStringLiteral("net")));
        const Volumes volumes("1 1 8:1 / / rw - ext4 x rw\n2 1 0:9 / " + point + " rw - " + mounted + " rw",
                              [](const Mount &mount) { return mount.source; });
        FolderWatcher watcher;
        watcher.setFolders(folders, volumes);
        QTEST(int(watcher.watchedCount()), "watched");
    }

    void forgetsFoldersThatAreNotWantedAnyMore()
    {
        QTemporaryDir dir;
        QStringList folders;
        for (int i = 0; i < FolderWatcher::kMaxFolders + 10; ++i) {
            folders << dir.filePath(QString::number(i));
            QVERIFY(QDir().mkpath(folders.last()));
        }
        FolderWatcher watcher;
        watcher.setFolders(folders);
        QCOMPARE(watcher.watchedCount(), FolderWatcher::kMaxFolders);
        watcher.setFolders({folders.last()});
        QCOMPARE(watcher.watchedCount(), 1);
        QSignalSpy names(&watcher, &FolderWatcher::namesChanged);
        QVERIFY(QFile(folders.first() + QStringLiteral("/x")).open(QFile::WriteOnly));
        QVERIFY(QFile(folders.last() + QStringLiteral("/x")).open(QFile::WriteOnly));
        QTRY_COMPARE(names.size(), 1);
        QCOMPARE(names.first().first().toString(), folders.last());
    }
};

REGISTER_TEST(TestFolderWatcher)
#include "TestFolderWatcher.moc"
