#include "FakeBookmarkService.h"
#include "QVFileLocator.h"
#include "RunningServices.h"
#include "SystemLog.h"
#include "TestRunner.h"
#include "UserPaths.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

namespace {

using Status = BookmarkResolution::Status;
using Returns = QVFileLocator::Returns;

bool writeFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write("x") == 1;
}

QString inHome(const char *name)
{
    return HomeFolderPath() + QLatin1Char('/') + QString::fromUtf8(name);
}

QByteArray binary(const QByteArray &head, const QByteArray &pathLength, const QByteArray &rest)
{
    return head + pathLength + QByteArray(8, '\0') + rest;
}

}

class TestFileLocator : public QObject
{
    Q_OBJECT

    FakeBookmarkService m_bookmarks;
    std::unique_ptr<QTemporaryDir> m_dir;
    QStringList m_log;

    QString path(const char *name) const { return m_dir->filePath(QString::fromUtf8(name)); }
    QVFileLocator locator(const QString &path, const QByteArray &bookmark = {},
                          LocatorMethod method = LocatorMethod::Local)
    {
        QVFileLocator result(path, m_bookmarks, method);
        result.setBookmark(bookmark);
        m_bookmarks.created.clear();
        m_log.clear();
        return result;
    }

private Q_SLOTS:
    void initTestCase()
    {
        SystemLog::setSink([this](const QString &line) { m_log.append(line); });
    }
    void cleanupTestCase() { SystemLog::setSink({}); }
    void init()
    {
        m_bookmarks = {};
        m_dir = std::make_unique<QTemporaryDir>(QDir::tempPath() + QStringLiteral("/locators ü XXXXXX"));
        m_log.clear();
    }

