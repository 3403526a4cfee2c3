#include "FileSystemCalls.h"
#include "FileWriter.h"
#include "TestRunner.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

using FileWriter::Flush;

namespace {

FileSystemCalls realCalls = fileSystemCalls();
std::size_t bytesLeft = 0;
bool interrupted = false;
int synced = 0;

/// A device that takes a few bytes at a time and is full after `bytesLeft`.
ssize_t writeUntilFull(int descriptor, const void *bytes, std::size_t count)
{
    if (bytesLeft == 0) {
        errno = ENOSPC;
        return -1;
    }
    const std::size_t taken = std::min({count, bytesLeft, std::size_t(3)});
    bytesLeft -= taken;
    return realCalls.write(descriptor, bytes, taken);
}

/// Every other call is interrupted by a signal, the rest take one byte.
ssize_t writeInterrupted(int descriptor, const void *bytes, std::size_t count)
{
    interrupted = !interrupted;
    if (!interrupted)
        return realCalls.write(descriptor, bytes, std::min(count, std::size_t(1)));
    errno = EINTR;
    return -1;
}

template<int error>
int failSync(int)
{
    errno = error;
    return -1;
}

int countSync(int descriptor)
{
    ++synced;
    return realCalls.fsync(descriptor);
}

int failClose(int descriptor)
{
    realCalls.close(descriptor);
    errno = EDQUOT;
    return -1;
}

template<int error>
int failRename(const char *, const char *)
{
    errno = error;
    return -1;
}

/// A server that did what it was told and answers with an error.
template<int error>
int unlinkAndFail(const char *path)
{
    (void)realCalls.unlink(path);
    errno = error;
    return -1;
}

int refuseUnlink(const char *)
{
    errno = EACCES;
    return -1;
}

/// Another program saves the file right after it got its second name.
int linkAndSave(const char *from, const char *to)
{
    const int result = realCalls.link(from, to);
    return result == 0 && FileWriter::replace(QFile::decodeName(from), "newer", Flush::No) ? 0 : -1;
}

enum class Fault { DiskFull, Sync, Close, Rename };

void inject(Fault fault)
{
    bytesLeft = 7;
    if (fault == Fault::DiskFull)
        fileSystemCalls().write = writeUntilFull;
    else if (fault == Fault::Sync)
        fileSystemCalls().fsync = failSync<EIO>;
    else if (fault == Fault::Close)
        fileSystemCalls().close = failClose;
    else
        fileSystemCalls().rename = failRename<EACCES>;
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray("(no file)");
}

mode_t modeOf(const QString &path)
{
    struct stat status = {};
    return ::stat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_mode & 07777U : 0;
}

}

class TestFileWriter : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_path;

    void put(const QString &path, const QByteArray &bytes) const { QVERIFY(FileWriter::write(path, bytes, Flush::No)); }
    [[nodiscard]] QString inFolder(const char *name) const { return m_folder->filePath(QString::fromUtf8(name)); }
    [[nodiscard]] QStringList names() const
    {
        return QDir(m_folder->path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }

private Q_SLOTS:
    void init();
    void cleanup() { fileSystemCalls() = realCalls; }

    void writesThroughInterruptionsAndShortWrites();
    void failuresAreReported_data();
    void failuresAreReported();
    void replaceLeavesTheOldFileWholeWhenItFails_data();
    void replaceLeavesTheOldFileWholeWhenItFails();
    void replaceSyncsFileAndFolder();
    void replaceKeepsModeAndLink();
    void refusesWhatIsNoFile_data();
    void refusesWhatIsNoFile();
    void renameNeverReplaces_data();
    void renameNeverReplaces();
    void failedRenameLeavesNothingBehind();
    void noRenameRemovesTheLastName_data();
    void noRenameRemovesTheLastName();
    void aCopyIsSafeBeforeTheFileGoes();
    void secondNameTakesTheOldOnesPlaceOrNothingChanges();
    void copyMakesASecondFileOrNothing();
    void impossiblePathsTouchNoOtherFile();
};

void TestFileWriter::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_path = inFolder("Photo ü.xml");
}

void TestFileWriter::writesThroughInterruptionsAndShortWrites()
{
    put(m_path, "a much longer content that must not shine through");
    fileSystemCalls().write = writeInterrupted;
    QVERIFY(FileWriter::write(m_path, "short content", Flush::ToDisk));
    QCOMPARE(contentOf(m_path), QByteArray("short content"));
}

void TestFileWriter::failuresAreReported_data()
{
    QTest::addColumn<Fault>("fault");
    QTest::newRow("disk full") << Fault::DiskFull;
    QTest::newRow("sync fails") << Fault::Sync;
    QTest::newRow("close fails") << Fault::Close;
}

void TestFileWriter::failuresAreReported()
{
    QFETCH(Fault, fault);
    inject(fault);
    QString reason;
    QVERIFY(!FileWriter::write(m_path, "more than seven bytes", Flush::ToDisk, &reason));
    QVERIFY(!reason.isEmpty());
}

void TestFileWriter::replaceLeavesTheOldFileWholeWhenItFails_data()
{
    failuresAreReported_data();
    QTest::newRow("rename fails") << Fault::Rename;
}

