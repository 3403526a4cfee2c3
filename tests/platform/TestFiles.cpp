#include "DirectoryReader.h"
#include "FileDates.h"
#include "OpenFile.h"
#include "StandardFolders.h"
#include "TestRunner.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>

class TestFiles : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;

    [[nodiscard]] QString make(const char *name, const QByteArray &content = "content") const
    {
        const QByteArray path = QFile::encodeName(m_folder->path()) + '/' + name;
        const int file = ::open(path.constData(), O_WRONLY | O_CREAT, 0600);
        const bool written = ::write(file, content.constData(), static_cast<size_t>(content.size())) == content.size();
        ::close(file);
        return written ? QString::fromUtf8(path) : QString();
    }
    [[nodiscard]] QByteArray native(const char *name) const { return QFile::encodeName(m_folder->path()) + '/' + name; }

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void directoryTellsNamesTypesAndInodes();
    void directoryCountsNamesThatAreNoText_data();
    void directoryCountsNamesThatAreNoText();
    void directoryThatCannotBeReadTellsWhy();
    void opensRegularFilesOnly_data();
    void opensRegularFilesOnly();
    void readsWholeFilesUpToALimit();
    void dateIsTheModificationTimeInSeconds_data();
    void dateIsTheModificationTimeInSeconds();
    void settingADateKeepsTheAccessTime();
    void aDateIsSetOrTheFileKeepsItsOwn();
    void folderVariablesMustBeAbsolute_data();
    void folderVariablesMustBeAbsolute();
};

void TestFiles::directoryTellsNamesTypesAndInodes()
{
    QVERIFY(!make("photo ü.jpg").isNull());
    QVERIFY(!make("\xEF\xBB\xBFmark.jpg").isNull()); // begins with a byte-order mark
    QCOMPARE(::mkdir(native("folder").constData(), 0700), 0);
    QCOMPARE(::symlink("nowhere", native("link").constData()), 0);
    QCOMPARE(::mkfifo(native("pipe").constData(), 0600), 0);
    const auto listing = readDirectory(m_folder->path());
    QVERIFY(listing.has_value());
    QMap<QString, EntryType> types;
    for (const DirectoryEntry &entry : listing->entries) {
        types[entry.name] = entry.type;
        struct stat status = {};
        QCOMPARE(::lstat(native(entry.name.toUtf8().constData()).constData(), &status), 0);
        QCOMPARE(entry.inode, quint64(status.st_ino));
    }
    const QMap<QString, EntryType> expected = {
        {QStringLiteral("photo ü.jpg"), EntryType::File}, {QStringLiteral("\uFEFFmark.jpg"), EntryType::File},
        {QStringLiteral("folder"), EntryType::Folder},    {QStringLiteral("link"), EntryType::Link},
        {QStringLiteral("pipe"), EntryType::Other},
    };
    QCOMPARE(types, expected);
    QCOMPARE(listing->undecodableNames, 0);
    QVERIFY(entryTypeAt(m_folder->path()) == EntryType::Folder);
    QVERIFY(!entryTypeAt(m_folder->filePath(QStringLiteral("link"))));
}

void TestFiles::directoryCountsNamesThatAreNoText_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("Latin-1") << QByteArray("caf\xE9.jpg");
    QTest::newRow("sequence cut short at the end") << QByteArray("abc\xE2\x82");
    QTest::newRow("overlong slash") << QByteArray("a\xC0\xAF");
    QTest::newRow("surrogate half") << QByteArray("a\xED\xA0\x80z");
    QTest::newRow("beyond Unicode") << QByteArray("\xF4\x90\x80\x80");
}

void TestFiles::directoryCountsNamesThatAreNoText()
{
    QFETCH(QByteArray, name);
    QVERIFY(!make(name.constData()).isNull());
    QVERIFY(!make("fine").isNull());
    const auto listing = readDirectory(m_folder->path());
    QCOMPARE(::unlink(native(name.constData()).constData()), 0); // the temporary folder's own removal would miss it
    QVERIFY(listing.has_value());
    QCOMPARE(listing->entries.size(), 1);
    QCOMPARE(listing->entries.first().name, QStringLiteral("fine"));
    QCOMPARE(listing->undecodableNames, 1);
}

void TestFiles::directoryThatCannotBeReadTellsWhy()
{
    QString reason;
    QVERIFY(!readDirectory(m_folder->filePath(QStringLiteral("missing")), &reason));
    QVERIFY(!reason.isEmpty());
    QVERIFY(!readDirectory(make("file")));
}

void TestFiles::opensRegularFilesOnly_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("opens");
    QTest::newRow("file") << QStringLiteral("file.jpg") << true;
    QTest::newRow("link to a file") << QStringLiteral("link.jpg") << true;
    QTest::newRow("pipe nobody writes to") << QStringLiteral("pipe.jpg") << false;
    QTest::newRow("socket") << QStringLiteral("socket.jpg") << false;
    QTest::newRow("folder") << QStringLiteral("folder.jpg") << false;
    QTest::newRow("link to a device") << QStringLiteral("null.jpg") << false;
    QTest::newRow("link to itself") << QStringLiteral("loop.jpg") << false;
    QTest::newRow("nothing") << QStringLiteral("missing.jpg") << false;
    QTest::newRow("no path") << QString() << false;
    QTest::newRow("cut short by a null character") << QStringLiteral("file.jpg\0x") << false;
}

