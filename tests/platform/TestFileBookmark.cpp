#include "BookmarkScene.h"
#include "TestRunner.h"

#include <unistd.h>

using Status = BookmarkResolution::Status;
using Change = std::function<void(const BookmarkScene &)>;
Q_DECLARE_METATYPE(Change)

/// What becomes of one bookmarked photo after something was done to its file in the file manager.
class TestFileBookmark : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void findsTheFile_data();
    void findsTheFile();
    void refusesWhatIsNotTheFile_data();
    void refusesWhatIsNotTheFile();
    void missesAFileWhoseNameIsNoText();
    void acceptsTheOnlyCopy();
    void countsCopiesOfOtherExtensions_data();
    void countsCopiesOfOtherExtensions();
    void doesNotTakeAReusedInode();
    void tellsAFileFromItsSnapshot();
    void findsFolders();
    void keepsTheUsersWayThroughLinks();
    void tellsWhetherItIsCurrent();
    void refusesToBookmark_data();
    void refusesToBookmark();
};

void TestFileBookmark::findsTheFile_data()
{
    QTest::addColumn<Change>("change");
    QTest::addColumn<QByteArray>("path");
    QTest::addColumn<bool>("stale");
    using Scene = const BookmarkScene &;
    const char *photo = "Pictures/2023/photo.jpg";
    const auto row = [](const char *name, const Change &change, const char *path) {
        QTest::newRow(name) << change << QByteArray(path) << true;
    };
    QTest::newRow("nothing was done") << Change([](Scene) {}) << QByteArray(photo) << false;
    QTest::newRow("a hard link was made") << Change([=](Scene scene) {
        QVERIFY(::link(scene.nativeAt(photo).constData(), scene.nativeAt("Archive/link.jpg").constData()) == 0);
    }) << QByteArray(photo) << false;
    QTest::newRow("a copy was made beside it")
        << Change([=](Scene scene) { scene.copy(photo, "Pictures/2023/copy.jpg"); }) << QByteArray(photo) << false;
    QTest::newRow("its tree was moved and a link left") << Change([=](Scene scene) {
        scene.move("Pictures", "Archive/Pictures");
        QVERIFY(QFile::link(scene.at("Archive/Pictures"), scene.at("Pictures")));
    }) << QByteArray(photo) << false;

    row(
        "renamed in place", [=](Scene scene) { scene.move(photo, "Pictures/2023/new ü\n.png"); },
        "Pictures/2023/new ü\n.png");
    row(
        "moved to a sibling folder", [=](Scene scene) { scene.move(photo, "Pictures/2022/photo.jpg"); },
        "Pictures/2022/photo.jpg");
    row(
        "folder renamed", [](Scene scene) { scene.move("Pictures/2023", "Pictures/Year"); }, "Pictures/Year/photo.jpg");
    row(
        "folder moved elsewhere", [](Scene scene) { scene.move("Pictures/2023", "Archive/a/b/2023"); },
        "Archive/a/b/2023/photo.jpg");
    row(
        "tree renamed at its root", [](Scene scene) { scene.move("Pictures", "Photos"); }, "Photos/2023/photo.jpg");
    row(
        "tree renamed, folder moved, file renamed",
        [](Scene scene) {
            scene.move("Pictures", "Photos");
            scene.move("Photos/2023", "Archive/2023");
            scene.move("Archive/2023/photo.jpg", "Archive/2023/x.jpg");
        },
        "Archive/2023/x.jpg");
    row(
        "swapped with another",
        [=](Scene scene) {
            scene.move(photo, "t");
            scene.move("Pictures/2023/other.jpg", photo);
            scene.move("t", "Pictures/2023/other.jpg");
        },
        "Pictures/2023/other.jpg");
    row(
        "swapped with a copy",
        [=](Scene scene) {
            scene.move(photo, "Archive/photo.jpg");
            scene.copy("Archive/photo.jpg", photo);
        },
        "Archive/photo.jpg");
    row(
        "the other hard link is left",
        [=](Scene scene) {
            QVERIFY(::link(scene.nativeAt(photo).constData(), scene.nativeAt("Archive/link.jpg").constData()) == 0);
            scene.remove(photo);
        },
        "Archive/link.jpg");
    row(
        "moved, and a folder made in its place",
        [=](Scene scene) {
            scene.move(photo, "Archive/photo.jpg");
            QVERIFY(QDir().mkpath(scene.at(photo)));
        },
        "Archive/photo.jpg");
    row(
        "moved, and a link to another put in its place",
        [=](Scene scene) {
            scene.move(photo, "Archive/photo.jpg");
            QVERIFY(QFile::link(scene.at("Pictures/2023/other.jpg"), scene.at(photo)));
        },
        "Archive/photo.jpg");
    row(
        "moved beside its copies",
        [=](Scene scene) {
            scene.copy(photo, "Archive/copy.jpg");
            scene.copy(photo, "Pictures/2023/copy.jpg");
            scene.move(photo, "Archive/photo.jpg");
        },
        "Archive/photo.jpg");
    row(
        "edited in place", [=](Scene scene) { scene.write(photo, "shorter"); }, photo);
    row(
        "edited in place and moved",
        [=](Scene scene) {
            scene.write(photo, "shorter");
            scene.move(photo, "Archive/x.jpg");
        },
        "Archive/x.jpg");
    row(
        "its date set", [=](Scene scene) { scene.setDate(photo, 1'000'000); }, photo);
}