void TestFileWriter::replaceLeavesTheOldFileWholeWhenItFails()
{
    QFETCH(Fault, fault);
    put(m_path, "the old content");
    inject(fault);
    QString reason;
    QVERIFY(!FileWriter::replace(m_path, "the new content", Flush::ToDisk, &reason));
    QVERIFY(!reason.isEmpty());
    QCOMPARE(contentOf(m_path), QByteArray("the old content"));
    QCOMPARE(names().size(), 1);
}

void TestFileWriter::replaceSyncsFileAndFolder()
{
    fileSystemCalls().fsync = countSync;
    synced = 0;
    QVERIFY(FileWriter::replace(m_path, "x", Flush::No));
    QCOMPARE(synced, 0);
    QVERIFY(FileWriter::replace(m_path, "y", Flush::ToDisk));
    QCOMPARE(synced, 2);
    fileSystemCalls().fsync = failSync<EIO>;
    QVERIFY(FileWriter::replace(m_path, "z", Flush::No));
    QCOMPARE(contentOf(m_path), QByteArray("z"));
}

void TestFileWriter::replaceKeepsModeAndLink()
{
    put(m_path, "old");
    QCOMPARE(::chmod(QFile::encodeName(m_path).constData(), 0640), 0);
    const QString link = inFolder("link.xml");
    QVERIFY(QFile::link(m_path, link));
    QVERIFY(FileWriter::replace(link, "new", Flush::No));
    QCOMPARE(contentOf(m_path), QByteArray("new"));
    QCOMPARE(modeOf(m_path), mode_t(0640));
    QVERIFY(QFileInfo(link).isSymLink());
}

void TestFileWriter::refusesWhatIsNoFile_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("pipe") << QStringLiteral("pipe");
    QTest::newRow("folder") << QStringLiteral("folder");
    QTest::newRow("missing parent") << QStringLiteral("missing/file");
}

void TestFileWriter::refusesWhatIsNoFile()
{
    QFETCH(QString, name);
    QCOMPARE(::mkfifo(QFile::encodeName(inFolder("pipe")).constData(), 0600), 0);
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("folder")));
    QString reason;
    QVERIFY(!FileWriter::write(m_folder->filePath(name), "x", Flush::No, &reason));
    QVERIFY(!reason.isEmpty());
}

void TestFileWriter::renameNeverReplaces_data()
{
    QTest::addColumn<int>("refusesFlags"); // what the call that refuses to replace answers instead of working
    QTest::addColumn<int>("refusesLinks");
    QTest::newRow("modern file system") << 0 << 0;
    QTest::newRow("without that call") << EINVAL << 0;
    QTest::newRow("without links too") << EINVAL << EPERM;
}

void TestFileWriter::renameNeverReplaces()
{
    QFETCH(int, refusesFlags);
    QFETCH(int, refusesLinks);
    if (refusesFlags != 0)
        fileSystemCalls().renameNoReplace = failRename<EINVAL>;
    if (refusesLinks != 0)
        fileSystemCalls().link = failRename<EPERM>;
    const QString other = inFolder("other");
    put(m_path, "mine");
    put(other, "theirs");
    QString reason;
    QVERIFY(!FileWriter::renameNoReplace(m_path, other, &reason));
    QVERIFY(!reason.isEmpty());
    QCOMPARE(contentOf(m_path), QByteArray("mine"));
    QCOMPARE(contentOf(other), QByteArray("theirs"));

    const QString dangling = inFolder("dangling");
    QVERIFY(QFile::link(inFolder("nowhere"), dangling));
    QVERIFY(!FileWriter::renameNoReplace(m_path, dangling));

    const QString fresh = inFolder("fresh");
    QVERIFY(FileWriter::renameNoReplace(m_path, fresh));
    QCOMPARE(contentOf(fresh), QByteArray("mine"));
    QCOMPARE(names(), QStringList({QStringLiteral("dangling"), QStringLiteral("fresh"), QStringLiteral("other")}));
    QVERIFY(FileWriter::renameOver(fresh, other));
    // Of two names of one file, too, the new one is left.
    const QString second = inFolder("second name");
    QCOMPARE(::link(QFile::encodeName(other).constData(), QFile::encodeName(second).constData()), 0);
    QVERIFY(FileWriter::renameOver(second, other));
    QVERIFY(QFile::exists(other) && !QFile::exists(second));
    QCOMPARE(contentOf(other), QByteArray("mine"));
}

void TestFileWriter::failedRenameLeavesNothingBehind()
{
    fileSystemCalls().renameNoReplace = failRename<EINVAL>;
    fileSystemCalls().link = failRename<EPERM>;
    put(m_path, "mine");
    inject(Fault::DiskFull);
    bytesLeft = 3;
    QVERIFY(!FileWriter::renameNoReplace(m_path, inFolder("target")));
    QCOMPARE(contentOf(m_path), QByteArray("mine"));
    QVERIFY(!FileWriter::renameNoReplace(inFolder("missing"), inFolder("target")));
    QCOMPARE(names().size(), 1);
}

