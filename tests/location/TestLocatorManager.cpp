#include "FakeBookmarkService.h"
#include "FileSystemCalls.h"
#include "FileWriter.h"
#include "PILocatorManager.h"
#include "PropertyList.h"
#include "SystemLog.h"
#include "TestRunner.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>

namespace {

const QString kA = QStringLiteral("AAAAAAAA-0000-4000-8000-000000000001");
const QString kB = QStringLiteral("BBBBBBBB-0000-4000-8000-000000000002");
const QString kC = QStringLiteral("CCCCCCCC-0000-4000-8000-000000000003");

QByteArray number(quint32 value)
{
    QByteArray bytes(4, '\0');
    qToLittleEndian(value, bytes.data());
    return bytes;
}

// A locator's binary form of so many bytes: a local path of one letter.
QByteArray locatorBytes(int size, char letter)
{
    const auto pathSize = static_cast<quint32>(size - 16);
    return QByteArray("\0\2\0\0", 4) + number(pathSize) + QByteArray(8, '\0') + QByteArray(size - 16, letter);
}

QVFileLocator locator(int size, char letter)
{
    return *QVFileLocator::fromBinaryArchive(locatorBytes(size, letter));
}

QByteArray block(quint32 capacity, const QByteArray &data, char filler = '\0')
{
    return number(capacity) + number(static_cast<quint32>(data.size())) +
           data.leftJustified(static_cast<qsizetype>(capacity), filler);
}

QVariantHash mapOf(std::initializer_list<std::pair<QString, QVariant>> entries)
{
    return QVariantHash(entries);
}

QVariant freeBlock(qlonglong offset, qlonglong capacity, qlonglong freedAt)
{
    return QVariantList{offset, capacity, freedAt};
}

// As long as it lives, no file can be written beyond so many bytes.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes)
        : m_handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{bytes, m_before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }

private:
    rlimit m_before = {};
    void (*m_handler)(int);
};

}

class TestLocatorManager : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<PILocatorManager> m_manager;
    QStringList m_log;

    QString databasePath() const { return m_dir->filePath(QStringLiteral("locators.database")); }
    QString listPath() const { return m_dir->filePath(QStringLiteral("locators.plist")); }
    void writeDatabase(const QByteArray &bytes)
    {
        QFile file(databasePath());
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    }
    void writeList(const QVariant &list)
    {
        QVERIFY(FileWriter::replace(listPath(), *PropertyList::toXml(list), FileWriter::Flush::No));
    }
    QByteArray bytesOf(const QString &path) const
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
    }
    QByteArray database() const { return bytesOf(databasePath()); }
    QVariant list() const { return PropertyList::read(listPath()).value_or(QVariant()); }
    bool open()
    {
        m_manager = PILocatorManager::open(m_dir->path());
        return m_manager != nullptr;
    }
    // What the path of the stored locator begins with; a dot when there is none.
    char stored(const QString &guid)
    {
        const auto found = m_manager->locatorForGuid(guid);
        return found ? found->path().at(0).toLatin1() : '.';
    }

