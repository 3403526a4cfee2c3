#include "TestRunner.h"

#include "FileCommands.h"
#include "FileDates.h"
#include "FileFinder.h"
#include "PhotoLibrary.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

class TestFileCommands : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    NotificationCenter m_notifications;
    PathFileFinder m_finder;
    std::unique_ptr<PhotoLibrary> m_library;
    std::shared_ptr<PIFolder> m_folder;

    QString path(const QString &name) const { return m_dir.filePath(name); }

    void put(const QString &name, const QByteArray &content) const
    {
        QDir().mkpath(QFileInfo(path(name)).path());
        QFile file(path(name));
        QVERIFY(file.open(QFile::WriteOnly));
        file.write(content);
    }

    QByteArray content(const QString &name) const
    {
        QFile file(path(name));
        return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
    }

    std::shared_ptr<PIPhoto> photo(const QString &name) const
    {
        const auto made = std::make_shared<PIPhoto>(m_library->fileRefs().fileRefForPath(path(name)));
        m_folder->photos() << made;
        return made;
    }

private Q_SLOTS:
    void init()
    {
        QVERIFY(QDir(m_dir.path()).removeRecursively() && QDir().mkpath(m_dir.path()));
        m_library = std::make_unique<PhotoLibrary>(m_dir.path(), m_finder, m_notifications);
        m_library->makeDefaultLibrary();
        m_folder = m_library->groups().first()->folders().first();
    }

    void renamingRefusesWhatIsNoName_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("another folder") << QStringLiteral("sub/b.jpg");
        QTest::newRow("upward") << QStringLiteral("../b.jpg");
        QTest::newRow("the folder") << QStringLiteral(".");
        QTest::newRow("the folder above") << QStringLiteral("..");
        QTest::newRow("a NUL") << QStringLiteral("b") + QChar(0) + QStringLiteral(".jpg");
        QTest::newRow("half a character") << QString(QChar(0xd800));
        QTest::newRow("too long") << QString(300, u'x');
        QTest::newRow("a folder's name") << QStringLiteral("taken");
    }
    void renamingRefusesWhatIsNoName()
    {
        QFETCH(QString, name);
        put(QStringLiteral("a.jpg"), "a");
        put(QStringLiteral("sub/x"), "");
        put(QStringLiteral("taken/x"), "");
        const auto lone = photo(QStringLiteral("a.jpg"));
        QString reason;
        QVERIFY(!FileCommands::renameFile(*m_library, *lone, name, &reason));
        QVERIFY(!reason.isEmpty());
        QCOMPARE(content(QStringLiteral("a.jpg")), QByteArray("a"));
        QCOMPARE(lone->fileRef()->path(), path(QStringLiteral("a.jpg")));
    }

    void renamingTakesThePlaceOfAnotherFile()
    {
        put(QStringLiteral("a.jpg"), "a");
        put(QStringLiteral("b.jpg"), "b");
        const auto lone = photo(QStringLiteral("a.jpg"));
        QVERIFY(FileCommands::renameFile(*m_library, *lone, QStringLiteral("a.jpg"), nullptr));
        QCOMPARE(content(QStringLiteral("a.jpg")), QByteArray("a"));
        QVERIFY(FileCommands::renameFile(*m_library, *lone, QStringLiteral("b.jpg"), nullptr));
        QCOMPARE(content(QStringLiteral("b.jpg")), QByteArray("a"));
        QVERIFY(!QFile::exists(path(QStringLiteral("a.jpg"))));
        QCOMPARE(lone->fileRef()->path(), path(QStringLiteral("b.jpg")));
        QVERIFY(!lone->isFileLost());
    }

    void theDateIsTheFiles()
    {
        put(QStringLiteral("a.jpg"), "a");
        const auto lone = photo(QStringLiteral("a.jpg"));
        const QDateTime date = QDateTime::fromSecsSinceEpoch(1000000000);
        QVERIFY(FileCommands::setDate(*m_library, *lone, date, nullptr));
        QCOMPARE(FileDates::dateOf(path(QStringLiteral("a.jpg"))), 1000000000);
        QCOMPARE(lone->fileRef()->creationTime(), 1000000000.0);
        QFile::remove(path(QStringLiteral("a.jpg")));
        QVERIFY(!FileCommands::setDate(*m_library, *lone, date, nullptr));
    }

    void findingOneMissingFileFindsItsNeighbours()
    {
        for (const char *name : {"old/a.jpg", "old/b.jpg", "old/deep/c.jpg", "old/gone.jpg", "other/d.jpg"})
            put(QLatin1String(name), name);
        QList<std::shared_ptr<PIPhoto>> photos;
        for (const char *name : {"old/a.jpg", "old/b.jpg", "old/deep/c.jpg", "old/gone.jpg", "other/d.jpg"})
            photos << photo(QLatin1String(name));
        QVERIFY(QDir(m_dir.path()).rename(QStringLiteral("old"), QStringLiteral("away")));
        put(QStringLiteral("away/c.jpg"), "");
        put(QStringLiteral("away/d.jpg"), "");
        QVERIFY(QFile::remove(path(QStringLiteral("away/gone.jpg"))));
        for (const auto &lost : photos)
            (void)lost->fileRef()->verify();

        const auto candidates =
            FileCommands::filesFoundWith(*photos[0], m_folder.get(), path(QStringLiteral("away/a.jpg")));
        QCOMPARE(FileCommands::takeMovedFiles(*m_library, FileCommands::preparedFiles(candidates, {})), 3);
        QStringList found;
        for (const auto &one : photos)
            found << QString(one->isFileLost() ? u'!' : u' ') +
                         QDir(m_dir.path()).relativeFilePath(one->fileRef()->path());
        QCOMPARE(found, QStringList({QStringLiteral(" away/a.jpg"), QStringLiteral(" away/b.jpg"),
                                     QStringLiteral(" away/c.jpg"), QStringLiteral("!old/gone.jpg"),
                                     QStringLiteral(" other/d.jpg")}));
    }

    void aWholeTreeThatMovedIsRecognised()
    {
        const QStringList names = {QStringLiteral("root/2010/a.jpg"), QStringLiteral("root/2010/b.jpg"),
                                   QStringLiteral("root/2011/c.jpg"), QStringLiteral("kept/d.jpg")};
        for (const QString &name : names)
            put(name, name.toUtf8());
        QList<std::shared_ptr<PIPhoto>> photos;
        for (const QString &name : names)
            photos << photo(name);
        QCOMPARE(FileCommands::movedFolderOf(photos[0]->fileRef()->path()), path(QStringLiteral("root/2010")));
        QVERIFY(!FileCommands::lostTreeIn(path(QStringLiteral("root")), *m_library, *photos[0]));
        const auto away = photo(QStringLiteral("root/away.jpg"));
        QVERIFY(QDir(m_dir.path()).rename(QStringLiteral("root"), QStringLiteral("new home")));
        QVERIFY(QFile::remove(path(QStringLiteral("kept/d.jpg")))); // a stray one that is lost for itself
        for (const auto &lost : photos)
            (void)lost->fileRef()->verify();
        away->fileRef()->setVolumeAway(true);

        const QString folder = FileCommands::movedFolderOf(photos[0]->fileRef()->path());
        QCOMPARE(folder, path(QStringLiteral("root")));
        const auto tree = FileCommands::lostTreeIn(folder, *m_library, *photos[0]);
        QVERIFY(tree);
        QCOMPARE(tree->files.size(), 3);
        auto moved = FileCommands::filesMovedTo(*m_library, *tree, path(QStringLiteral("new home")));
        moved[1].size = 1'000'000; // and so the one there is another
        FileCommands::takeMovedFiles(*m_library, FileCommands::preparedFiles(moved, {}));
        QCOMPARE(photos[2]->fileRef()->path(), path(QStringLiteral("new home/2011/c.jpg")));
        QVERIFY(!photos[0]->isFileLost() && photos[1]->isFileLost() && !photos[2]->isFileLost());
        QVERIFY(!FileCommands::lostTreeIn(folder, *m_library, *away)); // alone on its volume
    }
};

REGISTER_TEST(TestFileCommands)
#include "TestFileCommands.moc"