void TestFileWriter::noRenameRemovesTheLastName_data()
{
    using Link = decltype(FileSystemCalls::link);
    using Unlink = decltype(FileSystemCalls::unlink);
    QTest::addColumn<Link>("link");
    QTest::addColumn<Unlink>("unlink");
    QTest::addColumn<QString>("left"); ///< names with contents
    const auto row = [](const char *name, Link link, Unlink unlink, const char *left) {
        QTest::newRow(name) << link << unlink << QString::fromUtf8(left);
    };
    row("told twice", realCalls.link, unlinkAndFail<ENOENT>, "to mine");
    row("the answer is lost", realCalls.link, unlinkAndFail<EIO>, "to mine");
    row("the name cannot go", realCalls.link, refuseUnlink, "from mine");
    row("saved meanwhile", linkAndSave, realCalls.unlink, "from newer, to mine");
    row("a copy, told twice", failRename<EPERM>, unlinkAndFail<ENOENT>, "to mine");
    row("a copy, the answer is lost", failRename<EPERM>, unlinkAndFail<EIO>, "to mine");
    row("a copy, the name cannot go", failRename<EPERM>, refuseUnlink, "from mine");
}

/// Where the file system cannot promise to replace nothing.
void TestFileWriter::noRenameRemovesTheLastName()
{
    put(inFolder("from"), "mine");
    QFETCH(decltype(FileSystemCalls::link), link);
    QFETCH(decltype(FileSystemCalls::unlink), unlink);
    fileSystemCalls().renameNoReplace = failRename<EINVAL>;
    fileSystemCalls().link = link;
    fileSystemCalls().unlink = unlink;
    const bool isDone = FileWriter::renameNoReplace(inFolder("from"), inFolder("to"));
    QCOMPARE(isDone, unlink == &unlinkAndFail<ENOENT>);
    QStringList left;
    for (const QString &name : names())
        left << name + u' ' + QString::fromUtf8(contentOf(m_folder->filePath(name)));
    QTEST(left.join(QStringLiteral(", ")), "left");
}

/// Nor may the copy be on its way to the disk still when the file goes.
void TestFileWriter::aCopyIsSafeBeforeTheFileGoes()
{
    fileSystemCalls().renameNoReplace = failRename<EINVAL>;
    fileSystemCalls().link = failRename<EPERM>;
    fileSystemCalls().fsync = countSync;
    fileSystemCalls().unlink = [](const char *path) {
        return synced == 2 ? realCalls.unlink(path) : refuseUnlink(path);
    };
    synced = 0;
    put(m_path, "mine");
    QVERIFY(FileWriter::renameNoReplace(m_path, inFolder("to")));
    QCOMPARE(names(), QStringList(QStringLiteral("to")));
}

void TestFileWriter::secondNameTakesTheOldOnesPlaceOrNothingChanges()
{
    const QString backup = inFolder("backup");
    put(m_path, "new");
    put(backup, "old");
    fileSystemCalls().rename = failRename<EACCES>;
    QVERIFY(!FileWriter::linkOver(m_path, backup));
    QCOMPARE(contentOf(backup), QByteArray("old"));
    fileSystemCalls() = realCalls;
    QVERIFY(FileWriter::linkOver(m_path, backup));
    QVERIFY(FileWriter::linkOver(m_path, backup)); // two names of one file by now
    QVERIFY(FileWriter::replace(m_path, "newer", Flush::No));
    QCOMPARE(contentOf(backup), QByteArray("new"));
    QCOMPARE(names().size(), 2);
    QVERIFY(!FileWriter::linkOver(inFolder("missing"), backup));
}

void TestFileWriter::copyMakesASecondFileOrNothing()
{
    const QByteArray content(700'000, 'x');
    const QString copy = inFolder("copy");
    put(m_path, content);
    QVERIFY(FileWriter::copyNoReplace(m_path, copy));
    QCOMPARE(contentOf(copy), content);
    QVERIFY(!FileWriter::copyNoReplace(m_path, copy));
    QVERIFY(!FileWriter::copyNoReplace(m_folder->path(), inFolder("third")));
    inject(Fault::DiskFull);
    QVERIFY(!FileWriter::copyNoReplace(m_path, inFolder("third")));
    QCOMPARE(names().size(), 2);
}

void TestFileWriter::impossiblePathsTouchNoOtherFile()
{
    put(m_path, "mine");
    const QString cut = m_path + QChar(QChar::Null) + QStringLiteral("tail");
    QVERIFY(!FileWriter::write(cut, "x", Flush::No));
    QVERIFY(!FileWriter::replace(cut, "x", Flush::No));
    QVERIFY(!FileWriter::renameOver(cut, inFolder("other")));
    put(inFolder("a?"), "question mark");
    QVERIFY(!FileWriter::write(inFolder("a") + QChar(0xD800), "x", Flush::No));
    QCOMPARE(contentOf(m_path), QByteArray("mine"));
    QCOMPARE(contentOf(inFolder("a?")), QByteArray("question mark"));
}

REGISTER_TEST(TestFileWriter)
#include "TestFileWriter.moc"