    void theTextFormIsAsToldByHand_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QByteArray>("bookmark");
        QTest::addColumn<bool>("sandboxed");
        QTest::addColumn<QString>("text");
        QTest::newRow("in the home folder") << inHome("Pictures/a.jpg") << QByteArray() << false
                                            << QStringLiteral("_local_.~%2FPictures%2Fa%2Ejpg....");
        QTest::newRow("elsewhere, with letters that addresses do not have")
            << QStringLiteral("/mnt/ü %[x]#\"<>^`{|}\\") << QByteArray() << false
            << QStringLiteral("_local_.%2Fmnt%2F%C3%BC%20%25%5Bx%5D%23%22%3C%3E%5E%60%7B%7C%7D%5C....");
        QTest::newRow("with punctuation") << QStringLiteral("/!=:.~&+,;@?$'()*-_") << QByteArray() << false
                                          << QStringLiteral("_local_.%2F%21%3D%3A%2E~&+,;@?$'()*-_....");
        QTest::newRow("no path") << QString() << QByteArray() << false << QStringLiteral("_local_.....");
        QTest::newRow("bookmark") << QStringLiteral("/a") << QByteArray("\xFB\xEF\xFF\1", 4) << true
                                  << QStringLiteral("_local_.%2Fa.sb...++%2F%2FAQ%3D%3D");
        QTest::newRow("bookmark of two lines")
            << QStringLiteral("/a\nb") << QByteArray(58, '\0') << false
            << QString(QStringLiteral("_local_.%2Fa%0Ab....") + QString(76, QLatin1Char('A')) +
                       QStringLiteral("%0AAA%3D%3D"));
    }
    void theTextFormIsAsToldByHand()
    {
        QFETCH(QString, path);
        QFETCH(QByteArray, bookmark);
        QFETCH(bool, sandboxed);
        QFETCH(QString, text);
        QVFileLocator original = locator(path, bookmark);
        original.setSandboxed(sandboxed);
        QCOMPARE(original.archive(Returns::Escape), text);
        QString kept = text;
        QCOMPARE(original.archive(Returns::Keep), kept.replace(QStringLiteral("%0A"), QStringLiteral("\n")));
        for (const QString &form : {text, kept})
            QCOMPARE(QVFileLocator::fromArchive(form), std::optional(original));
        QVERIFY(m_log.isEmpty());
    }

    void textFormsOfOthersAreRead_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("method");
        QTest::addColumn<QString>("path");
        QTest::addColumn<QByteArray>("bookmark");
        QTest::addColumn<bool>("sandboxed");
        QTest::newRow("hyphens") << QStringLiteral("-google-.%2fa....") << 5 << QStringLiteral("/a") << QByteArray()
                                 << false;
        QTest::newRow("home alone") << QStringLiteral("_cloud_.~....") << 3 << HomeFolderPath() << QByteArray()
                                    << false;
        QTest::newRow("needlessly escaped") << QStringLiteral("_nil_.%7E%41....") << 0
                                            << QString(HomeFolderPath() + QLatin1Char('A')) << QByteArray() << false;
        QTest::newRow("mark of a bookmark that is not there")
            << QStringLiteral("_local_.%2Fa.sb...") << 2 << QStringLiteral("/a") << QByteArray() << false;
        QTest::newRow("any mark counts") << QStringLiteral("_alias_..x.y.z.QUI") << 1 << QString() << QByteArray("AB")
                                         << true;
        QTest::newRow("a bookmark that is none")
            << QStringLiteral("_local_.%2Fa....%C3%BC") << 2 << QStringLiteral("/a") << QByteArray() << false;
    }
    void textFormsOfOthersAreRead()
    {
        QFETCH(QString, text);
        const auto read = QVFileLocator::fromObject(text);
        QVERIFY(read);
        QTEST(int(read->method()), "method");
        QTEST(read->filePath(), "path");
        QTEST(read->bookmark(), "bookmark");
        QTEST(read->isSandboxed(), "sandboxed");
    }

    void malformedTextFormsAreRefused_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("message");
        const QString malformed = QStringLiteral("Malformed locator %1");
        const QString unknown = QStringLiteral("Unknown locator %1");
        QTest::newRow("wrong beginning") << QStringLiteral("abcd") << QString();
        QTest::newRow("too short") << QStringLiteral("_a.b") << QString();
        QTest::newRow("empty") << QString() << QString();
        QTest::newRow("five pieces") << QStringLiteral("_local_.a...") << malformed;
        QTest::newRow("seven pieces") << QStringLiteral("_local_.a.....") << malformed;
        QTest::newRow("no such method") << QStringLiteral("_foo_.a....") << unknown;
        QTest::newRow("method in capitals") << QStringLiteral("_LOCAL_.a....") << unknown;
    }
    void malformedTextFormsAreRefused()
    {
        QFETCH(QString, text);
        QFETCH(QString, message);
        QVERIFY(!QVFileLocator::fromArchive(text));
        QCOMPARE(m_log, message.isEmpty() ? QStringList() : QStringList(message.arg(text)));
        QVERIFY(!QVFileLocator::fromObject(5));
    }

    void theBinaryFormIsAsToldByHand_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("path");
        QTest::addColumn<QByteArray>("bookmark");
        QTest::newRow("everything") << binary(QByteArray("\0\4\1\0", 4), QByteArray("\4\0\0\0", 4),
                                              "/\xC3\xBC"
                                              "aBM\1")
                                    << QStringLiteral("/üa") << QByteArray("BM\1");
        QTest::newRow("no bookmark") << binary(QByteArray("\0\4\1\0", 4), QByteArray("\2\0\0\0", 4), "/a")
                                     << QStringLiteral("/a") << QByteArray();
        QTest::newRow("nothing") << binary(QByteArray("\0\4\1\0", 4), QByteArray(4, '\0'), {}) << QString()
                                 << QByteArray();
    }
    void theBinaryFormIsAsToldByHand()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, path);
        QFETCH(QByteArray, bookmark);
        QVFileLocator original = locator(path, bookmark, LocatorMethod::Dropbox);
        original.setSandboxed(true);
        QCOMPARE(original.createBinaryArchive(), bytes);
        const auto read = QVFileLocator::fromBinaryArchive(bytes);
        QCOMPARE(read, std::optional(original));
        QCOMPARE(read->bookmark().isNull(), bookmark.isNull());
    }

    void malformedBinaryFormsAreRefused_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        const QByteArray head("\0\2\0\0", 4);
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("shorter than its head") << binary(head, QByteArray(4, '\0'), {}).chopped(1);
        QTest::newRow("a later version") << binary(QByteArray("\1\2\0\0", 4), QByteArray(4, '\0'), {});
        QTest::newRow("path longer than all") << binary(head, QByteArray("\3\0\0\0", 4), "/a");
        QTest::newRow("path of gigabytes") << binary(head, QByteArray("\xFF\xFF\xFF\xFF", 4), "/a");
        QTest::newRow("no method") << binary(QByteArray("\0\7\0\0", 4), QByteArray(4, '\0'), {});
        QTest::newRow("path that is no text") << binary(head, QByteArray("\2\0\0\0", 4), "/\xFF");
    }
    void malformedBinaryFormsAreRefused()
    {
        QFETCH(QByteArray, bytes);
        QVERIFY(!QVFileLocator::fromBinaryArchive(bytes));
    }

    void theMethodFollowsFromThePath_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<int>("method");
        QTest::addColumn<bool>("cloudBased");
        QTest::newRow("local") << inHome("Pictures/Dropbox/a.jpg") << 2 << false;
        QTest::newRow("no path") << QString() << 2 << false;
        QTest::newRow("Dropbox") << inHome("Dropbox/a.jpg") << 4 << true;
        QTest::newRow("case does not count") << inHome("DROPBOX/x.jpg").toUpper() << 4 << true;
        QTest::newRow("the folder itself") << inHome("Google Drive") << 5 << true;
        QTest::newRow("beside it") << inHome("Google Drives/a") << 5 << true;
        QTest::newRow("Wuala") << QStringLiteral("/volumes/wualadrive/a") << 6 << true;
        QTest::newRow("without the slash") << QStringLiteral("/Volumes/WualaDrive") << 2 << false;
    }
    void theMethodFollowsFromThePath()
    {
        QFETCH(QString, path);
        QTEST(int(QVFileLocator::methodFromPath(path)), "method");
        QTEST(QVFileLocator::isPathCloudBased(path), "cloudBased");
        QTEST(int(QVFileLocator(path, m_bookmarks).method()), "method");
        QCOMPARE(QVFileLocator(path, m_bookmarks, LocatorMethod::Alias).method(), LocatorMethod::Alias);
    }

    void displayNamesBelongToCloudMethods()
    {
        QStringList names;
        for (int number = 0; number <= 7; ++number) {
            const auto method = static_cast<LocatorMethod>(number);
            QCOMPARE(QVFileLocator::methodFromName(QVFileLocator::methodName(method)), method);
            QCOMPARE(QVFileLocator::isMethodCloudBased(method), !QVFileLocator::methodDisplayName(method).isNull());
            names.append(QVFileLocator::methodDisplayName(method));
        }
        QCOMPARE(names.join(QLatin1Char('|')), QStringLiteral("|||Cloud|Dropbox|Google Drive|Wuala|"));
    }

    void somethingAtThePathNeedsNoBookmark_data()
    {
        QTest::addColumn<QByteArray>("bookmark");
        QTest::addColumn<bool>("outdated");
        QTest::newRow("current") << QByteArray("mark:current") << false;
        QTest::newRow("of another state") << QByteArray("mark:old") << true;
        QTest::newRow("none") << QByteArray() << true;
    }
    void somethingAtThePathNeedsNoBookmark()
    {
        QFETCH(QByteArray, bookmark);
        QVERIFY(writeFile(path("a.jpg")));
        m_bookmarks.outdated = {"mark:old"};
        for (const QString &place : {path("a.jpg"), m_dir->path()}) {
            QVFileLocator found = locator(place, bookmark, LocatorMethod::Alias);
            QVFileLocator expected = found;
            expected.setFolder(place == m_dir->path());
            const auto result = found.verify(m_bookmarks);
            QVERIFY(result.found && !result.changed && !result.volumeAway);
            QTEST(result.bookmarkOutdated, "outdated");
            QCOMPARE(found, expected);
        }
        QVERIFY(m_bookmarks.resolved.isEmpty() && m_bookmarks.created.isEmpty());
    }

    void aMovedFileIsFollowed_data()
    {
        QTest::addColumn<bool>("stale");
        QTest::addColumn<QByteArray>("fresh");
        QTest::addColumn<bool>("folder");
        QTest::newRow("bookmark still good") << false << QByteArray() << false;
        QTest::newRow("bookmark stale") << true << QByteArray() << false;
        QTest::newRow("bookmark made while resolving") << true << QByteArray("mark:fresh") << false;
        QTest::newRow("a folder") << false << QByteArray() << true;
    }
    void aMovedFileIsFollowed()
    {
        QFETCH(bool, stale);
        QFETCH(QByteArray, fresh);
        QFETCH(bool, folder);
        const QString place = inHome("Dropbox/moved.jpg");
        QVERIFY(QDir().mkpath(folder ? place : QFileInfo(place).path()) && (folder || writeFile(place)));
        QVFileLocator moved = locator(path("a.jpg"), "mark:old", LocatorMethod::Cloud);
        m_bookmarks.answers["mark:old"] = {0, Status::Found, place, stale, fresh};
        const auto result = moved.verify(m_bookmarks, BookmarkOptions::Mounting::Allowed);
        QVERIFY(result.found);
        QCOMPARE(result.changed, stale);
        QVERIFY(moved.isEqualToPath(place));
        QCOMPARE(moved.method(), LocatorMethod::Dropbox);
        QCOMPARE(moved.isFolder(), folder);
        const QByteArray made = fresh.isEmpty() ? "mark:" + place.toUtf8() : fresh;
        QCOMPARE(moved.bookmark(), stale ? made : QByteArray("mark:old"));
        QCOMPARE(m_bookmarks.lastOptions.mounting, BookmarkOptions::Mounting::Allowed);
        QVERIFY(QDir(inHome("Dropbox")).removeRecursively());
    }

    void aFileThatIsNowhereStaysAsItWas_data()
    {
        QTest::addColumn<QByteArray>("bookmark");
        QTest::addColumn<int>("status");
        QTest::addColumn<bool>("volumeAway");
        QTest::addColumn<bool>("remakes");
        QTest::newRow("no bookmark") << QByteArray() << int(Status::Found) << false << false;
        QTest::newRow("missing") << QByteArray("mark:old") << int(Status::Missing) << false << true;
        QTest::newRow("ambiguous") << QByteArray("mark:old") << int(Status::Ambiguous) << false << true;
        QTest::newRow("volume away") << QByteArray("mark:old") << int(Status::VolumeAway) << true << false;
    }
    void aFileThatIsNowhereStaysAsItWas()
    {
        QFETCH(QByteArray, bookmark);
        QFETCH(int, status);
        QFETCH(bool, remakes);
        QVFileLocator lost = locator(path("a.jpg"), bookmark, LocatorMethod::Cloud);
        const QVFileLocator before = lost;
        m_bookmarks.answers["mark:old"] = {0, static_cast<Status>(status), path("other.jpg")};
        const auto result = lost.verify(m_bookmarks);
        QVERIFY(!result.found && !result.changed);
        QTEST(result.volumeAway, "volumeAway");
        QCOMPARE(lost, before);
        const QString message = QStringLiteral("Can't bookmark %1. It is gone.").arg(path("a.jpg"));
        QCOMPARE(m_log, remakes ? QStringList(message) : QStringList());
        QCOMPARE(result.reason.isEmpty(), !remakes);
    }

    void aFileThatComesBackMeanwhileIsBookmarkedAnew()
    {
        QVFileLocator lost = locator(path("a.jpg"), "mark:old", LocatorMethod::Cloud);
        QVERIFY(writeFile(path("a.jpg")));
        // Unless it is another one, because that which was meant is known to be elsewhere.
        QVERIFY(lost.follow({0, Status::Unnameable}, m_bookmarks).found);
        QCOMPARE(lost.bookmark(), QByteArray("mark:old"));
        const auto result = lost.follow({0, Status::Missing}, m_bookmarks);
        QVERIFY(result.found && result.changed);
        QCOMPARE(lost.bookmark(), "mark:" + path("a.jpg").toUtf8());
        QCOMPARE(lost.method(), LocatorMethod::Local);
    }

    void theTrashAndVolumesAreKnownByThePath()
    {
        const QString trash = PathForUserFolder(StandardFolder::Trash).value_or(QString());
        QVERIFY(QDir(trash).exists());
        QVERIFY(locator(trash + QStringLiteral("/a.jpg")).isInTrash());
        QVERIFY(!locator(inHome("a.jpg")).isInTrash());
        QVERIFY(!locator(QString(QStringLiteral("/x") + trash)).isInTrash());
        const QList<std::pair<const char *, const char *>> texts{
            {"/Volumes/Backup/a.jpg", "Backup/a.jpg"}, {"/Volumes/", "/Volumes/"}, {"/x/Volumes/a", "/x/Volumes/a"}};
        for (const auto &[place, text] : texts)
            QCOMPARE(locator(QString::fromLatin1(place)).displayText(), QString::fromLatin1(text));
    }

    void servicesBelongToTheMethod_data()
    {
        QTest::addColumn<int>("method");
        QTest::addColumn<bool>("running");
        QTest::addColumn<bool>("runs");
        QTest::newRow("none") << 0 << false << false;
        QTest::newRow("alias") << 1 << true << true;
        QTest::newRow("local") << 2 << true << true;
        QTest::newRow("some cloud") << 3 << false << false;
        QTest::newRow("running service") << 4 << true << true;
        QTest::newRow("service that can be started") << 5 << false << true;
        QTest::newRow("service that is not there") << 6 << false << false;
    }
    void servicesBelongToTheMethod()
    {
        QFETCH(int, method);
        QVERIFY(QDir().mkpath(path("proc/9")) && QDir().mkpath(path("applications")));
        QFile process(path("proc/9/cmdline"));
        QFile entry(path("applications/google-drive.desktop"));
        QVERIFY(process.open(QIODevice::WriteOnly) && process.write("/opt/dropbox") > 0 && process.flush());
        QVERIFY(entry.open(QIODevice::WriteOnly));
        QVERIFY(entry.write("[Desktop Entry]\nType=Application\nExec=drive\n") > 0 && entry.flush());
        const RunningServices services(
            {path("proc"), {m_dir->path()}, [](const auto &, const auto &) { return true; }});
        const QVFileLocator asked = locator(path("a"), {}, LocatorMethod::Alias);
        QVFileLocator other = asked;
        other.setMethod(static_cast<LocatorMethod>(method));
        QTEST(other.isServiceRunning(services), "running");
        QTEST(other.runService(services), "runs");
    }
};

REGISTER_TEST(TestFileLocator)
#include "TestFileLocator.moc"
