#include "BookmarkScene.h"
#include "MountWatcher.h"
#include "TestRunner.h"

#include <QProcess>
#include <QSignalSpy>
#include <QStandardPaths>

#include <sys/mount.h>

using Status = BookmarkResolution::Status;

/// Volumes that are really mounted and unmounted. Skipped where that is not allowed.
class TestFileBookmarkVolumes : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;
    QStringList m_mounted;

    [[nodiscard]] QString at(const char *path) const { return m_folder->filePath(QString::fromUtf8(path)); }
    [[nodiscard]] bool mountMemory(const char *path);
    [[nodiscard]] bool mountImage(const char *path);
    [[nodiscard]] bool makeImage() const;
    void unmount(const char *path);
    [[nodiscard]] std::shared_ptr<const Volumes> volumesHere() const;
    [[nodiscard]] BookmarkResolution resolve(const QByteArray &bookmark, qsizetype *foldersRead = nullptr) const;

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }
    void cleanup();
    void followsAMoveToAnotherVolume();
    void refusesTwoCopiesOnTwoVolumes();
    void findsThroughAnotherMountOfThePlace();
    void staysOnTheVolumeOfTheFile();
    void waitsForAVolumeThatIsAway();
    void tellsWhenSomethingIsMounted();
};

bool TestFileBookmarkVolumes::mountMemory(const char *path)
{
    QDir().mkpath(at(path));
    const bool mounted = ::mount("tmpfs", QFile::encodeName(at(path)).constData(), "tmpfs", 0, "size=8m") == 0;
    if (mounted)
        m_mounted.prepend(at(path));
    return mounted;
}

bool TestFileBookmarkVolumes::makeImage() const
{
    QFile image(at("disk image"));
    if (!image.open(QIODevice::WriteOnly) || !image.resize(8 * 1024 * 1024))
        return false;
    const QStringList places = {QStringLiteral("/usr/sbin"), QStringLiteral("/sbin")};
    const QString tool = QStandardPaths::findExecutable(QStringLiteral("mkfs.ext4"), places);
    return !tool.isEmpty() && QProcess::execute(tool, {QStringLiteral("-q"), image.fileName()}) == 0;
}

bool TestFileBookmarkVolumes::mountImage(const char *path)
{
    QDir().mkpath(at(path));
    QProcess mount;
    mount.start(QStringLiteral("mount"), {QStringLiteral("-o"), QStringLiteral("loop"), at("disk image"), at(path)});
    const bool mounted = mount.waitForFinished() && mount.exitStatus() == QProcess::NormalExit && mount.exitCode() == 0;
    if (mounted)
        m_mounted.prepend(at(path));
    return mounted;
}

void TestFileBookmarkVolumes::unmount(const char *path)
{
    QVERIFY(::umount(QFile::encodeName(at(path)).constData()) == 0);
    m_mounted.removeOne(at(path));
}

void TestFileBookmarkVolumes::cleanup()
{
    for (const QString &point : std::exchange(m_mounted, {}))
        QVERIFY(::umount2(QFile::encodeName(point).constData(), MNT_DETACH) == 0);
    m_folder.reset();
}

/// What is mounted in the test's folder, and nothing else: the rest of the machine is not to be searched.
std::shared_ptr<const Volumes> TestFileBookmarkVolumes::volumesHere() const
{
    QFile list(QStringLiteral("/proc/self/mountinfo"));
    QByteArray here;
    if (list.open(QIODevice::ReadOnly))
        for (const QByteArray &line : list.readAll().split('\n'))
            if (line.contains(QFile::encodeName(QFileInfo(m_folder->path()).canonicalFilePath())))
                here += line + '\n';
    return std::make_shared<const Volumes>(here, identifyMount);
}

BookmarkResolution TestFileBookmarkVolumes::resolve(const QByteArray &bookmark, qsizetype *foldersRead) const
{
    BookmarkOptions options;
    options.volumes = volumesHere();
    options.progress = [&](const BookmarkProgress &progress) {
        if (foldersRead)
            *foldersRead = progress.foldersRead;
    };
    return FileBookmark::resolve(bookmark, options);
}

#define MOUNT_OR_SKIP(mounted)                                                                                         \
    if (!(mounted))                                                                                                    \
    QSKIP("volumes cannot be mounted here")

void TestFileBookmarkVolumes::followsAMoveToAnotherVolume()
{
    MOUNT_OR_SKIP(mountMemory("one") && mountMemory("two"));
    const BookmarkScene one(at("one"));
    const QByteArray photo = FileBookmark::create(one.at("Pictures/2023/photo.jpg")).value_or(QByteArray());
    const BookmarkScene two(at("two"), BookmarkScene::Photos::Present);
    // Decoys of the same size and date stand there already.
    two.write("photo.jpg", BookmarkScene::content(5));
    two.setDate("photo.jpg", QFileInfo(one.at("Pictures/2023/photo.jpg")).lastModified().toSecsSinceEpoch());
    QCOMPARE(QProcess::execute(QStringLiteral("mv"), {one.at("Pictures/2023/photo.jpg"), two.at("moved.jpg")}), 0);

    const BookmarkResolution result = resolve(photo);
    QCOMPARE(result.status, Status::Found);
    QCOMPARE(result.path, two.at("moved.jpg"));
    QVERIFY(result.stale);
    QCOMPARE(result.fresh, FileBookmark::create(two.at("moved.jpg")).value_or(QByteArray()));
}

