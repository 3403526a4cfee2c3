#include "BookmarkScene.h"
#include "ContentSearch.h"
#include "TestRunner.h"

#include <sys/stat.h>
#include <unistd.h>

using Status = BookmarkResolution::Status;

/// Many bookmarks in one round, how far a round goes, and volumes of every kind.
class TestFileBookmarkMany : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void oneWalkServesAll();
    void aFolderRenamedInPlaceNeedsNoWalk_data();
    void aFolderRenamedInPlaceNeedsNoWalk();
    void prefersTheKnownNameOfAFile();
    void entersAFolderThatDoesNotTellItsNames();
    void namesOfOneFileAreFoundTogether();
    void lostTwinsDoNotShareOneCopy();
    void doesNotTakeAnotherLostFileForACopy();
    void endsWhenCancelledOrOutOfTime_data();
    void endsWhenCancelledOrOutOfTime();
    void endsBetweenTwoFilesOfAFolder();
    void searchesNothingWhileTheVolumeIsAway();
    void mountsAVolumeWhereAllowed();
    void walksNetworkVolumesOnlyWhereAllowed();
    void followsTheVolumeToAnotherPlace();
    void needsNoTrustworthyInodes_data();
    void needsNoTrustworthyInodes();
    void doesNotTakeASiblingOfTheSameMoment();
    void needsNoBirthTimes_data();
    void needsNoBirthTimes();
    void bytesThatAreNoBookmarkAreMissing();
};

namespace {

/// What one round tells, by index.
struct Round
{
    QMap<qsizetype, BookmarkResolution> results;
    qsizetype told = 0;
    qsizetype batches = 0;
    BookmarkProgress progress;

    Round(const BookmarkScene &scene, const QList<QByteArray> &bookmarks, BookmarkOptions options = {})
    {
        if (!options.volumes)
            options.volumes = scene.volumes();
        options.resolved = [this](const QList<BookmarkResolution> &resolved) {
            ++batches;
            told += resolved.size();
            for (const BookmarkResolution &resolution : resolved)
                results.insert(resolution.index, resolution);
        };
        options.progress = [this](const BookmarkProgress &now) { progress = now; };
        FileBookmark::resolveMany(bookmarks, options);
    }
};

/// The bookmark as it would be, had the file system told less or something else.
template<typename Edit>
QByteArray edited(const QByteArray &bookmark, Edit edit)
{
    auto data = BookmarkData::decode(bookmark);
    if (!data)
        return {};
    edit(*data);
    return data->encode();
}

}

void TestFileBookmarkMany::oneWalkServesAll()
{
    constexpr int kFolders = 20;
    constexpr int kFiles = 60;
    const QTemporaryDir folder;
    const BookmarkScene scene(folder.path());
    QList<QByteArray> bookmarks;
    const auto name = [](const char *root, int number) -> QByteArray {
        return QByteArray(root) + "/sub/" + QByteArray::number(number / kFiles) + '/' + QByteArray::number(number) +
               ".jpg";
    };
    for (int number = 0; number < kFolders * kFiles; ++number) {
        const QByteArray path = name("Library", number);
        scene.write(path.constData(), "photo " + QByteArray::number(number));
        bookmarks.append(scene.bookmarkOf(path.constData()));
    }
    // The root is renamed; some files are moved to the folder of others, some are deleted.
    scene.move("Library", "Renamed");
    for (int number = 0; number < kFiles; ++number) {
        const QByteArray from = name("Renamed", number);
        if (number % 2 == 0)
            scene.move(from.constData(), QByteArray("Archive/" + QByteArray::number(number)).constData());
        else if (number % 3 == 0)
            scene.remove(from.constData());
    }

    const Round round(scene, bookmarks);
    QCOMPARE(round.told, bookmarks.size());
    QCOMPARE(round.results.size(), bookmarks.size());
    QVERIFY(round.batches > 1);
    QCOMPARE(round.progress.resolved, bookmarks.size());
    QCOMPARE(round.progress.total, bookmarks.size());
    // Every folder once: those of the files, Renamed, sub, and the scene's own seven.
    QVERIFY2(round.progress.foldersRead <= kFolders + 9, QByteArray::number(round.progress.foldersRead).constData());
    for (int number = 0; number < bookmarks.size(); ++number) {
        const bool isDeleted = number < kFiles && number % 2 == 1 && number % 3 == 0;
        QByteArray path = name("Renamed", number);
        if (number < kFiles && number % 2 == 0)
            path = "Archive/" + QByteArray::number(number);
        QCOMPARE(round.results[number].status, isDeleted ? Status::Missing : Status::Found);
        QCOMPARE(round.results[number].path, isDeleted ? QString() : scene.at(path.constData()));
    }
}

