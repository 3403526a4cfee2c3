#include "DirectoryWalk.h"
#include "TestRunner.h"
#include "Volumes.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/stat.h>

class TestDirectoryWalk : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;
    QList<QByteArray> m_seen; ///< paths of files, below the folder
    DirectoryWalk::Visit m_answer = DirectoryWalk::Visit::Continue;

    [[nodiscard]] QByteArray at(const QByteArray &path) const { return QFile::encodeName(m_folder->path()) + path; }
    [[nodiscard]] QList<QByteArray> seen();
    DirectoryWalk walk(DirectoryWalk::Limits limits = {});
    void make(const QByteArray &path) const;

private Q_SLOTS:
    void init();
    void readsEverythingBeneath();
    void readsNothingTwice();
    void goesOnWhereItWasStopped();
    void readsFoldersOfAnySize();
    void endsAtItsLimits();
    void passesOverWhatCannotBeRead();
    void crossesBordersOnlyWhenTold();
    void touchesNoMountThatItMayNotEnter_data();
    void touchesNoMountThatItMayNotEnter();
};

void TestDirectoryWalk::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_seen.clear();
    m_answer = DirectoryWalk::Visit::Continue;
    for (const char *path : {"/1.jpg", "/a/2.jpg", "/a/b/3.jpg", "/a/b/c/4.jpg", "/z/.hidden/5.jpg"})
        make(path);
}

void TestDirectoryWalk::make(const QByteArray &path) const
{
    const QString name = QFile::decodeName(at(path));
    QDir().mkpath(QFileInfo(name).path());
    QFile file(name);
    QVERIFY(file.open(QIODevice::WriteOnly));
}

/// In order, and forgotten.
QList<QByteArray> TestDirectoryWalk::seen()
{
    QList<QByteArray> names = std::exchange(m_seen, {});
    std::sort(names.begin(), names.end());
    return names;
}

DirectoryWalk TestDirectoryWalk::walk(DirectoryWalk::Limits limits)
{
    return DirectoryWalk(
        [this](const DirectoryWalk::Folder &folder, std::span<const DirectoryWalk::Entry> entries) {
            for (const DirectoryWalk::Entry &entry : entries) {
                struct stat facts = {};
                if (::fstatat(folder.descriptor, entry.name, &facts, AT_SYMLINK_NOFOLLOW) != 0 ||
                    facts.st_ino != entry.inode || facts.st_dev != folder.device)
                    m_seen.append("wrong");
                if (entry.type == EntryType::File)
                    m_seen.append(folder.path.sliced(at("").size()) + '/' + entry.name);
            }
            return m_answer;
        },
        std::move(limits));
}

void TestDirectoryWalk::readsEverythingBeneath()
{
    QVERIFY(QFile::link(QFile::decodeName(at("/a")), QFile::decodeName(at("/z/link"))));
    QVERIFY(::mkfifo(at("/z/pipe").constData(), 0600) == 0);
    DirectoryWalk all = walk();
    QCOMPARE(all.walk(at("")), DirectoryWalk::End::Complete);
    QCOMPARE(seen(), QList<QByteArray>({"/1.jpg", "/a/2.jpg", "/a/b/3.jpg", "/a/b/c/4.jpg", "/z/.hidden/5.jpg"}));
    QCOMPARE(all.foldersRead(), 6);
    QCOMPARE(all.entriesSeen(), 12);
    QCOMPARE(all.unreadableFolders(), 0);
}

void TestDirectoryWalk::readsNothingTwice()
{
    DirectoryWalk parts = walk();
    QCOMPARE(parts.readFolder(at("/a")), DirectoryWalk::End::Complete);
    QCOMPARE(seen(), QList<QByteArray>({"/a/2.jpg"}));
    QCOMPARE(parts.readFolder(at("/a")), DirectoryWalk::End::Complete);
    QCOMPARE(seen(), QList<QByteArray>());
    QCOMPARE(parts.walk(at("/a/b/c")), DirectoryWalk::End::Complete);
    QCOMPARE(seen(), QList<QByteArray>({"/a/b/c/4.jpg"}));
    // What is beneath the folder that was read alone is walked when its turn comes.
    QCOMPARE(parts.walk(at("")), DirectoryWalk::End::Complete);
    QCOMPARE(seen(), QList<QByteArray>({"/1.jpg", "/a/b/3.jpg", "/z/.hidden/5.jpg"}));
    QCOMPARE(parts.foldersRead(), 6);
}

void TestDirectoryWalk::goesOnWhereItWasStopped()
{
    DirectoryWalk stopped = walk();
    m_answer = DirectoryWalk::Visit::Stop;
    QList<QByteArray> all;
    for (int folder = 0; folder < 6; ++folder) {
        QCOMPARE(stopped.walk(at("")), DirectoryWalk::End::Stopped);
        all += seen();
    }
    QCOMPARE(stopped.walk(at("")), DirectoryWalk::End::Complete);
    QCOMPARE(all.size(), 5);
}

