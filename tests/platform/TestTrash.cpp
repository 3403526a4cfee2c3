#include "TestRunner.h"
#include "Trash.h"
#include "TrashFolders.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

class TestTrash : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;
    QByteArray m_dataHome;
    QString m_current;

    QString make(const QString &name, const QByteArray &content)
    {
        QDir().mkpath(QFileInfo(m_folder->filePath(name)).path());
        QFile file(m_folder->filePath(name));
        return file.open(QIODevice::WriteOnly) && file.write(content) == content.size() ? file.fileName() : QString();
    }
    static QByteArray read(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

private Q_SLOTS:
    void init();
    void cleanup();
    void filesComeIntoTheTrash();
    void whatCannotBeTrashedStaysWhereItIs();
    void aTrashIsKnownByItsPath();
};

void TestTrash::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_dataHome = qgetenv("XDG_DATA_HOME");
    m_current = QDir::currentPath();
    QDir::setCurrent(m_folder->path());
}

void TestTrash::cleanup()
{
    qputenv("XDG_DATA_HOME", m_dataHome);
    QDir::setCurrent(m_current);
}

void TestTrash::filesComeIntoTheTrash()
{
    const QString home = m_folder->filePath(QStringLiteral("a home, not yet made"));
    qputenv("XDG_DATA_HOME", QFile::encodeName(home));
    const QString one = make(QStringLiteral("one/Käfer.jpg"), "first");
    const QString other = make(QStringLiteral("other/Käfer.jpg"), "second");

    const auto failures = DesktopTrash().recycle({one, other, m_folder->filePath(QStringLiteral("gone.jpg"))});
    QCOMPARE(failures.size(), 1);
    QCOMPARE(failures.first().path, m_folder->filePath(QStringLiteral("gone.jpg")));
    QVERIFY(!failures.first().reason.isEmpty());
    QVERIFY(!QFile::exists(one) && !QFile::exists(other));

    const QDir files(home + QStringLiteral("/Trash/files"));
    QByteArrayList contents;
    for (const QString &name : files.entryList(QDir::Files, QDir::Name)) {
        contents << read(files.filePath(name));
        QVERIFY(read(home + QStringLiteral("/Trash/info/") + name + QStringLiteral(".trashinfo")).contains("Path="));
    }
    std::sort(contents.begin(), contents.end());
    QCOMPARE(contents, QByteArrayList({"first", "second"}));
}

void TestTrash::whatCannotBeTrashedStaysWhereItIs()
{
    const QString blocked = make(QStringLiteral("a file"), "no folder can be made in here");
    qputenv("XDG_DATA_HOME", QFile::encodeName(blocked + QStringLiteral("/home")));
    const QString photo = make(QStringLiteral("photo.jpg"), "dear");

    const auto failures = DesktopTrash().recycle({photo});
    QCOMPARE(failures.size(), 1);
    QVERIFY(!failures.first().reason.isEmpty());
    QCOMPARE(read(photo), QByteArray("dear"));
}

void TestTrash::aTrashIsKnownByItsPath()
{
    const QString home = m_folder->filePath(QStringLiteral("data"));
    qputenv("XDG_DATA_HOME", QFile::encodeName(home));
    const TrashFolders trash;
    const QByteArray own = QFile::encodeName(home);
    for (const QByteArray &path : {QByteArray(own + "/Trash/files/a.jpg"), QByteArray("/mnt/.Trash-1000/files/a.jpg"),
                                   QByteArray("/mnt/.Trash/1000/files"), QByteArray("/.Trash-x/.Trash-0")})
        QVERIFY2(trash.hold(path), path.constData());
    for (const QByteArray &path : {QByteArray(own + "/Trash of mine/a.jpg"), QByteArray("/mnt/.Trash-1000.jpg"),
                                   QByteArray("/mnt/.Trash/"), QByteArray("/mnt/.Trash-/1"), QByteArray("/Trash/1/a")})
        QVERIFY2(!trash.hold(path), path.constData());
}

REGISTER_TEST(TestTrash)
#include "TestTrash.moc"
