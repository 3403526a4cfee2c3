#include "StringUtilities.h"
#include "TestRunner.h"
#include "UniqueFileName.h"
#include "UserPaths.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

class TestPathText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void components_data();
    void components();
    void composedPaths_data();
    void composedPaths();
    void homeFolderIsAbbreviatedAsPlainText();
    void uniqueNames_data();
    void uniqueNames();
    void uniqueNamesRunOutAtNinetyNine();
    void userFoldersAreMadePrivateWithTheirParents();
};

void TestPathText::components_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("last");
    QTest::addColumn<QString>("base");
    QTest::addColumn<QString>("extension");
    const auto row = [](const char *path, const char *folder, const char *last, const char *base, const char *ending) {
        QTest::newRow(path) << QString::fromUtf8(path) << QString::fromUtf8(folder) << QString::fromUtf8(last)
                            << QString::fromUtf8(base) << QString::fromUtf8(ending);
    };
    row("/a/b/photo.jpg", "/a/b", "photo.jpg", "photo", "jpg");
    row("/a", "/", "a", "a", "");
    row("/", "/", "/", "/", "");
    row("", "", "", "", "");
    row("a.tar.gz", "", "a.tar.gz", "a.tar", "gz");
    row("/a.b/c", "/a.b", "c", "c", "");
    row("/a/b.jpg//", "/a", "b.jpg", "b", "jpg");
    row("/a//b", "/a", "b", "b", "");
    row("/a/.hidden", "/a", ".hidden", ".hidden", "");
    row("/a/.hidden.jpg", "/a", ".hidden.jpg", ".hidden", "jpg");
    row("/a/name.", "/a", "name.", "name.", "");
}

void TestPathText::components()
{
    QFETCH(QString, path);
    QTEST(QVString::deletingLastPathComponent(path), "folder");
    QTEST(QVString::lastPathComponent(path), "last");
    QTEST(QVString::fileNameMinusExtension(path), "base");
    QTEST(QVString::pathExtension(path), "extension");
}

void TestPathText::composedPaths_data()
{
    QTest::addColumn<QString>("composed");
    QTest::addColumn<QString>("expected");
    const QString jpg = QStringLiteral("jpg");
    const QString name = QStringLiteral("n");
    const auto row = [](const QString &composed, const char *expected) {
        QTest::newRow(expected) << composed << QString::fromUtf8(expected);
    };
    row(QVString::stringByAppendingFile(QStringLiteral("/a/"), name, jpg), "/a/n.jpg");
    row(QVString::stringByAppendingFile(QStringLiteral("/"), name, QString()), "/n");
    row(QVString::stringByAppendingFile(QString(), name, QString()), "n");
    row(QVString::appendingPathComponent(QStringLiteral("/b"), QStringLiteral("/n/")), "/b/n");
    row(QVString::appendingPathComponent(QStringLiteral("/c"), QString()), "/c");
    row(QVString::stringByReplacingExtension(QStringLiteral("/d.e/f.png"), jpg), "/d.e/f.jpg");
    row(QVString::stringByReplacingExtension(QStringLiteral("/d.e/g"), jpg), "/d.e/g.jpg");
    row(QVString::stringByReplacingExtension(QStringLiteral("/d.e/h.png"), QString()), "/d.e/h");
    row(QVString::stringByReplacingFile(QStringLiteral("/a/old.png"), name, QStringLiteral("tif")), "/a/n.tif");
}

void TestPathText::composedPaths()
{
    QFETCH(QString, composed);
    QTEST(composed, "expected");
}

void TestPathText::homeFolderIsAbbreviatedAsPlainText()
{
    const QString home = HomeFolderPath();
    QVERIFY(home.startsWith(QLatin1Char('/')) && !home.endsWith(QLatin1Char('/')));
    const auto short_ = [](const QString &path) { return QVString::abbreviateHomeFolderPath(path); };
    QCOMPARE(short_(home + QStringLiteral("/a/b")), QStringLiteral("~/a/b"));
    QCOMPARE(short_(home + QStringLiteral("adow/x")), QStringLiteral("~adow/x"));
    for (const QString &path :
         {home, QString(QStringLiteral("/mnt") + home), QString(QStringLiteral("/mnt") + home + QStringLiteral("/x")),
          QStringLiteral("/elsewhere"), QString()})
        QCOMPARE(short_(path), path);
    QCOMPARE(QVString::expandTilde(QStringLiteral("~/a")), QString(home + QStringLiteral("/a")));
    QCOMPARE(QVString::expandTilde(QStringLiteral("~")), home);
    QCOMPARE(QVString::expandTilde(QStringLiteral("~adow/x")), QStringLiteral("~adow/x"));
    QCOMPARE(QVString::expandTilde(QStringLiteral("/~/x")), QStringLiteral("/~/x"));
}

