#include "FileSystemCalls.h"
#include "LibraryFile.h"
#include "LibrarySupport.h"
#include "TestRunner.h"

#include <QDir>

#include <cerrno>
#include <cstdio>
#include <unistd.h>

namespace {

/// Lets the calls through but for one, which fails from its n-th use on.
struct FailingDisk
{
    explicit FailingDisk(const QByteArray &call, int first)
    {
        failing = call;
        countdown = first;
        FileSystemCalls &calls = fileSystemCalls();
        calls.write = [](int file, const void *bytes, size_t count) {
            return fails("write") ? ssize_t(-1) : real.write(file, bytes, std::min<size_t>(count, 100));
        };
        calls.fsync = [](int file) { return fails("fsync") ? -1 : real.fsync(file); };
        calls.close = [](int file) {
            const bool failed = fails("close");
            const int result = real.close(file);
            errno = ENOSPC;
            return failed ? -1 : result;
        };
        calls.rename = [](const char *from, const char *to) { return fails("rename") ? -1 : real.rename(from, to); };
        calls.renameNoReplace = [](const char *from, const char *to) {
            return fails("rename") ? -1 : real.renameNoReplace(from, to);
        };
        calls.link = [](const char *from, const char *to) {
            errno = EPERM;
            return fails("link") || withoutLinks ? -1 : real.link(from, to);
        };
    }
    ~FailingDisk() { fileSystemCalls() = real; }
    FailingDisk(const FailingDisk &) = delete;
    FailingDisk &operator=(const FailingDisk &) = delete;

    static bool fails(const char *call)
    {
        const bool failed = failing == call && --countdown <= 0;
        if (failed)
            errno = ENOSPC;
        return failed;
    }

    static inline const FileSystemCalls real = fileSystemCalls();
    static inline QByteArray failing;
    static inline int countdown = 0;
    static inline bool withoutLinks = false;
};

}

