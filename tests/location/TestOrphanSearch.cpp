#include "TestRunner.h"

#include "OrphanSearch.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

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

private Q_SLOTS:
    void findsPicturesThatTheLibraryDoesNotKnow()
    {
        const QString known = put(QStringLiteral("known.jpg"));
        for (const char *name :
             {"Zebra.JPG", "sub/apple.png", "sub/deep/Mango.tiff", "notes.txt", "jpg", ".jpg", "a.jpg.txt"})
            put(QLatin1String(name));
        put(QString::fromUtf8("sub/größe ä.webp"));
        QVERIFY(QFile::link(known, m_dir.filePath(QStringLiteral("link.jpg"))));
        QDir().mkpath(m_dir.filePath(QStringLiteral("folder.jpg")));

        const auto result = findOrphans(m_dir.path(), {known}, {});
        QCOMPARE(result.relativePaths,
                 QStringList({QStringLiteral("sub/apple.png"), QString::fromUtf8("sub/größe ä.webp"),
                              QStringLiteral("sub/deep/Mango.tiff"), QStringLiteral("Zebra.JPG")}));
        QVERIFY(!result.cancelled);
    }

    void aTrailingSlashMakesNoDifference()
    {
        QTemporaryDir dir;
        QVERIFY(QFile(dir.filePath(QStringLiteral("a.jpg"))).open(QFile::WriteOnly));
        const QSet<QString> known = {dir.filePath(QStringLiteral("a.jpg"))};
        QVERIFY(findOrphans(dir.path() + QStringLiteral("/"), known, {}).relativePaths.isEmpty());
        QCOMPARE(findOrphans(dir.path() + QStringLiteral("/"), {}, {}).relativePaths,
                 QStringList(QStringLiteral("a.jpg")));
    }

    void stopsWhenTold()
    {
        std::stop_source source;
        source.request_stop();
        const auto result = findOrphans(m_dir.path(), {}, source.get_token());
        QVERIFY(result.cancelled);
        QVERIFY(result.relativePaths.isEmpty());
    }
};

REGISTER_TEST(TestOrphanSearch)
#include "TestOrphanSearch.moc"