void TestDirectoryWalk::readsFoldersOfAnySize()
{
    constexpr int kFiles = 3000;
    for (int number = 0; number < kFiles; ++number)
        make("/many/" + QByteArray(100, 'x') + QByteArray::number(number));
    DirectoryWalk many = walk();
    QCOMPARE(many.walk(at("/many")), DirectoryWalk::End::Complete);
    const QList<QByteArray> names = seen();
    QCOMPARE(names.size(), kFiles);
    QCOMPARE(QSet<QByteArray>(names.cbegin(), names.cend()).size(), kFiles);
}

void TestDirectoryWalk::endsAtItsLimits()
{
    using End = DirectoryWalk::End;
    std::stop_source source;
    DirectoryWalk cancelled = walk({.stop = source.get_token()});
    QVERIFY(!cancelled.isCutShort());
    source.request_stop();
    QCOMPARE(cancelled.walk(at("")), End::CutShort);
    QCOMPARE(walk({.deadline = std::chrono::steady_clock::now()}).walk(at("")), End::CutShort);
    QCOMPARE(seen(), QList<QByteArray>());
    DirectoryWalk few = walk({.maxFolders = 2});
    QCOMPARE(few.walk(at("")), End::CutShort);
    QCOMPARE(few.foldersRead(), 2);
}

void TestDirectoryWalk::passesOverWhatCannotBeRead()
{
    QList<QByteArray> told;
    DirectoryWalk none = walk({.unreadable = [&told](const QByteArray &path, const QString &reason) {
        told << (reason.isEmpty() ? QByteArray() : path);
    }});
    QVERIFY(QFile::link(QFile::decodeName(at("/a")), QFile::decodeName(at("/link"))));
    QCOMPARE(none.walk(at("/nowhere")), DirectoryWalk::End::Complete);
    QCOMPARE(none.walk(at("/1.jpg")), DirectoryWalk::End::Complete);
    QCOMPARE(none.walk(at("/link")), DirectoryWalk::End::Complete);
    QCOMPARE(none.unreadableFolders(), 3);
    QCOMPARE(told, QList<QByteArray>({at("/nowhere"), at("/1.jpg"), at("/link")}));
    QCOMPARE(seen(), QList<QByteArray>());
}

void TestDirectoryWalk::crossesBordersOnlyWhenTold()
{
    using Borders = DirectoryWalk::Borders;
    QDir().mkpath(QFile::decodeName(at("/a/memory")));
    QDir().mkpath(QFile::decodeName(at("/a/kernel")));
    if (::mount("tmpfs", at("/a/memory").constData(), "tmpfs", 0, "size=1m") != 0)
        QSKIP("mounting is not allowed here");
    const bool hasKernel = ::mount("proc", at("/a/kernel").constData(), "proc", 0, nullptr) == 0;
    make("/a/memory/6.jpg");
    walk({.borders = Borders::Kept}).walk(at(""));
    const auto kept = seen();
    walk({.borders = Borders::Crossed}).walk(at(""));
    const auto crossed = seen();
    QVERIFY(::umount(at("/a/memory").constData()) == 0 && (!hasKernel || ::umount(at("/a/kernel").constData()) == 0));
    QVERIFY(kept.contains("/a/b/3.jpg") && !kept.contains("/a/memory/6.jpg"));
    QVERIFY(crossed.contains("/a/b/3.jpg") && crossed.contains("/a/memory/6.jpg"));
    for (const QByteArray &path : crossed)
        QVERIFY(!path.startsWith("/a/kernel/"));
}

void TestDirectoryWalk::touchesNoMountThatItMayNotEnter_data()
{
    QTest::addColumn<QByteArray>("type"); // of what is said to be mounted at /a/b
    QTest::addColumn<bool>("crossed");
    QTest::addColumn<bool>("entered");
    QTest::newRow("other files") << QByteArray("ext4") << false << false;
    QTest::newRow("other files, where borders are crossed") << QByteArray("ext4") << true << true;
    QTest::newRow("what mounts when it is touched") << QByteArray("autofs") << true << false;
}

void TestDirectoryWalk::touchesNoMountThatItMayNotEnter()
{
    QFETCH(QByteArray, type);
    QFETCH(bool, crossed);
    DirectoryWalk::Limits limits;
    limits.borders = crossed ? DirectoryWalk::Borders::Crossed : DirectoryWalk::Borders::Kept;
    limits.volumes = std::make_shared<const Volumes>("9 1 0:1 / " + at("/a/b") + " rw - " + type + " x rw",
                                                     [](const Mount &) { return QByteArray("x"); });
    DirectoryWalk mounts = walk(limits);
    QCOMPARE(mounts.walk(at("")), DirectoryWalk::End::Complete);
    QTEST(seen().contains("/a/b/c/4.jpg"), "entered");
    QTEST(mounts.foldersRead() == 6, "entered"); // not even read
}

REGISTER_TEST(TestDirectoryWalk)
#include "TestDirectoryWalk.moc"