void TestFileBookmark::findsTheFile()
{
    QFETCH(Change, change);
    QFETCH(QByteArray, path);
    QFETCH(bool, stale);
    const QTemporaryDir folder;
    const BookmarkScene scene(folder.path());
    change(scene);

    const BookmarkResolution result = scene.resolve(scene.photo);
    QCOMPARE(result.status, Status::Found);
    QCOMPARE(result.path, scene.at(path.constData()));
    QCOMPARE(result.stale, stale);
    QCOMPARE(result.fresh.isEmpty(), !stale);
    if (!stale)
        return;
    // The fresh bookmark is as good as one made now.
    QCOMPARE(BookmarkData::decode(result.fresh), BookmarkData::decode(scene.bookmarkOf(path.constData())));
    const BookmarkResolution again = scene.resolve(result.fresh);
    QCOMPARE(again.path, result.path);
    QVERIFY(!again.stale);
}

void TestFileBookmark::refusesWhatIsNotTheFile_data()
{
    QTest::addColumn<Change>("change");
    QTest::addColumn<Status>("status");
    using Scene = const BookmarkScene &;
    const char *photo = "Pictures/2023/photo.jpg";
    const auto row = [](const char *name, Status status, const Change &change) {
        QTest::newRow(name) << change << status;
    };
    row("deleted", Status::Missing, [=](Scene scene) { scene.remove(photo); });
    row("replaced by another of the same size", Status::Missing,
        [=](Scene scene) { scene.move("Pictures/2023/other.jpg", photo); });
    row("replaced by another of the same size and date", Status::Missing, [=](Scene scene) {
        scene.move("Pictures/2023/other.jpg", photo);
        const auto data = BookmarkData::decode(scene.photo);
        scene.setDate(photo, data->file.modified.seconds);
    });
    row("deleted, and a decoy that differs in its last byte", Status::Missing, [=](Scene scene) {
        scene.remove(photo);
        QByteArray decoy = BookmarkScene::content(1);
        decoy.back() = static_cast<char>(decoy.back() ^ 1);
        scene.write("Archive/photo.jpg", decoy);
    });
    row("deleted, and a decoy that goes on after it", Status::Missing, [=](Scene scene) {
        scene.remove(photo);
        scene.write("Archive/photo.jpg", BookmarkScene::content(1) + 'x');
    });
    row("deleted, with two copies", Status::Ambiguous, [=](Scene scene) {
        scene.copy(photo, "Archive/photo.jpg");
        scene.copy(photo, "Archive/copy.jpg");
        scene.remove(photo);
    });
}

void TestFileBookmark::refusesWhatIsNotTheFile()
{
    QFETCH(Change, change);
    QFETCH(Status, status);
    const QTemporaryDir folder;
    const BookmarkScene scene(folder.path());
    change(scene);
    const BookmarkResolution result = scene.resolve(scene.photo);
    QCOMPARE(result.status, status);
    QVERIFY(result.path.isEmpty());
}

void TestFileBookmark::missesAFileWhoseNameIsNoText()
{
    const QTemporaryDir folder;
    const BookmarkScene scene(folder.path());
    const QByteArray photo = scene.nativeAt("Pictures/2023/photo.jpg");
    const QByteArray name = scene.nativeAt("Archive/") + "\xff.jpg";
    QVERIFY(::rename(photo.constData(), name.constData()) == 0);
    QCOMPARE(scene.resolve(scene.photo).status, Status::Unnameable);
    QVERIFY(::unlink(name.constData()) == 0); // QTemporaryDir cannot
}