/// The library file and its backup through saves that succeed and saves that do not.
class TestLibrarySave : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { LibraryFile::registerTags(); }

    void keepsOneGeneration()
    {
        TestLibrary test;
        const QString path = test.path(QStringLiteral("Photo.xml"));
        const QString backup = test.path(QStringLiteral("Photo~.xml"));
        QCOMPARE(LibraryFile::backupPath(path), backup);
        QByteArray previous;
        for (const char *name : {"one", "two", "three"}) {
            test.addFolder()->setName(QLatin1String(name));
            QVERIFY(LibraryFile::save(path, test.library, {}));
            QCOMPARE(contentOf(backup), previous);
            previous = contentOf(path);
            QVERIFY(previous.contains(name));
        }
        QCOMPARE(QDir(test.folder.path()).entryList(QDir::Files | QDir::Hidden).size(), 2);
    }

    void aBackupAloneIsNotLost()
    {
        TestLibrary test;
        const QString path = test.path(QStringLiteral("Photo.xml"));
        QVERIFY(QFile::copy(dataFile(QStringLiteral("whole.xml")), LibraryFile::backupPath(path)));
        QVERIFY(LibraryFile::save(path, test.library, {}));
        QVERIFY(!QFile::exists(LibraryFile::backupPath(path)));
        QCOMPARE(contentOf(test.path(QStringLiteral("Photo~-1.xml"))),
                 contentOf(dataFile(QStringLiteral("whole.xml"))));
    }

    void failuresLeaveTheFileAndTellWhy_data()
    {
        QTest::addColumn<QByteArray>("call");
        QTest::addColumn<int>("first");
        QTest::addColumn<bool>("withoutLinks");
        QTest::addColumn<QString>("logged");
        const QString cannotWrite = QStringLiteral("Can't write database %1: ");
        const QString cannotRename = QStringLiteral("Can't rename previous version %1 to %2: ");
        const QString cannotRestore = QStringLiteral("Can't restore database after failure %2: ");
        QTest::newRow("the first bytes cannot be written") << QByteArray("write") << 1 << false << cannotWrite;
        QTest::newRow("the disk is full midway") << QByteArray("write") << 3 << false << cannotWrite;
        QTest::newRow("the flush fails") << QByteArray("fsync") << 1 << false << cannotWrite;
        QTest::newRow("closing fails") << QByteArray("close") << 1 << false << cannotWrite;
        QTest::newRow("no backup can be made") << QByteArray("rename") << 1 << false << cannotRename;
        QTest::newRow("no backup, no links") << QByteArray("rename") << 1 << true << cannotRename;
        QTest::newRow("the new file cannot take its name") << QByteArray("rename") << 2 << false << cannotWrite;
        QTest::newRow("nor the old one take it back") << QByteArray("rename") << 2 << true << cannotRestore;
    }
    void failuresLeaveTheFileAndTellWhy()
    {
        QFETCH(QByteArray, call);
        QFETCH(int, first);
        QFETCH(bool, withoutLinks);
        QFETCH(QString, logged);
        TestLibrary test;
        const QString path = test.path(QStringLiteral("Photo.xml"));
        const QString backup = LibraryFile::backupPath(path);
        test.addFolder();
        QVERIFY(LibraryFile::save(path, test.library, {}));
        const QByteArray before = contentOf(path);
        test.addPhoto(QStringLiteral("/pictures/a.jpg"));
        test.library.setDirty(true);

        const LogLines log;
        {
            FailingDisk::withoutLinks = withoutLinks;
            const FailingDisk disk(call, first);
            QVERIFY(!LibraryFile::save(path, test.library, {}));
        }
        FailingDisk::withoutLinks = false;
        QVERIFY(test.library.isDirty());
        const bool gone = logged.contains(QLatin1String("restore"));
        QCOMPARE(contentOf(gone ? backup : path), before);
        QVERIFY(!QFile::exists(path + QLatin1String(".new")));
        QVERIFY2(!log.lines.isEmpty() &&
                     log.lines.last().startsWith(
                         QString(logged).replace(QLatin1String("%1"), path).replace(QLatin1String("%2"), backup)),
                 qPrintable(log.lines.join(u'\n')));
        QVERIFY(LibraryFile::save(path, test.library, {}));
        QVERIFY(contentOf(path).contains("a.jpg"));
    }

    void aFileSystemWithoutLinksWillDo()
    {
        TestLibrary test;
        const QString path = test.path(QStringLiteral("Photo.xml"));
        QVERIFY(LibraryFile::save(path, test.library, {}));
        const QByteArray before = contentOf(path);
        test.addFolder();
        const FailingDisk disk("link", 1);
        QVERIFY(LibraryFile::save(path, test.library, {}));
        QCOMPARE(contentOf(LibraryFile::backupPath(path)), before);
        QVERIFY(contentOf(path).contains("New Folder"));
    }

    void aFileThatOthersMayNotReadStaysSo()
    {
        TestLibrary test;
        const QString path = test.path(QStringLiteral("Photo.xml"));
        QVERIFY(LibraryFile::save(path, test.library, {}));
        const auto ownerOnly = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser;
        QVERIFY(QFile::setPermissions(path, ownerOnly));
        QVERIFY(LibraryFile::save(path, test.library, {}));
        QCOMPARE(QFile::permissions(path), ownerOnly);
    }

    void unreadableFilesAreCopiedAside()
    {
        TestLibrary test;
        const QString path = test.path(QStringLiteral("Photo.xml"));
        QVERIFY(QFile::copy(dataFile(QStringLiteral("photos-end-midway.xml")), path));
        QVERIFY(QFile::copy(dataFile(QStringLiteral("whole.xml")), LibraryFile::backupPath(path)));
        const LogLines log;
        const QString copy = test.path(QStringLiteral("Photo-1.xml"));
        QVERIFY(LibraryFile::copyAside(path));
        QCOMPARE(contentOf(copy), contentOf(path));
        QCOMPARE(contentOf(test.path(QStringLiteral("Photo~-1.xml"))), contentOf(LibraryFile::backupPath(path)));
        QVERIFY(log.lines.join(u'\n').contains(copy));
        QVERIFY(LibraryFile::copyAside(path)); // the copies are there already
        QVERIFY(!QFile::exists(test.path(QStringLiteral("Photo-2.xml"))));

        QVERIFY(QFile::remove(path));
        QVERIFY(QDir().mkdir(path)); // no file can be read from it
        QVERIFY(LibraryFile::copyAside(path));
        QVERIFY(!QFile::exists(path));
        QVERIFY(QFileInfo(test.path(QStringLiteral("Photo-2.xml"))).isDir());
    }
};

REGISTER_TEST(TestLibrarySave)
#include "TestLibrarySave.moc"