void TestFileBookmarkMany::aFolderRenamedInPlaceNeedsNoWalk_data()
{
    QTest::addColumn<QByteArray>("from");
    QTest::addColumn<QByteArray>("to");
    QTest::addColumn<QByteArray>("found"); ///< where the photo is found, if it is
    QTest::newRow("the photo's folder") << QByteArray("Pictures/2023") << QByteArray("Pictures/Spain")
                                        << QByteArray("Pictures/Spain/photo.jpg");
    QTest::newRow("one above it") << QByteArray("Pictures") << QByteArray("Photos")
                                  << QByteArray("Photos/2023/photo.jpg");
    QTest::newRow("to another place") << QByteArray("Pictures/2023") << QByteArray("Archive/2023") << QByteArray();
}
void TestFileBookmarkMany::aFolderRenamedInPlaceNeedsNoWalk()
{
    QFETCH(QByteArray, from);
    QFETCH(QByteArray, to);
    QFETCH(QByteArray, found);
    const QTemporaryDir folder;
    const BookmarkScene scene(folder.path());
    const QList<QByteArray> bookmarks{scene.bookmarkOf("Pictures/2023/other.jpg"), scene.photo};
    scene.copy("Pictures/2023/photo.jpg", "Pictures/Copy/photo.jpg");
    scene.copy("Pictures/2023/photo.jpg", "Copy/2023/photo.jpg");
    scene.remove("Pictures/2023/other.jpg"); // cannot tell the folder
    scene.move(from.constData(), to.constData());
    QVERIFY(QFile::link(scene.at(to.constData()), scene.at("Pictures/A link")) ||
            QFile::link(scene.at(to.constData()), scene.at("A link")));

    BookmarkOptions options;
    options.reach = BookmarkOptions::Reach::OldFolders;
    const Round round(scene, bookmarks, options);
    QCOMPARE(round.results[0].status, Status::Unsearched);
    QCOMPARE(round.results[1].status, found.isEmpty() ? Status::Unsearched : Status::Found);
    QCOMPARE(round.results[1].path, found.isEmpty() ? QString() : scene.at(found.constData()));
}

void TestFileBookmarkMany::prefersTheKnownNameOfAFile()
{
    const QTemporaryDir folder;
    const BookmarkScene scene(folder.path());
    QList<QByteArray> bookmarks;
    for (int number = 0; number < 30; ++number) {
        const QByteArray path = "Folder/" + QByteArray::number(number);
        scene.write(path.constData(), path);
        QVERIFY(::link(scene.nativeAt(path.constData()), QByteArray(scene.nativeAt(path.constData()) + "link")) == 0);
        bookmarks.append(scene.bookmarkOf(path.constData()));
    }
    const Round round(scene, bookmarks);
    for (int number = 0; number < bookmarks.size(); ++number) {
        QCOMPARE(round.results[number].path, scene.at(QByteArray("Folder/" + QByteArray::number(number)).constData()));
        QVERIFY(!round.results[number].stale);
    }
}

void TestFileBookmarkMany::entersAFolderThatDoesNotTellItsNames()
{
    const QTemporaryDir folder;
    const BookmarkScene scene(folder.path());
    QList<QByteArray> bookmarks;
    for (int number = 0; number < 30; ++number) {
        const QByteArray path = "Folder/" + QByteArray::number(number);
        scene.write(path.constData(), path);
        bookmarks.append(scene.bookmarkOf(path.constData()));
    }
    QVERIFY(::chmod(scene.nativeAt("Folder").constData(), 0300) == 0);
    const Round round(scene, bookmarks);
    QVERIFY(::chmod(scene.nativeAt("Folder").constData(), 0700) == 0);
    for (const BookmarkResolution &result : round.results)
        QCOMPARE(result.status, Status::Found);
}