void TestFileBookmarkVolumes::refusesTwoCopiesOnTwoVolumes()
{
    MOUNT_OR_SKIP(mountMemory("one") && mountMemory("two"));
    const BookmarkScene one(at("one"));
    const QByteArray photo = FileBookmark::create(one.at("Pictures/2023/photo.jpg")).value_or(QByteArray());
    one.copy("Pictures/2023/photo.jpg", "Archive/copy.jpg");
    QVERIFY(QFile::copy(one.at("Pictures/2023/photo.jpg"), at("two/copy.jpg")));
    one.remove("Pictures/2023/photo.jpg");
    QCOMPARE(resolve(photo).status, Status::Ambiguous);
}

void TestFileBookmarkVolumes::findsThroughAnotherMountOfThePlace()
{
    MOUNT_OR_SKIP(mountMemory("one"));
    const BookmarkScene one(at("one"));
    const QByteArray photo = FileBookmark::create(one.at("Pictures/2023/photo.jpg")).value_or(QByteArray());
    QVERIFY(QDir().mkpath(at("other place")));
    QVERIFY(::mount(QFile::encodeName(one.at("Pictures")).constData(), QFile::encodeName(at("other place")).constData(),
                    nullptr, MS_BIND, nullptr) == 0);
    m_mounted.prepend(at("other place"));
    QCOMPARE(resolve(photo).path, one.at("Pictures/2023/photo.jpg"));

    unmount("one");
    const BookmarkResolution result = resolve(photo);
    QCOMPARE(result.path, at("other place/2023/photo.jpg"));
    QVERIFY(result.stale);
    // Only a part of the volume is left to be seen, and the fourth photo is not in it.
    QVERIFY(QFile::rename(at("other place/2023/photo.jpg"), at("other place/2022/x.jpg")));
    QCOMPARE(resolve(photo).path, at("other place/2022/x.jpg"));
}

void TestFileBookmarkVolumes::staysOnTheVolumeOfTheFile()
{
    MOUNT_OR_SKIP(mountMemory("one") && mountMemory("one/Archive"));
    const BookmarkScene scene(at("one"));
    const QByteArray photo = FileBookmark::create(scene.at("Pictures/2023/photo.jpg")).value_or(QByteArray());
    const QByteArray fourth = FileBookmark::create(scene.at("Archive/old/fourth.jpg")).value_or(QByteArray());
    scene.move("Archive/old/fourth.jpg", "Archive/x.jpg");
    QCOMPARE(resolve(fourth).path, scene.at("Archive/x.jpg"));
    // A file on the inner volume with the number of the one on the outer is not looked at.
    scene.move("Pictures/2023/photo.jpg", "x.jpg");
    qsizetype foldersRead = 0;
    QCOMPARE(resolve(photo, &foldersRead).path, scene.at("x.jpg"));
    QVERIFY(foldersRead <= 4);
}

void TestFileBookmarkVolumes::waitsForAVolumeThatIsAway()
{
    MOUNT_OR_SKIP(makeImage() && mountImage("disk"));
    const BookmarkScene disk(at("disk"));
    const QByteArray photo = FileBookmark::create(disk.at("Pictures/2023/photo.jpg")).value_or(QByteArray());
    // What lies in the empty mount point, and a copy elsewhere, change nothing.
    unmount("disk");
    const BookmarkScene empty(at("disk"));
    qsizetype foldersRead = 0;
    QCOMPARE(resolve(photo, &foldersRead).status, Status::VolumeAway);
    QCOMPARE(foldersRead, 0);

    MOUNT_OR_SKIP(mountImage("disk at another place"));
    const BookmarkResolution result = resolve(photo);
    QCOMPARE(result.path, at("disk at another place/Pictures/2023/photo.jpg"));
    QVERIFY(result.stale);
    QVERIFY(QDir(at("disk at another place")).rename(QStringLiteral("Pictures"), QStringLiteral("Archive/P")));
    QCOMPARE(resolve(photo).path, at("disk at another place/Archive/P/2023/photo.jpg"));
}

void TestFileBookmarkVolumes::tellsWhenSomethingIsMounted()
{
    MountWatcher watcher;
    QSignalSpy changes(&watcher, &MountWatcher::mountsChanged);
    const auto before = Volumes::current();
    MOUNT_OR_SKIP(mountMemory("one"));
    QTRY_VERIFY(!changes.isEmpty());
    QVERIFY(Volumes::current() != before);
    changes.clear();
    unmount("one");
    QTRY_VERIFY(!changes.isEmpty());
}

REGISTER_TEST(TestFileBookmarkVolumes)
#include "TestFileBookmarkVolumes.moc"
