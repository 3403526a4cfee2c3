#include "TestRunner.h"

#include "BookmarkData.h"
#include "FileBookmark.h"
#include "OrphanSearch.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <unistd.h>

class TestOrphanSearch : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

    QString put(const QString &name) const
    {
        const QString path = m_dir.filePath(name);
        QDir().mkpath(QFileInfo(path).path());
        return QFile(path).open(QFile::WriteOnly) ? path : QString();
    }

    static QStringList pathsOf(const OrphanSearchResult &result)
    {
        QStringList paths;
        for (qsizetype index = 0; index < result.orphans.count(); ++index)
            paths << result.orphans.path(index);
        return paths;
    }

private Q_SLOTS:
    void findsPicturesThatTheLibraryDoesNotKnow()
    {
        const QString known = put(QStringLiteral("known.jpg"));
        const QString knownBelow = put(QString::fromUtf8("sub/bekannt ö.jpg"));
        for (const char *name : {"Zebra.JPG", "sub/apple.png", "sub/deep/Mango.tiff", "notes.txt", "jpg", ".jpg",
                                 "a.jpg.txt", "KNOWN.jpg", "sub/known.jpg", ".Trash-1000/files/away.jpg"})
            put(QLatin1String(name));
        put(QString::fromUtf8("sub/größe ä.webp"));
        QVERIFY(QFile::link(known, m_dir.filePath(QStringLiteral("link.jpg"))));
        QVERIFY(QFile::link(m_dir.filePath(QStringLiteral("sub")), m_dir.filePath(QStringLiteral("linked"))));
        QDir().mkpath(m_dir.filePath(QStringLiteral("folder.jpg")));
        const QByteArray undecodable = QFile::encodeName(m_dir.path()) + "/\xff.jpg";
        QVERIFY(::close(::open(undecodable.constData(), O_CREAT, 0600)) == 0);

        const auto result = findOrphans({m_dir.path(), {known, knownBelow, QStringLiteral("/elsewhere.jpg")}}, {});
        QCOMPARE(pathsOf(result), QStringList({QStringLiteral("sub/apple.png"), QString::fromUtf8("sub/größe ä.webp"),
                                               QStringLiteral("KNOWN.jpg"), QStringLiteral("sub/known.jpg"),
                                               QStringLiteral("sub/deep/Mango.tiff"), QStringLiteral("Zebra.JPG")}));
        QCOMPARE(result.undecodableNames, 1);
        QVERIFY(!result.cancelled);
    }

    void cachesHoldNoOrphansUnlessTheyAreAskedFor()
    {
        const QByteArray before = qgetenv("XDG_CACHE_HOME");
        put(QStringLiteral("cache/program/thumbnail.jpg"));
        qputenv("XDG_CACHE_HOME", QFile::encodeName(m_dir.filePath(QStringLiteral("cache"))));
        const auto everywhere = findOrphans({m_dir.path()}, {});
        const auto there = findOrphans({m_dir.filePath(QStringLiteral("cache/program"))}, {});
        qputenv("XDG_CACHE_HOME", before);
        QVERIFY(!pathsOf(everywhere).contains(QStringLiteral("cache/program/thumbnail.jpg")));
        QCOMPARE(pathsOf(there), QStringList{QStringLiteral("thumbnail.jpg")});
    }

    void howTheFolderIsNamedMakesNoDifference_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::newRow("plain") << QString();
        QTest::newRow("trailing slash") << QStringLiteral("/");
        QTest::newRow("link") << QStringLiteral(" link");
    }
    void howTheFolderIsNamedMakesNoDifference()
    {
        QFETCH(QString, folder);
        QTemporaryDir dir;
        QVERIFY(QDir(dir.path()).mkdir(QStringLiteral("a")));
        QVERIFY(QFile::link(dir.filePath(QStringLiteral("a")), dir.filePath(QStringLiteral("a link"))));
        for (const char *name : {"a/known.jpg", "a/new.jpg"})
            QVERIFY(QFile(dir.filePath(QLatin1String(name))).open(QFile::WriteOnly));
        const OrphanRequest request{dir.filePath(QStringLiteral("a")) + folder,
                                    {dir.filePath(QStringLiteral("a/known.jpg"))}};
        QCOMPARE(pathsOf(findOrphans(request, {})), QStringList(QStringLiteral("new.jpg")));
    }

    void aMissingFileIsRecognised()
    {
        QTemporaryDir dir;
        const auto put = [&dir](const char *name, const QByteArray &content) {
            QFile file(dir.filePath(QLatin1String(name)));
            QVERIFY(file.open(QFile::WriteOnly) && file.write(content) == content.size());
        };
        put("photo.jpg", "a photo");
        put("deleted.jpg", "a dear photo");
        const auto bookmark = FileBookmark::create(dir.filePath(QStringLiteral("photo.jpg")));
        const auto deleted = FileBookmark::create(dir.filePath(QStringLiteral("deleted.jpg")));
        if (!bookmark || !deleted)
            QSKIP("there are no bookmarks here");
        QVERIFY(QFile::rename(dir.filePath(QStringLiteral("photo.jpg")), dir.filePath(QStringLiteral("b.jpg"))));
        put("a.jpg", "another");
        put("c.jpg", "a dear photo");
        QVERIFY(QFile::remove(dir.filePath(QStringLiteral("deleted.jpg"))));
        put("d.jpg", "a photo that is away");
        auto away = *BookmarkData::decode(*FileBookmark::create(dir.filePath(QStringLiteral("d.jpg"))));
        auto twin = *BookmarkData::decode(*deleted);
        away.volume = twin.volume = "uuid:not mounted";
        const auto result =
            findOrphans({dir.path(),
                         {},
                         {{QStringLiteral("guid"), *bookmark}, {QStringLiteral("deleted"), *deleted}},
                         {{QStringLiteral("away"), away.encode()}, {QStringLiteral("twin"), twin.encode()}}},
                        {});
        QCOMPARE(pathsOf(result), QStringList({QStringLiteral("a.jpg"), QStringLiteral("b.jpg"),
                                               QStringLiteral("c.jpg"), QStringLiteral("d.jpg")}));
        QCOMPARE(result.missing,
                 (QMultiMap<qsizetype, QString>{{1, QStringLiteral("guid")}, {2, QStringLiteral("deleted")}}));
        QCOMPARE(result.byContent, QSet<qsizetype>{2});
        QCOMPARE(result.copiesOfAway, (QMultiMap<qsizetype, QString>{{3, QStringLiteral("away")}}));
    }

    void stopsWhenTold()
    {
        std::stop_source source;
        source.request_stop();
        const auto result = findOrphans({m_dir.path()}, source.get_token());
        QVERIFY(result.cancelled);
        QCOMPARE(result.orphans.count(), 0);
    }
};

REGISTER_TEST(TestOrphanSearch)
#include "TestOrphanSearch.moc"