void TestFileBookmarkMany::namesOfOneFileAreFoundTogether()
{
    const QTemporaryDir folder;
    const BookmarkScene scene(folder.path());
    scene.move("Pictures", "Photos");
    const Round round(scene, {scene.photo, scene.photo});
    QCOMPARE(round.results[0].path, scene.at("Photos/2023/photo.jpg"));
    QCOMPARE(round.results[1].path, scene.at("Photos/2023/photo.jpg"));

    // Also when it is a copy.
    scene.copy("Photos/2023/photo.jpg", "Archive/copy.jpg");
    scene.remove("Photos/2023/photo.jpg");
    const Round copies(scene, {scene.photo, scene.photo});
    QCOMPARE(copies.results[0].path, scene.at("Archive/copy.jpg"));
    QCOMPARE(copies.results[1].path, scene.at("Archive/copy.jpg"));
}

void TestFileBookmarkMany::lostTwinsDoNotShareOneCopy()
{
    const QTemporaryDir folder;
    const BookmarkScene scene(folder.path());
    scene.copy("Pictures/2023/photo.jpg", "Pictures/2023/twin.jpg");
    const QByteArray twin = scene.bookmarkOf("Pictures/2023/twin.jpg");
    scene.copy("Pictures/2023/photo.jpg", "Archive/photo.jpg");
    scene.remove("Pictures/2023/photo.jpg");
    scene.remove("Pictures/2023/twin.jpg");
    const Round round(scene, {scene.photo, twin});
    QCOMPARE(round.results[0].status, Status::Ambiguous);
    QCOMPARE(round.results[1].status, Status::Ambiguous);
}

void TestFileBookmarkMany::doesNotTakeAnotherLostFileForACopy()
{
    const QTemporaryDir folder;
    const BookmarkScene scene(folder.path());
    scene.copy("Pictures/2023/photo.jpg", "Pictures/2023/twin.jpg");
    const QByteArray twin = scene.bookmarkOf("Pictures/2023/twin.jpg");
    scene.move("Pictures/2023/twin.jpg", "Archive/twin.jpg");
    scene.remove("Pictures/2023/photo.jpg");
    const Round round(scene, {scene.photo, twin});
    QCOMPARE(round.results[0].status, Status::Missing);
    QCOMPARE(round.results[1].path, scene.at("Archive/twin.jpg"));
}

void TestFileBookmarkMany::endsWhenCancelledOrOutOfTime_data()
{
    QTest::addColumn<bool>("cancelled");
    QTest::newRow("cancelled") << true;
    QTest::newRow("out of time") << false;
}

void TestFileBookmarkMany::endsWhenCancelledOrOutOfTime()
{
    QFETCH(bool, cancelled);
    const QTemporaryDir folder;
    const BookmarkScene scene(folder.path());
    scene.move("Pictures", "Photos");
    std::stop_source source;
    BookmarkOptions options;
    options.stop = source.get_token();
    if (cancelled)
        source.request_stop();
    else
        options.timeLimit = std::chrono::milliseconds(0);
    const Round round(scene, {scene.photo, scene.photo}, options);
    QCOMPARE(round.told, 2);
    QCOMPARE(round.results[1].status, Status::Unsearched);
    QCOMPARE(round.progress.foldersRead, 0);
}

void TestFileBookmarkMany::endsBetweenTwoFilesOfAFolder()
{
    const QTemporaryDir folder;
    const BookmarkScene scene(folder.path());
    const auto volumes = scene.volumes();
    ContentCandidates candidates({});
    candidates.addWantedName("x.jpg");
    const DirectoryWalk::Folder where{scene.nativeAt("Pictures/2023")};
    for (const char *name : {"photo.jpg", "other.jpg"})
        candidates.consider(where, {name, 0, EntryType::File});
    LostFile lost{.stored = BookmarkView::of(scene.photo).value()};
    ContentSearch search({}, {});
    search.add(lost);
    int asked = 0;
    QVERIFY(search.examine(volumes->all().first(), candidates, [] { return false; }));
    QVERIFY(!search.examine(volumes->all().first(), candidates, [&] { return ++asked > 2; }));
}

