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
};

REGISTER_TEST(TestThumbnailFolder)
#include "TestThumbnailFolder.moc"