void TestFileBookmark::acceptsTheOnlyCopy()
{
    const QTemporaryDir folder;
    const BookmarkScene scene(folder.path());
    scene.copy("Pictures/2023/photo.jpg", "Archive/restored.JPG");
    QVERIFY(::link(scene.nativeAt("Archive/restored.JPG").constData(),
                   scene.nativeAt("Archive/second name.jpg").constData()) == 0);
    scene.remove("Pictures/2023/photo.jpg");

    BookmarkOptions refused;
    refused.copies = BookmarkOptions::Copies::Refused;
    QCOMPARE(scene.resolve(scene.photo, refused).status, Status::Missing);

    // A second name is no second copy; but a file that is another photo's is none.
    const BookmarkResolution found = scene.resolve(scene.photo);
    QCOMPARE(found.status, Status::Found);
    QVERIFY(found.stale);
    QVERIFY(found.path == scene.at("Archive/restored.JPG") || found.path == scene.at("Archive/second name.jpg"));
    QVERIFY(!scene.resolve(found.fresh).stale);

    BookmarkOptions inUse;
    inUse.pathsInUse = {scene.at("Archive/restored.JPG"), scene.at("Archive/second name.jpg")};
    QCOMPARE(scene.resolve(scene.photo, inUse).status, Status::Missing);
}

void TestFileBookmark::countsCopiesOfOtherExtensions_data()
{
    QTest::addColumn<QByteArray>("lost");
    QTest::addColumn<QByteArray>("copy"); ///< beside the one that is "restored.jpeg"
    QTest::addColumn<Status>("status");
    QTest::newRow("a copy by another extension") << QByteArray("K.jpg") << QByteArray() << Status::Found;
    QTest::newRow("wrong extension, and a copy that has it too")
        << QByteArray("K.PNG") << QByteArray("again.png") << Status::Ambiguous;
    QTest::newRow("no extension") << QByteArray("K") << QByteArray("again") << Status::Ambiguous;
    QTest::newRow("an extension of its own") << QByteArray("K.pic") << QByteArray("again.PIC") << Status::Ambiguous;
    QTest::newRow("a copy in a trash") << QByteArray("K.jpg") << QByteArray(".Trash-1000/files/K.jpg") << Status::Found;
    QTest::newRow("what is no picture is no copy") << QByteArray("K.jpg") << QByteArray("again.bin") << Status::Found;
}

void TestFileBookmark::countsCopiesOfOtherExtensions()
{
    QFETCH(QByteArray, lost);
    QFETCH(QByteArray, copy);
    const QTemporaryDir folder;
    const BookmarkScene scene(folder.path());
    scene.copy("Pictures/2023/photo.jpg", lost.constData());
    scene.move("Pictures/2023/photo.jpg", "Archive/restored.jpeg");
    if (!copy.isEmpty())
        scene.copy("Archive/restored.jpeg", copy.constData());
    const QByteArray bookmark = scene.bookmarkOf(lost.constData());
    scene.remove(lost.constData());
    BookmarkOptions options;
    options.copyExtensions = {"jpg", "jpeg", "png"};
    QTEST(scene.resolve(bookmark, options).status, "status");
}

void TestFileBookmark::doesNotTakeAReusedInode()
{
    const QTemporaryDir folder;
    const BookmarkScene scene(folder.path());
    const quint64 inode = BookmarkData::decode(scene.photo)->file.inode;
    scene.remove("Pictures/2023/photo.jpg");
    // With the same name, size and date: only the inode's generation and birth tell them apart.
    const char *taker = "Pictures/2023/photo.jpg";
    for (int attempt = 0; attempt < 50; ++attempt) {
        scene.write(taker, BookmarkScene::content(9));
        scene.setDate(taker, BookmarkData::decode(scene.photo)->file.modified.seconds);
        const QByteArray bookmark = scene.bookmarkOf(taker);
        if (BookmarkData::decode(bookmark)->file.inode == inode) {
            QCOMPARE(scene.resolve(scene.photo).status, Status::Missing);
            scene.move(taker, "Archive/photo.jpg");
            QCOMPARE(scene.resolve(scene.photo).status, Status::Missing);
            return;
        }
        scene.move(taker, QByteArray("Archive/" + QByteArray::number(attempt)).constData());
    }
    QSKIP("This file system does not hand out the inode number of a deleted file again.");
}

void TestFileBookmark::tellsAFileFromItsSnapshot()
{
    const FileIdentity stored{FileKind::File, 257, {0x4d, "root 5"}, FileTime{10, 20}, 1000, {30, 40}};
    FileIdentity snapshot = stored;
    snapshot.handle.bytes = "root 9";
    QCOMPARE(compareFiles(stored, snapshot, InodeTrust::Shared), Sameness::AskHandle);
    QCOMPARE(compareHandles(stored, snapshot), Sameness::Different);
    QCOMPARE(compareHandles(stored, stored), Sameness::Same);
    FileIdentity bornLater = stored;
    bornLater.birth = FileTime{11, 20};
    QCOMPARE(compareFiles(stored, bornLater, InodeTrust::Shared), Sameness::Different);
}