void TestFileBookmarkMany::searchesNothingWhileTheVolumeIsAway()
{
    const QTemporaryDir folder;
    const BookmarkScene scene(folder.path());
    const QByteArray away = edited(scene.photo, [](BookmarkData &data) { data.volume = "uuid:away"; });
    scene.copy("Pictures/2023/photo.jpg", "Archive/photo.jpg");
    const Round round(scene, {away});
    QCOMPARE(round.results[0].status, Status::VolumeAway);
    QCOMPARE(round.progress.foldersRead, 0);
    QCOMPARE(FileBookmark::mountPoint(away), scene.at("").chopped(1));
}

void TestFileBookmarkMany::mountsAVolumeWhereAllowed()
{
    const QTemporaryDir folder;
    const BookmarkScene scene(folder.path());
    scene.move("Pictures", "Photos");
    QList<QByteArray> mounted;
    BookmarkOptions options;
    options.volumes = std::make_shared<const Volumes>(QByteArray(), identifyMount);
    options.mount = [&](const QByteArray &volume) {
        mounted.append(volume);
        return scene.volumes();
    };
    QCOMPARE(scene.resolve(scene.photo, options).status, Status::VolumeAway);
    QVERIFY(mounted.isEmpty());
    options.mounting = BookmarkOptions::Mounting::Allowed;
    QCOMPARE(scene.resolve(scene.photo, options).path, scene.at("Photos/2023/photo.jpg"));
    QCOMPARE(mounted, QList<QByteArray>{"uuid:scene"});
}

void TestFileBookmarkMany::walksNetworkVolumesOnlyWhereAllowed()
{
    const QTemporaryDir folder;
    const BookmarkScene scene(folder.path());
    BookmarkOptions options;
    options.volumes = scene.volumes("nfs4");
    scene.move("Pictures/2023/photo.jpg", "Pictures/2023/x.jpg");
    QCOMPARE(scene.resolve(scene.photo, options).path, scene.at("Pictures/2023/x.jpg"));
    scene.move("Pictures/2023/x.jpg", "Archive/x.jpg");
    QCOMPARE(scene.resolve(scene.photo, options).status, Status::Unreached);
    options.mounting = BookmarkOptions::Mounting::Allowed;
    QCOMPARE(scene.resolve(scene.photo, options).path, scene.at("Archive/x.jpg"));
}

void TestFileBookmarkMany::followsTheVolumeToAnotherPlace()
{
    QTemporaryDir folder;
    const QString before = folder.filePath(QStringLiteral("disk"));
    const QString after = folder.filePath(QStringLiteral("disk 2"));
    QVERIFY(QDir().mkpath(before));
    const QByteArray photo = BookmarkScene(before).photo;
    QVERIFY(QDir().rename(before, after));
    const BookmarkScene scene(after, BookmarkScene::Photos::Present);
    const BookmarkResolution result = scene.resolve(photo);
    QCOMPARE(result.path, scene.at("Pictures/2023/photo.jpg"));
    QVERIFY(result.stale);
    QCOMPARE(FileBookmark::mountPoint(result.fresh), after);
}

void TestFileBookmarkMany::needsNoTrustworthyInodes_data()
{
    QTest::addColumn<QByteArray>("path");
    QTest::addColumn<bool>("edited");
    QTest::newRow("where it was") << QByteArray("Pictures/2023/photo.jpg") << false;
    QTest::newRow("edited in place") << QByteArray("Pictures/2023/photo.jpg") << true;
    QTest::newRow("moved beside its copy") << QByteArray("Archive/x.jpg") << false;
}

void TestFileBookmarkMany::needsNoTrustworthyInodes()
{
    QFETCH(QByteArray, path);
    QFETCH(bool, edited);
    const QTemporaryDir folder;
    const BookmarkScene scene(folder.path());
    const quint64 another = BookmarkData::decode(scene.bookmarkOf("Pictures/2023/other.jpg"))->file.inode;
    BookmarkOptions options;
    options.volumes = scene.volumes("vfat");
    // After another mount the volume gives the photo a new number, and its old one to another photo.
    const QByteArray bookmark = ::edited(scene.photo, [&](BookmarkData &data) {
        data.file.inode = another;
        data.file.handle = {1, "made up"};
    });
    scene.copy("Pictures/2023/photo.jpg", "Pictures/2022/copy.jpg");
    if (path != "Pictures/2023/photo.jpg")
        scene.move("Pictures/2023/photo.jpg", path.constData());
    if (edited)
        scene.write(path.constData(), "edited");
    QCOMPARE(scene.resolve(bookmark, options).status, Status::Found);
    QCOMPARE(scene.resolve(bookmark, options).path, scene.at(path.constData()));
}

