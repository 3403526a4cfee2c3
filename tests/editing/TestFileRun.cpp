#include "../library/FollowedLibrary.h"
#include "House.h"
#include "TestRunner.h"

#include "BatchRename.h"
#include "DateSeries.h"
#include "FileDates.h"
#include "FileSystemCalls.h"
#include "LibraryFollower.h"
#include "LibraryNotifications.h"
#include "StringUtilities.h"

#include <QDir>
#include <QFile>
#include <QSemaphore>
#include <QTest>
#include <QThread>

#include <atomic>
#include <cerrno>
#include <cstring>

using Style = RenameSettings::Style;

namespace {

const FileSystemCalls realCalls = fileSystemCalls();

int failWhereLocked(const char *from, const char *to)
{
    if (std::strstr(from, "/locked/") == nullptr)
        return realCalls.renameNoReplace(from, to);
    errno = EACCES;
    return -1;
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray("(no file)");
}

RenamePlan planFor(const RenameSettings &settings, const PIGroup::PhotoList &photos, const PhotoLibrary &library)
{
    return {settings, BatchRename::pathsOf(photos), FolderNames({}, BatchRename::lostPaths(library))};
}

/// A house whose folder "A" is shown, with files on disk whose contents are their first names.
struct Disk : House
{
    QTemporaryDir dir;
    DispatchQueue queue{QStringLiteral("test")};
    std::optional<FileRun::Outcome> outcome;
    std::unique_ptr<FileRun> run;
    FileRun::Progress progress = [](qsizetype) {};
    FileRun::Ended ended = [this](const FileRun::Outcome &told) { outcome = told; };

    Disk() { view.folder = a; }
    ~Disk() { queue.waitUntilIdle(); }
    [[nodiscard]] QString at(const QString &name) const { return dir.filePath(name); }
    std::shared_ptr<PIPhoto> photo(const char *name, const std::shared_ptr<PIFolder> &folder)
    {
        const QString path = at(QString::fromUtf8(name));
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        if (!file.exists() && file.open(QFile::WriteOnly))
            file.write(name);
        folder->photos() << std::make_shared<PIPhoto>(library.fileRefs().fileRefForPath(path));
        return folder->photos().last();
    }
    void rename(const RenameSettings &settings)
    {
        outcome.reset();
        const auto photos = BatchRename::renamable(a->photos());
        run = BatchRename::start(editor, queue, planFor(settings, photos, library), photos, progress, ended);
    }
    /// The names by which the photos of the folder know their files.
    [[nodiscard]] QString names(const std::shared_ptr<PIFolder> &folder) const
    {
        QStringList names;
        for (const auto &photo : std::as_const(folder->photos()))
            names << QDir(dir.path()).relativeFilePath(photo->fileRef()->path());
        return names.join(u' ');
    }
};

}

