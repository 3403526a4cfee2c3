#include "TestRunner.h"

#include "ImageScan.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

class TestImageScan : public QObject
{
    Q_OBJECT

    static void touch(const QString &path)
    {
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        QVERIFY(file.open(QFile::WriteOnly));
    }

    /// The walk as one text: "name(" and ")" around a folder, pictures by name, relative to `root`.
    static QString walk(const QStringList &paths, ScanSummary *summary = nullptr)
    {
        QStringList steps;
        const std::atomic<bool> cancelled = false;
        const ScanSummary result = scanForImages(
            paths,
            [&](const ScanStep &step) {
                const QString name = QFileInfo(step.path).fileName();
                steps << (step.kind == ScanStep::Kind::Image          ? name
                          : step.kind == ScanStep::Kind::FolderBegins ? name + QStringLiteral("(")
                                                                      : QStringLiteral(")"));
            },
            cancelled);
        if (summary)
            *summary = result;
        return steps.join(u' ');
    }

private Q_SLOTS:
    void takesFoldersBeforeFilesAndCountsAsPeopleDo()
    {
        QTemporaryDir dir;
        for (const char *name : {"top/b10.jpg", "top/b2.JPG", "top/notes.txt", "top/sub/c.png", "top/.hidden/d.jpg",
                                 "top/.e.jpg", "top/sub/deep/f.webp", "loose.tif"})
            touch(dir.filePath(QLatin1String(name)));
        QDir().mkpath(dir.filePath(QStringLiteral("top/empty")));

        ScanSummary summary;
        QCOMPARE(walk({dir.filePath(QStringLiteral("loose.tif")), dir.filePath(QStringLiteral("absent.jpg")),
                       dir.filePath(QStringLiteral("top"))},
                      &summary),
                 QStringLiteral("loose.tif top( sub( deep( f.webp ) c.png ) b2.JPG b10.jpg )"));
        QCOMPARE(summary.images, 5);
        QCOMPARE(summary.folders, 3);
    }

    void countsNamesThatAreNoText()
    {
        QTemporaryDir dir;
        touch(dir.filePath(QStringLiteral("ok.jpg")));
        const QByteArray bad = QFile::encodeName(dir.path()) + "/caf\xe9.jpg";
        FILE *file = fopen(bad.constData(), "w");
        if (!file)
            QSKIP("this file system refuses names that are not UTF-8");
        fclose(file);

        ScanSummary summary;
        QVERIFY(walk({dir.path()}, &summary).contains(QStringLiteral("ok.jpg")));
        QCOMPARE(summary.images, 1);
        QCOMPARE(summary.skippedNames, 1);
        QVERIFY(unlink(bad.constData()) == 0);
    }

    void followsLinksButNeverInCircles()
    {
        QTemporaryDir dir;
        touch(dir.filePath(QStringLiteral("real/a.jpg")));
        touch(dir.filePath(QStringLiteral("top/b.jpg")));
        QVERIFY(QFile::link(dir.filePath(QStringLiteral("top")), dir.filePath(QStringLiteral("top/loop"))));
        QVERIFY(QFile::link(dir.filePath(QStringLiteral("real")), dir.filePath(QStringLiteral("top/linked"))));
        QVERIFY(QFile::link(dir.filePath(QStringLiteral("real/a.jpg")), dir.filePath(QStringLiteral("top/link.jpg"))));
        QVERIFY(QFile::link(dir.filePath(QStringLiteral("gone")), dir.filePath(QStringLiteral("top/dead.jpg"))));
        QCOMPARE(walk({dir.filePath(QStringLiteral("top"))}), QStringLiteral("top( linked( a.jpg ) b.jpg link.jpg )"));
    }

    void tellsOfFoldersThatStandTooDeep()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("a/").repeated(502) + QStringLiteral("lost.jpg"));
        touch(path);
        touch(dir.filePath(QStringLiteral("a/seen.jpg")));
        ScanSummary summary;
        (void)walk({dir.filePath(QStringLiteral("a"))}, &summary);
        QCOMPARE(summary.images, 1);
        QCOMPARE(summary.unreadableFolders, 1);
    }

    void passesOverWhatOnlyLooksLikeAPicture()
    {
        QTemporaryDir dir;
        QDir().mkpath(dir.filePath(QStringLiteral("top/folder.jpg")));
        touch(dir.filePath(QStringLiteral("top/folder.jpg/inside.jpg")));
        QVERIFY(mkfifo(QFile::encodeName(dir.filePath(QStringLiteral("top/pipe.jpg"))).constData(), 0600) == 0);
        QCOMPARE(walk({dir.filePath(QStringLiteral("top"))}), QStringLiteral("top( folder.jpg( inside.jpg ) )"));
    }

    void stopsWhenCancelled()
    {
        QTemporaryDir dir;
        for (int i = 0; i < 50; ++i)
            touch(dir.filePath(QStringLiteral("%1.jpg").arg(i)));
        std::atomic<bool> cancelled = false;
        int images = 0;
        const ScanSummary summary = scanForImages(
            {dir.path()},
            [&](const ScanStep &step) {
                images += step.kind == ScanStep::Kind::Image;
                cancelled = images == 10;
            },
            cancelled);
        QVERIFY(summary.cancelled);
        QCOMPARE(images, 10);
    }
};

REGISTER_TEST(TestImageScan)
#include "TestImageScan.moc"