void TestFileBookmarkMany::doesNotTakeASiblingOfTheSameMoment()
{
    const QTemporaryDir folder;
    const BookmarkScene scene(folder.path());
    BookmarkOptions options;
    options.volumes = scene.volumes("vfat");
    const auto birthOf = [](const QByteArray &bookmark) { return BookmarkData::decode(bookmark)->file.birth; };
    for (int attempt = 0; attempt < 50; ++attempt) {
        scene.write("Card/1.jpg", {}); // both are made before either is written, which some systems time finely
        scene.write("Card/2.jpg", {});
        scene.write("Card/1.jpg", "one");
        scene.write("Card/2.jpg", "two");
        const QByteArray bookmark = scene.bookmarkOf("Card/1.jpg");
        if (birthOf(bookmark) && birthOf(bookmark) == birthOf(scene.bookmarkOf("Card/2.jpg"))) {
            scene.move("Card/1.jpg", "Card/3.jpg");
            scene.move("Card/2.jpg", "Card/1.jpg");
            QCOMPARE(scene.resolve(bookmark, options).path, scene.at("Card/3.jpg"));
            return;
        }
        scene.remove("Card/1.jpg");
        scene.remove("Card/2.jpg");
    }
    QSKIP("This file system keeps no birth times, or such that no two files share one.");
}

void TestFileBookmarkMany::needsNoBirthTimes_data()
{
    QTest::addColumn<bool>("sameHandle");
    QTest::addColumn<bool>("anyHandle");
    QTest::addColumn<bool>("isEdited");
    QTest::addColumn<Status>("status");
    QTest::newRow("the handle tells that it is the file") << true << true << true << Status::Found;
    QTest::newRow("the handle tells that the number was reused") << false << true << false << Status::Missing;
    QTest::newRow("no handle, but size and date") << false << false << false << Status::Found;
    QTest::newRow("no handle, and edited") << false << false << true << Status::Missing;
}

void TestFileBookmarkMany::needsNoBirthTimes()
{
    QFETCH(bool, sameHandle);
    QFETCH(bool, anyHandle);
    QFETCH(bool, isEdited);
    QFETCH(Status, status);
    const QTemporaryDir folder;
    const BookmarkScene scene(folder.path());
    if (BookmarkData::decode(scene.photo)->file.handle.bytes.empty())
        QSKIP("this file system makes no handles");
    const QByteArray bookmark = edited(scene.photo, [&](BookmarkData &data) {
        data.file.birth.reset();
        if (!anyHandle)
            data.file.handle = {};
        else if (!sameHandle)
            data.file.handle.bytes.back() = static_cast<char>(data.file.handle.bytes.back() ^ 1);
    });
    scene.move("Pictures/2023/photo.jpg", "Archive/x.jpg");
    if (isEdited)
        scene.write("Archive/x.jpg", BookmarkScene::content(7));
    BookmarkOptions options;
    options.copies = BookmarkOptions::Copies::Refused;
    QCOMPARE(scene.resolve(bookmark, options).status, status);
}

void TestFileBookmarkMany::bytesThatAreNoBookmarkAreMissing()
{
    const QTemporaryDir folder;
    const BookmarkScene scene(folder.path());
    const Round round(scene, {QByteArray(), scene.photo, scene.photo.chopped(1), "book"});
    QCOMPARE(round.told, 4);
    QCOMPARE(round.results[0].status, Status::Missing);
    QCOMPARE(round.results[1].status, Status::Found);
    QCOMPARE(round.results[2].status, Status::Missing);
    QCOMPARE(round.results[3].status, Status::Missing);
    QVERIFY(FileBookmark::mountPoint("book").isEmpty());
}

REGISTER_TEST(TestFileBookmarkMany)
#include "TestFileBookmarkMany.moc"
