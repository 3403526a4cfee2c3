#include "TestRunner.h"

#include "LibraryPaths.h"
#include "UserPaths.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

class TestLibraryPaths : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void choosesTheLibraryFolder_data()
    {
        QTest::addColumn<int>("modifiers");
        QTest::addColumn<bool>("marked");
        QTest::addColumn<bool>("alternate");
        const int all = Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;
        QTest::newRow("no keys") << 0 << true << false;
        QTest::newRow("two keys") << int(Qt::ControlModifier | Qt::AltModifier) << true << false;
        QTest::newRow("all keys, no mark") << all << false << false;
        QTest::newRow("all keys and the mark") << all << true << true;
        QTest::newRow("one key more") << int(all | Qt::ShiftModifier) << true << true;
    }
    void choosesTheLibraryFolder()
    {
        QFETCH(int, modifiers);
        QFETCH(bool, marked);
        QFETCH(bool, alternate);
        QTemporaryDir volume;
        const QString support = *PathForUserFolder(StandardFolder::ApplicationSupport);
        const QString mark = support + QStringLiteral("/Harrowmere/Harrowmere Advanced User");
        QDir().mkpath(support + QStringLiteral("/Harrowmere"));
        QFile::remove(mark);
        if (marked)
            QVERIFY(QFile(mark).open(QFile::WriteOnly));

        const auto paths = prepareLibraryPaths({volume.path(), Qt::KeyboardModifiers(modifiers)});
        QVERIFY(paths);
        const QString folder =
            alternate ? volume.filePath(QStringLiteral("Photo")) : support + QStringLiteral("/Harrowmere/Photo");
        QCOMPARE(paths->libraryFolder, folder);
        QCOMPARE(paths->databasePath, folder + QStringLiteral("/Photo.xml"));
        QCOMPARE(paths->thumbnailFolder.startsWith(folder), alternate);
        QVERIFY(paths->thumbnailFolder.endsWith(QStringLiteral("/Thumbnails")));
        QVERIFY(QFileInfo(paths->thumbnailFolder).isDir());
        QFile::remove(mark);
    }

    void refusesAFolderThatIsAFile()
    {
        QTemporaryDir volume;
        QVERIFY(QFile(volume.filePath(QStringLiteral("Photo"))).open(QFile::WriteOnly));
        const QString support = *PathForUserFolder(StandardFolder::ApplicationSupport);
        const QString mark = support + QStringLiteral("/Harrowmere/Harrowmere Advanced User");
        QDir().mkpath(support + QStringLiteral("/Harrowmere"));
        QVERIFY(QFile(mark).open(QFile::WriteOnly));
        QVERIFY(!prepareLibraryPaths({volume.path(), Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier}));
        QFile::remove(mark);
    }
};

REGISTER_TEST(TestLibraryPaths)
#include "TestLibraryPaths.moc"
