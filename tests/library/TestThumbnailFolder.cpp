#include "TestRunner.h"

#include "ThumbnailFolder.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

class TestThumbnailFolder : public QObject
{
    Q_OBJECT

    static void put(const QDir &folder, const QString &name, const QByteArray &content = "12345")
    {
        QFile file(folder.filePath(name));
        QVERIFY(file.open(QFile::WriteOnly));
        file.write(content);
    }

    static QStringList left(const QDir &folder) { return folder.entryList(QDir::Files | QDir::Hidden, QDir::Name); }

private Q_SLOTS:
    void theCleanUpKeepsWhatIsInUse()
    {
        QTemporaryDir dir;
        const QDir folder(dir.path());
        for (const char *name : {"A.jpg", "B.jpg", ".hidden.jpg", "C.JPG", "note.txt"})
            put(folder, QLatin1String(name));
        PIClearOperation operation(dir.path(), {QStringLiteral("A"), QStringLiteral("X")});
        operation.run();
        QVERIFY(operation.isFinished());
        QCOMPARE(left(folder), QStringList({QStringLiteral(".hidden.jpg"), QStringLiteral("A.jpg"),
                                            QStringLiteral("C.JPG"), QStringLiteral("note.txt")}));
    }

    void clearingCountsWhatWasThere()
    {
        QTemporaryDir dir;
        const QDir folder(dir.path());
        put(folder, QStringLiteral("A.jpg"));
        put(folder, QStringLiteral("B.jpg"), "123");
        put(folder, QStringLiteral("note.txt"));
        const auto cleared = clearThumbnailFolder(dir.path());
        QCOMPARE(cleared.files, 2);
        QCOMPARE(cleared.bytes, 8u);
        QCOMPARE(left(folder), QStringList(QStringLiteral("note.txt")));
        QCOMPARE(clearThumbnailFolder(dir.path()).files, 0);
        QCOMPARE(clearThumbnailFolder(dir.filePath(QStringLiteral("absent"))).bytes, 0u);
    }

    void tellsWhatClearingCameTo_data()
    {
        QTest::addColumn<int>("files");
        QTest::addColumn<quint64>("bytes");
        QTest::addColumn<QString>("expected");
        const QString nothing = QStringLiteral("Cache already cleared.|Nothing needed to be deleted.");
        QTest::newRow("empty") << 0 << quint64(0) << nothing;
        QTest::newRow("nothing could be deleted") << 3 << quint64(0) << nothing;
        QTest::newRow("one") << 1 << quint64(500)
                             << QStringLiteral("Cache cleared.|1 item deleted. 0.50 KB reclaimed.");
        QTest::newRow("many") << 12 << quint64(1500000)
                              << QStringLiteral("Cache cleared.|12 items deleted. 1.50 MB reclaimed.");
    }
    void tellsWhatClearingCameTo()
    {
        QFETCH(int, files);
        QFETCH(quint64, bytes);
        const auto report = reportOf({files, bytes});
        QTEST(QString(report.title + u'|' + report.message), "expected");
    }
};

REGISTER_TEST(TestThumbnailFolder)
#include "TestThumbnailFolder.moc"