void TestPathText::uniqueNames_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("extension");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const char *extension, const char *expected) {
        QTest::newRow(expected) << QString::fromUtf8(name) << QString::fromUtf8(extension)
                                << QString::fromUtf8(expected);
    };
    row("a/b:c", "", "abc");
    row("my.photo", "jpg", "myphoto.jpg");
    row("my.photo", "", "my.photo");
    row("/:/", "", "untitled");
    row(":", "png", "untitled.png");
    row("album.tar", "zip", "album.tar.zip");
    row("my.big.tar", "ZIP", "mybig.tar.zip");
    row("album", "ZIP", "album.ZIP");
    row("taken", "", "taken-1");
    row("taken", "jpg", "taken-2.jpg");
    row("dangling", "", "dangling-1");
}

void TestPathText::uniqueNames()
{
    QFETCH(QString, name);
    QFETCH(QString, extension);
    const QTemporaryDir folder;
    for (const char *taken : {"taken", "taken.jpg", "taken-1.jpg"})
        QVERIFY(QFile(folder.filePath(QString::fromUtf8(taken))).open(QFile::WriteOnly));
    QVERIFY(QFile::link(QStringLiteral("nowhere"), folder.filePath(QStringLiteral("dangling"))));
    QTEST(UniqueFileName(folder.path(), name, extension), "expected");
}

void TestPathText::uniqueNamesRunOutAtNinetyNine()
{
    const QTemporaryDir folder;
    const auto take = [&](const QString &name) { QVERIFY(QFile(folder.filePath(name)).open(QFile::WriteOnly)); };
    take(QStringLiteral("a.jpg"));
    for (int i = 1; i <= 98; ++i)
        take(QStringLiteral("a-%1.jpg").arg(i));
    const QString jpg = QStringLiteral("jpg");
    QCOMPARE(UniqueFileName(folder.path(), QStringLiteral("a"), jpg), QStringLiteral("a-99.jpg"));
    take(QStringLiteral("a-99.jpg"));
    const QString name = UniqueFileName(folder.path(), QStringLiteral("a"), jpg);
    QCOMPARE(name.size(), 36 + 4);
    QVERIFY(name.endsWith(QLatin1String(".jpg")));
}

void TestPathText::userFoldersAreMadePrivateWithTheirParents()
{
    const QTemporaryDir root;
    const QByteArray before = qgetenv("XDG_DATA_HOME");
    const QString data = root.filePath(QStringLiteral("not yet/data ü"));
    qputenv("XDG_DATA_HOME", data.toUtf8());
    const auto trash = PathForUserFolder(StandardFolder::Trash);
    const auto again = PathForUserFolder(StandardFolder::Trash);
    QVERIFY(QFile(root.filePath(QStringLiteral("file"))).open(QFile::WriteOnly));
    qputenv("XDG_DATA_HOME", root.filePath(QStringLiteral("file/data")).toUtf8());
    const auto blocked = PathForUserFolder(StandardFolder::ApplicationSupport);
    qputenv("XDG_DATA_HOME", before);
    QCOMPARE(trash.value_or(QString()), QString(data + QStringLiteral("/Trash/files")));
    QCOMPARE(again, trash);
    QVERIFY(!blocked);
    const auto others = QFile::ReadGroup | QFile::ExeGroup | QFile::ReadOther | QFile::ExeOther;
    for (const QString &made : {data, *trash})
        QVERIFY(QFileInfo(made).isDir() && !(QFile::permissions(made) & others));
}

REGISTER_TEST(TestPathText)
#include "TestPathText.moc"