/// Many files that are renamed or dated in one go.
class TestFileRun : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { fileSystemCalls() = realCalls; }

    void photosFollowTheirFilesToNewNames()
    {
        Disk disk;
        for (const char *name : {"x1.jpg", "y2.jpg", "x1.jpg", "gone.jpg", "z3.jpg"})
            disk.photo(name, disk.a);
        QVERIFY(QFile::remove(disk.at(QStringLiteral("gone.jpg"))));
        disk.a->photos().at(3)->fileRef()->setFileLost(true);
        const auto elsewhere = disk.photo("z3.jpg", disk.b);
        disk.view.selection = IndexSet::single(1);
        QStringList told;
        const auto tell = [&](const NotificationObject &object) {
            if (const auto *photo = object.as<PIPhoto>())
                told << QVString::lastPathComponent(photo->fileRef()->path());
        };
        const auto pictures = disk.notifications.observe(kThumbnailNotification, tell);
        int selected = 0;
        const auto selections = disk.notifications.observe(kSelectNotification, [&](const NotificationObject &object) {
            selected += object.as<PIPhoto>() == disk.a->photos().at(1).get() ? 1 : 100;
        });

        disk.rename({.style = Style::NewNames, .prefix = QStringLiteral("Trip")});
        QTRY_VERIFY(disk.outcome);
        QVERIFY(disk.outcome->failure.isEmpty() && !disk.outcome->isCancelled);
        QCOMPARE(disk.names(disk.a), QStringLiteral("Trip0001.jpg Trip0002.jpg Trip0001.jpg gone.jpg Trip0003.jpg"));
        QCOMPARE(disk.names(disk.b), QStringLiteral("Trip0003.jpg"));
        QCOMPARE(contentOf(elsewhere->fileRef()->path()), QByteArray("z3.jpg"));
        told.sort();
        QCOMPARE(told.join(u' '), QStringLiteral("Trip0001.jpg Trip0001.jpg Trip0002.jpg Trip0003.jpg Trip0003.jpg"));
        QCOMPARE(selected, 1);
        QVERIFY(disk.library.isDirtyForGood());
        const QString path = elsewhere->fileRef()->path();
        QCOMPARE(disk.finder.handedOver.value(path), "worker " + path.toUtf8());
        QCOMPARE(disk.library.fileRefs().fileRefForPathIfExists(path), elsewhere->fileRef());
        QVERIFY(!disk.library.fileRefs().fileRefForPathIfExists(disk.at(QStringLiteral("z3.jpg"))));
    }

    void aRunEndsWhereAFileCannotBeRenamed_data()
    {
        QTest::addColumn<QString>("prefix");
        QTest::addColumn<QString>("names");
        QTest::addColumn<QString>("reason");
        QTest::newRow("in a folder that is locked") << QStringLiteral("q") << QStringLiteral("q1 locked/p2 p3")
                                                    << QStringLiteral("locked/q2\". Permission denied");
        QTest::newRow("by a file that is there")
            << QStringLiteral("taken") << QStringLiteral("p1 locked/p2 p3") << QStringLiteral("taken1\". File exists");
        QTest::newRow("by a name that is none") << QStringLiteral("../") << QStringLiteral("p1 locked/p2 p3")
                                                << QStringLiteral("../1\". A file cannot have this name.");
    }
    void aRunEndsWhereAFileCannotBeRenamed()
    {
        QFETCH(QString, prefix);
        Disk disk;
        fileSystemCalls().renameNoReplace = failWhereLocked;
        for (const char *name : {"p1", "locked/p2", "p3"})
            disk.photo(name, disk.a);
        disk.photo("taken1", disk.b);
        disk.rename({.oldPrefix = QStringLiteral("p"), .newPrefix = prefix});
        QTRY_VERIFY(disk.outcome);
        QTEST(disk.names(disk.a), "names");
        QFETCH(QString, reason);
        QVERIFY2(disk.outcome->failure.startsWith(QStringLiteral("I can't rename \"/")) &&
                     disk.outcome->failure.endsWith(reason),
                 qPrintable(disk.outcome->failure));
        for (const auto &photo : std::as_const(disk.a->photos()))
            QCOMPARE(contentOf(photo->fileRef()->path()).right(1), photo->fileRef()->path().right(1).toUtf8());
        QCOMPARE(contentOf(disk.at(QStringLiteral("taken1"))), QByteArray("taken1"));
    }

    void noPhotoGetsTheFileOfAnother_data()
    {
        QTest::addColumn<bool>("isKnown"); ///< that a file is gone, to the library
        QTest::addColumn<QString>("gone");
        QTest::addColumn<QString>("failure");
        QTest::newRow("gone since the plan was made")
            << false << QStringLiteral("II.jpg") << QStringLiteral("No such file or directory");
        QTest::newRow("lost since the plan was made")
            << true << QStringLiteral("II.jpg") << QStringLiteral("No such file or directory");
        QTest::newRow("another was lost, whose name it would be")
            << true << QStringLiteral("III.jpg") << QStringLiteral("its file is missing.");
    }
    void noPhotoGetsTheFileOfAnother()
    {
        QFETCH(bool, isKnown);
        QFETCH(QString, gone);
        Disk disk;
        const auto photos = QList{disk.photo("II.jpg", disk.a), disk.photo("I.jpg", disk.a)};
        const auto lost = gone == u"II.jpg" ? photos.first() : disk.photo("III.jpg", disk.b);
        if (lost != photos.first())
            QVERIFY(QFile::remove(disk.at(gone)));
        const RenameSettings settings{.oldPrefix = QStringLiteral("I"), .newPrefix = QStringLiteral("II")};
        const RenamePlan plan = planFor(settings, photos, disk.library);
        QCOMPARE(plan.obstacleCount(), 0);
        if (lost == photos.first())
            QVERIFY(QFile::remove(disk.at(gone)));
        lost->fileRef()->setFileLost(isKnown);
        disk.run = BatchRename::start(disk.editor, disk.queue, plan, photos, disk.progress, disk.ended);
        QTRY_VERIFY(disk.outcome);
        QFETCH(QString, failure);
        QVERIFY2(disk.outcome->failure.endsWith(failure), qPrintable(disk.outcome->failure));
        QCOMPARE(disk.names(disk.a), QStringLiteral("II.jpg I.jpg"));
        QCOMPARE(contentOf(photos.last()->fileRef()->path()), QByteArray("I.jpg"));
        QVERIFY(!QFile::exists(disk.at(QStringLiteral("III.jpg"))));
    }

    /// Nor is a photo led anywhere that was shown another file while its own was renamed.
    void whatIsDoneBeforeTheCancelStays()
    {
        Disk disk;
        for (const char *name : {"p1", "p2", "p3", "p4"})
            disk.photo(name, disk.a);
        QSemaphore turns;
        disk.finder.preparing = [&] { turns.acquire(); };
        disk.rename({.oldPrefix = QStringLiteral("p"), .newPrefix = QStringLiteral("q")});
        QTRY_VERIFY(QFile::exists(disk.at(QStringLiteral("q1"))));
        disk.a->photos().first()->fileRef()->setPath(disk.at(QStringLiteral("elsewhere")));
        turns.release();
        QTRY_VERIFY(QFile::exists(disk.at(QStringLiteral("q2"))));
        disk.run->cancel();
        turns.release(10);
        QTRY_VERIFY(disk.outcome);
        QVERIFY(disk.outcome->isCancelled);
        QCOMPARE(disk.names(disk.a), QStringLiteral("elsewhere q2 p3 p4"));
    }

    /// Many more than are taken up at a time; the worker waits for those that know the files.
    void noRunIsFarAheadOfTheLibrary()
    {
        Disk disk;
        constexpr int kFiles = 600;
        constexpr int kMostAhead = 401;
        for (int i = 0; i < kFiles; ++i)
            disk.photo(QByteArray(QByteArray("p") + QByteArray::number(i)).constData(), disk.a);
        std::atomic<int> prepared = 0;
        int farthest = 0;
        disk.finder.preparing = [&] { ++prepared; };
        disk.progress = [&](qsizetype done) { farthest = std::max(farthest, prepared - static_cast<int>(done)); };
        disk.rename({.oldPrefix = QStringLiteral("p"), .newPrefix = QStringLiteral("q")});
        while (prepared < kMostAhead)
            QThread::msleep(1);
        QTRY_VERIFY(disk.outcome);
        QCOMPARE(disk.outcome->done, kFiles);
        QVERIFY(farthest <= kMostAhead);
        for (const auto &photo : std::as_const(disk.a->photos()))
            QCOMPARE(QByteArray("p" + QVString::lastPathComponent(photo->fileRef()->path()).mid(1).toUtf8()),
                     contentOf(photo->fileRef()->path()));
    }

    /// Where names are handed on from one file to the next, both would be lost who only looked at paths.
    void itGetsOnWithWhoeverFollowsFiles()
    {
        FollowedLibrary house;
        FakeLibraryView view{*house.library};
        FakeRecorder recorder;
        LibraryEditor editor(*house.library, view, recorder);
        constexpr int kFiles = 40;
        for (int i = kFiles; i > 0; --i) // the longest name first, which makes room for the next
            house.add(QByteArray("shown/" + QByteArray(i, 'I') + ".png").constData());
        QList<QByteArray> contents;
        for (const auto &photo : std::as_const(house.folder->photos()))
            contents << contentOf(photo->fileRef()->path());
        LibraryFollower follower(*house.library, *house.finder, house.options());
        follower.setFolder(house.folder);
        follower.begin();
        DispatchQueue queue(QStringLiteral("test"));
        for (int round = 0; round < 4; ++round) {
            std::optional<FileRun::Outcome> outcome;
            const RenameSettings settings{.oldPrefix = QStringLiteral("I"), .newPrefix = QStringLiteral("II")};
            const auto run = BatchRename::start(
                editor, queue, planFor(settings, house.folder->photos(), *house.library), house.folder->photos(),
                [&](qsizetype) { follower.lookAgain(); }, [&](const FileRun::Outcome &told) { outcome = told; });
            QTRY_VERIFY(outcome);
            QCOMPARE(outcome->failure, QString());
            QCOMPARE(outcome->done, kFiles);
        }
        follower.lookAgain();
        QTRY_VERIFY(!follower.isSearching());
        for (int i = 0; i < kFiles; ++i) {
            const PIPhoto &photo = *house.folder->photos().at(i);
            QCOMPARE(QVString::fileNameMinusExtension(photo.fileRef()->path()).size(), kFiles - i + 4);
            QCOMPARE(contentOf(photo.fileRef()->path()), contents.at(i));
            QCOMPARE(house.storedPath(photo), photo.fileRef()->path());
            QVERIFY(!photo.isFileLost());
        }
    }

    void datesAreReckonedWithoutOverflow_data()
    {
        QTest::addColumn<int>("unit");
        QTest::addColumn<qint64>("increment");
        QTest::addColumn<qint64>("index");
        QTest::addColumn<qint64>("date"); ///< behind the base; -1 for none
        const auto row = [](const char *name, int unit, qint64 increment, qint64 index, qint64 date) {
            QTest::newRow(name) << unit << increment << index << date;
        };
        row("seconds", 0, 5, 3, 15);
        row("minutes", 1, 2, 1, 120);
        row("hours", 2, 1, 2, 7200);
        row("days", 3, 2, 2, 4 * 86400);
        row("an unknown unit is seconds", 9, 1, 1, 1);
        row("none at all", 3, 0, 7, 0);
        row("the step is too large", 3, std::numeric_limits<qint64>::max(), 1, -1);
        row("the way is too far", 0, 1, std::numeric_limits<qint64>::max(), -1);
        row("nobody writes such a year", 3, 999'999'999, 1, -1);
        row("nor one before the first", 3, -999'999'999, 1, -1);
    }
    void datesAreReckonedWithoutOverflow()
    {
        QFETCH(int, unit);
        QFETCH(qint64, increment);
        QFETCH(qint64, index);
        QFETCH(qint64, date);
        constexpr qint64 kBase = 1'000'000'000;
        QCOMPARE(DateSeries({unit, increment}).dateAt(index, kBase),
                 date < 0 ? std::nullopt : std::optional(kBase + date));
        if (date >= 0)
            QCOMPARE(DateSeries({unit, -increment}).dateAt(index, kBase), kBase - date);
    }

    void photosGetDatesInEvenSteps()
    {
        Disk disk;
        for (const char *name : {"a", "b", "a", "lost", "c", "c"})
            disk.photo(name, disk.a);
        for (const char *name : {"a", "c"}) { // the same files by other paths
            const QString link = QString::fromUtf8(name) + u'2';
            QVERIFY(QFile::link(disk.at(QString::fromUtf8(name)), disk.at(link)));
            disk.photo(link.toUtf8().constData(), disk.a);
        }
        QVERIFY(QFile::remove(disk.at(QStringLiteral("lost"))));
        const auto date = [&](const char *name) { return FileDates::dateOf(disk.at(QString::fromUtf8(name))).value(); };
        constexpr qint64 kBase = 1'000'000'000;
        constexpr qint64 kDay = 86400;
        QVERIFY(FileDates::setDate(disk.at(QStringLiteral("a")), kBase));
        disk.view.selection = IndexSet::single(1);
        QStringList told;
        const auto pictures = disk.notifications.observe(kThumbnailNotification, [&](const NotificationObject &object) {
            told << QVString::lastPathComponent(object.as<PIPhoto>()->fileRef()->path());
        });
        int selected = 0;
        const auto selections =
            disk.notifications.observe(kSelectNotification, [&](const NotificationObject &) { ++selected; });
        const auto run = DateSeries{DateSeries::Days, 2}.start(
            disk.editor, disk.queue, disk.a->photos(), [](qsizetype) {}, disk.ended);
        QTRY_VERIFY(disk.outcome);
        QCOMPARE(disk.outcome->done, 3);
        QCOMPARE(disk.outcome->failure, QString());
        QCOMPARE(date("a"), kBase);
        QCOMPARE(date("b"), kBase + 2 * kDay);
        QCOMPARE(date("c"), kBase + 8 * kDay);
        QCOMPARE(disk.a->photos().at(1)->fileRef()->creationTime(), double(kBase + 2 * kDay));
        QCOMPARE(told.join(u' '), QStringLiteral("b c c c2"));
        QCOMPARE(selected, 1);
        QCOMPARE(disk.finder.handedOver.size(), 3); // made findable by their new dates, by the worker
        QVERIFY(!disk.library.isDirtyForGood());
    }
};

REGISTER_TEST(TestFileRun)
#include "TestFileRun.moc"