void TestFiles::opensRegularFilesOnly()
{
    QVERIFY(!make("file.jpg").isNull());
    QCOMPARE(::symlink("file.jpg", native("link.jpg").constData()), 0);
    QCOMPARE(::symlink("/dev/null", native("null.jpg").constData()), 0);
    QCOMPARE(::symlink("loop.jpg", native("loop.jpg").constData()), 0);
    QCOMPARE(::mkfifo(native("pipe.jpg").constData(), 0600), 0);
    QCOMPARE(::mkdir(native("folder.jpg").constData(), 0700), 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, native("socket.jpg").constData(), sizeof address.sun_path - 1);
    const FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM, 0));
    QCOMPARE(::bind(socket.number(), reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);

    QFETCH(QString, name);
    QFETCH(bool, opens);
    QString reason;
    const auto file = openRegularFile(name.isEmpty() ? name : m_folder->filePath(name), &reason);
    QCOMPARE(file.has_value(), opens);
    QCOMPARE(reason.isEmpty(), opens);
    if (opens)
        QCOMPARE(file->size, 7);
}

void TestFiles::readsWholeFilesUpToALimit()
{
    const QByteArray content(100'000, 'x');
    const QString path = make("big", content);
    QCOMPARE(readWholeFile(path, 100'000), content);
    QString reason;
    QVERIFY(!readWholeFile(path, 99'999, &reason));
    QVERIFY(!reason.isEmpty());
    QCOMPARE(readWholeFile(make("empty", ""), 0), QByteArray());
    // Files that tell no size beforehand, as a growing one tells too small a one.
    const QString sizeless = QStringLiteral("/proc/self/status");
    QVERIFY(readWholeFile(sizeless, 100'000).value_or(QByteArray()).size() > 100);
    QVERIFY(!readWholeFile(sizeless, 100));
}

void TestFiles::dateIsTheModificationTimeInSeconds_data()
{
    QTest::addColumn<qint64>("seconds");
    QTest::newRow("2012") << qint64(1331700000);
    QTest::newRow("the epoch") << qint64(0);
    QTest::newRow("1950") << qint64(-631152000);
    QTest::newRow("after 2038") << qint64(2524608000);
}

void TestFiles::dateIsTheModificationTimeInSeconds()
{
    QFETCH(qint64, seconds);
    const QString path = make("photo.jpg");
    QVERIFY(FileDates::setDate(path, seconds));
    QCOMPARE(FileDates::dateOf(path), seconds);
    QString reason;
    QVERIFY(!FileDates::setDate(path + QStringLiteral(".missing"), seconds, &reason));
    QVERIFY(!reason.isEmpty());
    QVERIFY(!FileDates::dateOf(path + QStringLiteral(".missing")));
}

void TestFiles::settingADateKeepsTheAccessTime()
{
    const QString path = make("photo.jpg");
    const timespec times[2] = {{1000, 123}, {2000, 999'999'999}};
    QCOMPARE(::utimensat(AT_FDCWD, path.toUtf8().constData(), times, 0), 0);
    QCOMPARE(FileDates::dateOf(path), 2000);
    QVERIFY(FileDates::setDate(path, 3000));
    struct stat status = {};
    QCOMPARE(::stat(path.toUtf8().constData(), &status), 0);
    QCOMPARE(status.st_atim.tv_sec, 1000);
    QCOMPARE(status.st_mtim.tv_nsec, 0);
}

/// Which dates a file system knows is its own affair.
void TestFiles::aDateIsSetOrTheFileKeepsItsOwn()
{
    const QString path = make("photo.jpg");
    QVERIFY(FileDates::setDate(path, 3000));
    for (const qint64 seconds : {-5'000'000'000, 4'300'000'000, 20'000'000'000, 99'999'999'999'999}) {
        const auto before = FileDates::dateOf(path);
        QString reason;
        const bool isSet = FileDates::setDate(path, seconds, &reason);
        QCOMPARE(FileDates::dateOf(path), isSet ? seconds : before);
        QCOMPARE(reason.isEmpty(), isSet);
    }
}

void TestFiles::folderVariablesMustBeAbsolute_data()
{
    QTest::addColumn<QByteArray>("variable");
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QString>("trash");
    QTest::newRow("given") << QByteArray("XDG_DATA_HOME") << QByteArray("/d/data/")
                           << QStringLiteral("/d/data/Trash/files");
    QTest::newRow("relative") << QByteArray("XDG_DATA_HOME") << QByteArray("data")
                              << QStringLiteral("/h/.local/share/Trash/files");
    QTest::newRow("empty") << QByteArray("XDG_DATA_HOME") << QByteArray("")
                           << QStringLiteral("/h/.local/share/Trash/files");
}

void TestFiles::folderVariablesMustBeAbsolute()
{
    QFETCH(QByteArray, variable);
    QFETCH(QByteArray, value);
    const QByteArray oldHome = qgetenv("HOME");
    const QByteArray oldValue = qgetenv(variable.constData());
    qputenv("HOME", "/h");
    qputenv(variable.constData(), value);
    const auto trash = standardFolderPath(StandardFolder::Trash);
    qputenv("HOME", "not absolute");
    const auto home = homeFolder(); // the user database answers
    qputenv("HOME", oldHome);
    qputenv(variable.constData(), oldValue);
    QTEST(trash.value_or(QString()), "trash");
    QVERIFY(!home || home->startsWith(QLatin1Char('/')));
}

REGISTER_TEST(TestFiles)
#include "TestFiles.moc"