private Q_SLOTS:
    void initTestCase()
    {
        SystemLog::setSink([this](const QString &line) { m_log.append(line); });
    }
    void cleanupTestCase() { SystemLog::setSink({}); }
    void init()
    {
        m_manager.reset();
        m_dir = std::make_unique<QTemporaryDir>(QDir::tempPath() + QStringLiteral("/library ü XXXXXX"));
        m_log.clear();
    }

    void aNewDatabaseIsItsSequenceNumber()
    {
        QVERIFY(open());
        QCOMPARE(database(), number(0));
        m_manager->save();
        m_manager->close();
        QCOMPARE(database(), number(0));
        QVERIFY(!QFile::exists(listPath()));
        QVERIFY(m_log.isEmpty());
    }

    void blocksAreWrittenAsToldByHand()
    {
        QVERIFY(open());
        m_manager->setLocator(locator(100, 'a'), kA);
        QByteArray expected = number(0) + block(100, locatorBytes(100, 'a'));
        QCOMPARE(database(), expected);
        m_manager->setLocator(locator(90, 'b'), kA);
        expected = number(0) + block(100, locatorBytes(90, 'b'), 'a');
        QCOMPARE(database(), expected);
        m_manager->setLocator(locator(120, 'c'), kA);
        expected += block(120, locatorBytes(120, 'c'));
        QCOMPARE(database(), expected);
        m_manager->setLocator(locator(50, 'd'), kB);
        expected += block(50, locatorBytes(50, 'd'));
        QCOMPARE(database(), expected);
        QVERIFY(!QFile::exists(listPath()));

        m_manager->close();
        QCOMPARE(database(), expected.replace(0, 4, number(1)));
        const QVariantHash map =
            mapOf({{kA, 112LL}, {kB, 240LL}, {QStringLiteral("free"), QVariantList{freeBlock(4, 100, 0)}}});
        QCOMPARE(list(), QVariant(map));
        m_manager->setLocator(locator(50, 'e'), kC);
        QCOMPARE(stored(kA), '.');
        QCOMPARE(database(), expected);
    }

    void handWrittenFilesAreRead_data()
    {
        QTest::addColumn<QByteArray>("list");
        QTest::newRow("XML") << QByteArray("<?xml version=\"1.0\"?><plist version=\"1.0\"><dict>"
                                           "<key>A</key><integer>4</integer><key>B</key><integer>62</integer>"
                                           "</dict></plist>");
        QTest::newRow("binary") << QByteArray("bplist00"
                                              "\xD2\1\2\3\4\x51"
                                              "A\x51"
                                              "B\x10\4\x10\x3E"
                                              "\x08\x0D\x0F\x11\x13"
                                              "\0\0\0\0\0\0\1\1\0\0\0\0\0\0\0\5\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\x15",
                                              8 + 5 + 8 + 5 + 32);
    }
    void handWrittenFilesAreRead()
    {
        QFETCH(QByteArray, list);
        writeDatabase(number(9) + block(50, locatorBytes(40, 'a'), '#') + block(30, locatorBytes(30, 'b')));
        QFile file(listPath());
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(list) == list.size() && file.flush());
        QVERIFY(open());
        QCOMPARE(stored(QStringLiteral("A")), 'a');
        QCOMPARE(m_manager->locatorForGuid(QStringLiteral("B")), std::optional(locator(30, 'b')));
        QCOMPARE(stored(QStringLiteral("a")), '.');
        m_manager->setLocator(locator(20, 'c'), QStringLiteral("A"));
        m_manager->save();
        QCOMPARE(database().first(4), number(10));
    }

    void aFreedBlockIsUsedAgainAfterFiveSaves()
    {
        writeDatabase(number(12));
        QVERIFY(open());
        m_manager->setLocator(locator(60, 'a'), kA);
        m_manager->setLocator(locator(100, 'a'), kB);
        m_manager->setLocator(locator(110, 'b'), kB); // gives up 100 bytes
        m_manager->setLocator(locator(70, 'b'), kA);  // gives up 60 bytes
        for (int saves = 1; saves <= 5; ++saves) {
            const qsizetype before = database().size();
            m_manager->setLocator(locator(40, 'x'), QString::number(saves));
            QCOMPARE(database().size(), before + 48);
            m_manager->save();
        }
        QVERIFY(open()); // the list of free blocks survives
        const qsizetype before = database().size();
        m_manager->setLocator(locator(101, 'y'), kC);
        QCOMPARE(database().size(), before + 109);
        m_manager->setLocator(locator(50, 'z'), QStringLiteral("first fit"));
        m_manager->setLocator(locator(50, 'u'), QStringLiteral("second fit"));
        QCOMPARE(database().size(), before + 109);
        QCOMPARE(database().sliced(72, 8 + 100), block(100, locatorBytes(50, 'z'), 'a'));
        QCOMPARE(database().sliced(4, 8 + 60), block(60, locatorBytes(50, 'u'), 'a'));
        m_manager->save();
        QVERIFY(!list().toHash().contains(QStringLiteral("free")));
        QCOMPARE(stored(kA), 'b');
        QCOMPARE(stored(kB), 'b');
    }

    void trimmingFreesWhatNobodyUses_data()
    {
        QTest::addColumn<QStringList>("used");
        QTest::addColumn<QVariant>("list");
        const QString freeKey = QStringLiteral("free");
        const QVariantList both{freeBlock(4, 60, 7), freeBlock(72, 50, 7)};
        QTest::newRow("one is used") << QStringList{kB, kC}
                                     << QVariant(mapOf({{kB, 72LL}, {freeKey, QVariantList{both[0]}}}));
        QTest::newRow("none is used") << QStringList() << QVariant(mapOf({{freeKey, both}}));
        QTest::newRow("all are used") << QStringList{kB, kA, kA} << QVariant(mapOf({{kA, 4LL}, {kB, 72LL}}));
    }
    void trimmingFreesWhatNobodyUses()
    {
        QFETCH(QStringList, used);
        writeDatabase(number(7) + block(60, locatorBytes(60, 'a')) + block(50, locatorBytes(50, 'b')));
        writeList(mapOf({{kA, 4LL}, {kB, 72LL}}));
        QVERIFY(open());
        m_manager->trimUnusedFiles(used);
        for (const QString &guid : {kA, kB})
            QCOMPARE(stored(guid) != '.', used.contains(guid));
        m_manager->save();
        QTEST(list(), "list");
        const bool changed = !used.contains(kA);
        QCOMPARE(database().first(4), number(changed ? 8 : 7));
    }

    void readingFollowsWriting()
    {
        writeDatabase(number(1) + block(60, locatorBytes(60, 'a')) + block(50, locatorBytes(50, 'b')));
        writeList(mapOf({{kA, 4LL}, {kB, 72LL}}));
        QVERIFY(open());
        QCOMPARE(stored(kA), 'a');
        m_manager->setLocator(locator(30, 'c'), kA);
        m_manager->setLocator(locator(5000, 'd'), kB);
        m_manager->setLocator(locator(40, 'e'), kC);
        const LocatorSnapshot snapshot = m_manager->snapshot();
        const LocatorSnapshot::Reader reader(snapshot);
        const std::pair<QString, QVFileLocator> expected[] = {
            {kA, locator(30, 'c')}, {kB, locator(5000, 'd')}, {kC, locator(40, 'e')}};
        for (const auto &[guid, last] : expected) {
            QCOMPARE(m_manager->locatorForGuid(guid), std::optional(last));
            QCOMPARE(reader.locatorForGuid(guid), std::optional(last));
        }
    }

    void namesThatAreNoGuidsStoreNothing()
    {
        QVERIFY(open());
        for (const QString &name : {QStringLiteral("free"), QString(), QString(QChar(1))}) {
            m_manager->setLocator(locator(30, 'a'), name);
            QCOMPARE(stored(name), '.');
        }
        m_manager->save();
        QCOMPARE(database(), number(0));
    }

    void damageHarmsNoOtherLocator_data()
    {
        QTest::addColumn<QByteArray>("damaged"); // what stands behind a good block
        QTest::addColumn<QVariant>("offset");    // of the locator that is asked for
        const QByteArray good = block(40, locatorBytes(40, 'd'));
        QTest::newRow("offset 0") << good << QVariant(0LL);
        QTest::newRow("offset in the sequence number") << good << QVariant(3LL);
        QTest::newRow("offset beyond the end") << good << QVariant(5000LL);
        QTest::newRow("offset just before the end") << good << QVariant(93LL);
        QTest::newRow("offset beyond 32 bits") << good << QVariant(4294967300LL);
        QTest::newRow("negative offset") << good << QVariant(-4LL);
        QTest::newRow("offset that is a text") << good << QVariant(QStringLiteral("52"));
        QTest::newRow("offset that is a list") << good << QVariant(QVariantList{52LL});
        const QVariant there = 52LL;
        QTest::newRow("cut off in its prefix") << good.first(7) << there;
        QTest::newRow("cut off in its data") << good.chopped(1) << there;
        QTest::newRow("longer than its capacity") << number(40) + number(41) + locatorBytes(48, 'd') << there;
        QTest::newRow("length of gigabytes")
            << number(0xFFFFFFFF) + number(0xFFFFFFF0) + locatorBytes(40, 'd') << there;
        QTest::newRow("capacity of gigabytes") << number(0x7FFFFFFF) + number(40) + locatorBytes(40, 'd') << there;
        QTest::newRow("zeros, as a power cut leaves them") << QByteArray(48, '\0') << there;
        QTest::newRow("a later version") << block(40, QByteArray("\1") + locatorBytes(40, 'd').sliced(1)) << there;
        QTest::newRow("a path that is longer than the data")
            << block(40, locatorBytes(40, 'd').replace(4, 4, number(900))) << there;
    }
    void damageHarmsNoOtherLocator()
    {
        QFETCH(QByteArray, damaged);
        QFETCH(QVariant, offset);
        writeDatabase(number(3) + block(40, locatorBytes(40, 'a')) + damaged);
        writeList(mapOf({{kA, 4LL}, {kB, offset}}));
        QVERIFY(open());
        QCOMPARE(stored(kB), '.');
        m_manager->setLocator(locator(60, 'n'), kB);
        m_manager->setLocator(locator(70, 'm'), kC);
        m_manager->save();
        QVERIFY(open());
        QCOMPARE(stored(kA), 'a');
        QCOMPARE(stored(kB), 'n');
        QCOMPARE(stored(kC), 'm');
        QVERIFY(!m_log.join(QLatin1Char(' ')).contains(QStringLiteral("write")));
    }

    void freeBlocksThatCannotBeFreeAreNotWrittenTo_data()
    {
        QTest::addColumn<QVariant>("free");
        QTest::newRow("no list") << QVariant(52LL);
        QTest::newRow("pairs") << QVariant(QVariantList{QVariant(QVariantList{52LL, 40LL})});
        QTest::newRow("texts") << QVariant(QVariantList{QVariant(QVariantList{QStringLiteral("52"), 40LL, 0LL})});
        QTest::newRow("block of a guid") << QVariant(QVariantList{freeBlock(4, 40, 0)});
        QTest::newRow("inside a guid's") << QVariant(QVariantList{freeBlock(12, 31, 0)});
        QTest::newRow("overlapping a guid's") << QVariant(QVariantList{freeBlock(52, 60, 0)});
        QTest::newRow("twice") << QVariant(QVariantList{freeBlock(52, 40, 0), freeBlock(52, 40, 0)});
        QTest::newRow("beyond the end") << QVariant(QVariantList{freeBlock(148, 100, 0)});
        QTest::newRow("of gigabytes") << QVariant(QVariantList{freeBlock(52, 4294967295, 0)});
        QTest::newRow("on the sequence number") << QVariant(QVariantList{freeBlock(0, 4, 0)});
    }
    void freeBlocksThatCannotBeFreeAreNotWrittenTo()
    {
        QFETCH(QVariant, free);
        const QByteArray bytes = number(90) + block(40, locatorBytes(40, 'a')) + block(40, locatorBytes(40, 'f')) +
                                 block(40, locatorBytes(40, 'b'));
        writeDatabase(bytes);
        writeList(mapOf({{kA, 4LL}, {kB, 100LL}, {QStringLiteral("free"), free}}));
        QVERIFY(open());
        m_manager->setLocator(locator(30, 'n'), kC);
        QCOMPARE(database(), bytes + block(30, locatorBytes(30, 'n')));
    }

    void twoGuidsNeverShareABlock()
    {
        writeDatabase(number(3) + block(40, locatorBytes(40, 'a')));
        writeList(mapOf({{kA, 4LL}, {kB, 4LL}}));
        QVERIFY(open());
        QCOMPARE(stored(kA), '.');
        m_manager->setLocator(locator(40, 'n'), kB);
        QCOMPARE(stored(kA), '.');
    }

    void whatCannotBeStoredIsTold()
    {
        QVERIFY(open());
        QVERIFY(!m_manager->setLocator(locator(30, 'a'), QStringLiteral("free"))); // is not for a file in the list
        QVERIFY(!m_manager->setLocator(locator(2 * 1024 * 1024, 'a'), kA));
        m_manager->close();
        QVERIFY(!m_manager->setLocator(locator(30, 'a'), kA));
        QCOMPARE(m_log.size(), 3);
        QCOMPARE(stored(kA), '.');
    }

    void aDatabaseThatBreaksOffInItsNumberBeginsAnew()
    {
        writeDatabase(QByteArray("\5\0", 2));
        writeList(mapOf({{kA, 4LL}}));
        QVERIFY(open());
        QCOMPARE(database(), number(0));
        QCOMPARE(stored(kA), '.');
    }

    void largeDatabasesAreNotOverwritten_data()
    {
        QTest::addColumn<qint64>("size");
        QTest::addColumn<bool>("fits");
        QTest::newRow("beyond what a signed number counts") << qint64(0x80000100) << true;
        QTest::newRow("just below the end") << qint64(0xFFFFFFFF) - 57 << false;
        QTest::newRow("beyond 4 GiB") << qint64(0x100000010) << false;
    }
    void largeDatabasesAreNotOverwritten()
    {
        QFETCH(qint64, size);
        QFETCH(bool, fits);
        writeDatabase(number(3) + block(40, locatorBytes(40, 'a')));
        writeList(mapOf({{kA, 4LL}}));
        QVERIFY(QFile::resize(databasePath(), size)); // a hole, that takes no room
        QVERIFY(open());
        QCOMPARE(stored(kA), 'a');
        m_manager->setLocator(locator(50, 'n'), kB);
        m_manager->setLocator(locator(30, 'b'), kA);
        m_manager->setLocator(locator(60, 'm'), kC);
        QCOMPARE(stored(kA), 'b');
        QCOMPARE(stored(kB), fits ? 'n' : '.');
        QCOMPARE(stored(kC), fits ? 'm' : '.');
        const QString message = QStringLiteral("Can't write locator database: %1").arg(EFBIG);
        QCOMPARE(m_log, fits ? QStringList() : QStringList({message, message}));
    }

    void aDamagedListIsPutAside_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("no list") << QByteArray("nonsense");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("no dictionary") << *PropertyList::toXml(QVariantList{4LL});
    }
    void aDamagedListIsPutAside()
    {
        QFETCH(QByteArray, bytes);
        QFile file(listPath());
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
        file.close();
        QVERIFY(open());
        QCOMPARE(m_log, QStringList{QStringLiteral("Can't read locator GUID map at %1").arg(listPath())});
        m_manager->save();
        QCOMPARE(bytesOf(listPath()), bytes);
        m_manager->setLocator(locator(40, 'a'), kA);
        m_manager->save();
        QCOMPARE(bytesOf(m_dir->filePath(QStringLiteral("locators-damaged.plist"))), bytes);
        QCOMPARE(list(), QVariant(mapOf({{kA, 4LL}})));
        m_manager->setLocator(locator(30, 'b'), kA);
        m_manager->save();
        QVERIFY(!QFile::exists(m_dir->filePath(QStringLiteral("locators-damaged-1.plist"))));
    }

    void aDatabaseThatCannotBeOpenedGivesNoManager_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<QString>("message");
        QTest::newRow("no folder") << 0 << QStringLiteral("Can't create locator database at %1");
        QTest::newRow("a folder in its place") << 1 << QStringLiteral("Can't open locator database %1: 21");
        QTest::newRow("a pipe in its place") << 2 << QStringLiteral("Locator database (%1) seek failed: 29");
    }
    void aDatabaseThatCannotBeOpenedGivesNoManager()
    {
        QFETCH(int, kind);
        QFETCH(QString, message);
        if (kind == 0)
            QVERIFY(QDir(m_dir->path()).removeRecursively());
        else if (kind == 1)
            QVERIFY(QDir().mkpath(databasePath()));
        else
            QCOMPARE(::mkfifo(QFile::encodeName(databasePath()).constData(), 0600), 0);
        QVERIFY(!open());
        QCOMPARE(m_log, QStringList{message.arg(databasePath())});
    }

    void aFailedWriteLeavesTheGuidWhatItHad()
    {
        QVERIFY(open());
        m_manager->setLocator(locator(60, 'a'), kA);
        m_manager->save();
        const QByteArray before = database();
        for (const rlim_t room : {rlim_t(0), rlim_t(20)}) {
            const FileSizeLimit limit(static_cast<rlim_t>(before.size()) + room);
            m_manager->setLocator(locator(90, 'b'), kA);
            m_manager->setLocator(locator(80, 'c'), kB);
        }
        QCOMPARE(m_log, QStringList(4, QStringLiteral("Can't write locator database: %1").arg(EFBIG)));
        QCOMPARE(stored(kA), 'a');
        QCOMPARE(stored(kB), '.');
        m_manager->save();
        QCOMPARE(list(), QVariant(mapOf({{kA, 4LL}})));
        m_manager->setLocator(locator(90, 'b'), kA);
        QCOMPARE(database(), before + block(90, locatorBytes(90, 'b')));
    }

    void aFailedSaveIsTriedAgain()
    {
        QVERIFY(open());
        m_manager->setLocator(locator(60, 'a'), kA);
        const FileSystemCalls real = fileSystemCalls();
        fileSystemCalls().rename = [](const char *, const char *) {
            errno = EIO;
            return -1;
        };
        m_manager->save();
        fileSystemCalls() = real;
        QCOMPARE(m_log, QStringList{QStringLiteral("Can't save locator GUID map at %1").arg(listPath())});
        QCOMPARE(database().first(4), number(1));
        m_manager->save();
        QCOMPARE(database().first(4), number(1));
        QCOMPARE(list(), QVariant(mapOf({{kA, 4LL}})));
    }
};

REGISTER_TEST(TestLocatorManager)
#include "TestLocatorManager.moc"