void TestFileBookmark::findsFolders()
{
    const QTemporaryDir folder;
    const BookmarkScene scene(folder.path());
    const QByteArray bookmark = scene.bookmarkOf("Pictures/2023");
    scene.remove("Pictures/2023/other.jpg");
    QVERIFY(!scene.resolve(bookmark).stale);

    scene.move("Pictures/2023", "Archive/deep/Year");
    QVERIFY(QDir().mkpath(scene.at("Pictures/2023")));
    const BookmarkResolution result = scene.resolve(bookmark);
    QCOMPARE(result.status, Status::Found);
    QCOMPARE(result.path, scene.at("Archive/deep/Year"));
}

void TestFileBookmark::keepsTheUsersWayThroughLinks()
{
    const QTemporaryDir folder;
    const BookmarkScene scene(folder.path());
    QVERIFY(QFile::link(scene.at("Pictures"), scene.at("Albums")));
    QVERIFY(QFile::link(scene.at("Pictures/2023/photo.jpg"), scene.at("favourite.jpg")));
    const QByteArray album = scene.bookmarkOf("Albums/2023/photo.jpg");
    const QByteArray favourite = scene.bookmarkOf("favourite.jpg");
    QCOMPARE(scene.resolve(album).path, scene.at("Albums/2023/photo.jpg"));
    QVERIFY(!scene.resolve(album).stale);
    QCOMPARE(scene.resolve(favourite).path, scene.at("favourite.jpg"));

    scene.move("Pictures/2023", "Pictures/Year");
    QCOMPARE(scene.resolve(album).path, scene.at("Albums/Year/photo.jpg"));
    QCOMPARE(scene.resolve(favourite).path, scene.at("Pictures/Year/photo.jpg"));
    const QByteArray fresh = scene.resolve(album).fresh;
    scene.move("Pictures/Year/photo.jpg", "Pictures/photo.jpg");
    QCOMPARE(scene.resolve(fresh).path, scene.at("Albums/photo.jpg"));
    scene.move("Pictures/photo.jpg", "Archive/photo.jpg");
    QCOMPARE(scene.resolve(fresh).path, scene.at("Archive/photo.jpg"));
}

void TestFileBookmark::tellsWhetherItIsCurrent()
{
    const QTemporaryDir folder;
    const BookmarkScene scene(folder.path());
    const auto present = [&](const char *path) {
        return examineLinkedFile(scene.nativeAt(path).constData()).value_or(PresentFile()).identity;
    };
    const auto isCurrent = [&](const char *path) { return FileBookmark::isCurrent(scene.photo, present(path)); };
    QVERIFY(isCurrent("Pictures/2023/photo.jpg"));
    QVERIFY(!isCurrent("Pictures/2023/other.jpg"));
    QVERIFY(!isCurrent("Pictures/2023"));
    scene.move("Pictures/2023/photo.jpg", "x.jpg");
    QVERIFY(isCurrent("x.jpg"));
    scene.write("x.jpg", "edited");
    QVERIFY(!isCurrent("x.jpg"));

    // On a volume that makes up its numbers, another one means nothing; a later birth does everywhere.
    const QByteArray bookmark = scene.bookmarkOf("x.jpg");
    FileIdentity other = present("x.jpg");
    ++other.inode;
    QVERIFY(!FileBookmark::isCurrent(bookmark, other, scene.volumes("ext4").get()));
    QVERIFY(FileBookmark::isCurrent(bookmark, other, scene.volumes("exfat").get()));
    ++other.size;
    QVERIFY(!FileBookmark::isCurrent(bookmark, other, scene.volumes("exfat").get()));
    FileIdentity reborn = present("x.jpg");
    if (!reborn.birth)
        QSKIP("this file system keeps no birth times");
    ++reborn.birth->seconds;
    QVERIFY(!FileBookmark::isCurrent(bookmark, reborn));
    reborn.birth.reset();
    QVERIFY(FileBookmark::isCurrent(bookmark, reborn));
}

void TestFileBookmark::refusesToBookmark_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("nothing") << QStringLiteral("/nowhere/at/all.jpg");
    QTest::newRow("no path") << QString();
    QTest::newRow("relative") << QStringLiteral("a.jpg");
    QTest::newRow("device") << QStringLiteral("/dev/null");
    QTest::newRow("made up by the kernel") << QStringLiteral("/proc/self/status");
    QTest::newRow("null character") << QStringLiteral("/tmp") + QChar(u'\0') + QStringLiteral("x");
}

void TestFileBookmark::refusesToBookmark()
{
    QFETCH(QString, path);
    QString reason;
    QVERIFY(!FileBookmark::create(path, &reason));
    QVERIFY(!reason.isEmpty());
}

REGISTER_TEST(TestFileBookmark)
#include "TestFileBookmark.moc"
