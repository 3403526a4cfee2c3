#include "TestRunner.h"

#include "FileFinder.h"
#include "LibraryFile.h"
#include "PIAppController.h"
#include "PIWindowController.h"
#include "PhotoLibrary.h"
#include "ThumbnailGridView.h"

#include <QAccessible>
#include <QDir>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <sys/mount.h>
#include <unistd.h>

#include <utility>

namespace {

/// A home of its own for one run after another of the real program.
class Home
{
public:
    Home()
    {
        m_environment = QProcessEnvironment::systemEnvironment();
        for (const char *name : {"HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_CONFIG_HOME", "XDG_RUNTIME_DIR"}) {
            const QString path = m_dir.filePath(QLatin1String(name));
            QDir().mkpath(path);
            m_environment.insert(QLatin1String(name), path);
        }
        m_environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    }

    QString database() const { return m_dir.filePath(QStringLiteral("XDG_DATA_HOME/Harrowmere/Photo/Photo.xml")); }
    QString path(const QString &name) const { return m_dir.filePath(name); }

    /// Runs until the window is written; the exit code, or -1 when the program did not end by itself.
    int run(const QStringList &files)
    {
        QProcess process;
        process.setProcessEnvironment(m_environment);
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(QStringLiteral(TAMSEL_PROGRAM),
                      QStringList{QStringLiteral("--screenshot"), path(QStringLiteral("window.png"))} + files);
        const bool ended = process.waitForFinished(180000) && process.exitStatus() == QProcess::NormalExit;
        log = QString::fromUtf8(process.readAll());
        return ended ? process.exitCode() : -1;
    }

    /// The captions, marks and file names of the saved library, group by group.
    QString saved() const
    {
        QString text;
        withLibrary([&](PhotoLibrary &library) {
            for (const auto &group : library.groups())
                text += describe(*group);
        });
        return text;
    }

    /// Shows the saved library, each file where the library file has it.
    void withLibrary(const std::function<void(PhotoLibrary &)> &show) const
    {
        QTemporaryDir thumbnails;
        NotificationCenter notifications;
        PathFileFinder finder;
        PhotoLibrary library(thumbnails.path(), finder, notifications);
        LibraryFile::registerTags();
        QCOMPARE(LibraryFile::load(database(), library).failure, QString());
        show(library);
    }

    QString log;

private:
    static QString describe(const PIGroup &item)
    {
        QString text = item.name() + QStringLiteral("(");
        if (item.asFolder()) {
            for (const auto &photo : item.asFolder()->photos())
                text += QFileInfo(photo->fileRef()->path()).fileName() + (photo->thumbnailDate() ? u"+ " : u" ");
        }
        for (const auto &folder : item.folders())
            text += describe(*folder);
        return text + QStringLiteral(")");
    }

    QTemporaryDir m_dir;
    QProcessEnvironment m_environment;
};

/// A volume in memory that can be taken away and brought back with all that is on it.
class Disk
{
public:
    Disk()
    {
        m_mounted = ::mount("tmpfs", point(), "tmpfs", 0, "size=8m") == 0;
        m_volume = m_mounted ? ::open_tree(AT_FDCWD, point(), OPEN_TREE_CLONE | OPEN_TREE_CLOEXEC) : -1;
    }
    ~Disk()
    {
        if (m_mounted)
            (void)takeAway();
        if (m_volume >= 0)
            ::close(m_volume);
    }
    bool isUsable() const { return m_volume >= 0; }
    QString path(const QString &name) const { return m_folder.filePath(name); }
    bool takeAway() { return std::exchange(m_mounted, false) && ::umount2(point(), MNT_DETACH) == 0; }
    bool bringBack()
    {
        m_mounted = ::move_mount(m_volume, "", AT_FDCWD, point(), MOVE_MOUNT_F_EMPTY_PATH) == 0;
        return m_mounted;
    }

private:
    const char *point() const { return m_point.constData(); }

    QTemporaryDir m_folder;
    QByteArray m_point = QFile::encodeName(m_folder.path());
    bool m_mounted = false;
    int m_volume = -1;
};

void makePicture(const QString &path, int width = 320)
{
    QDir().mkpath(QFileInfo(path).path());
    QImage image(width, 200, QImage::Format_RGB32);
    image.fill(Qt::darkCyan);
    QVERIFY(image.save(path));
}

}

class TestProgram : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keepsTheLibraryAcrossRuns()
    {
        Home home;
        QCOMPARE(home.run({}), 0);
        QCOMPARE(home.saved(), QStringLiteral("New Group(New Folder())"));

        makePicture(home.path(QStringLiteral("trip/a.jpg")));
        makePicture(home.path(QStringLiteral("trip/day/b.png")));
        QCOMPARE(home.run({home.path(QStringLiteral("trip"))}), 0);
        const QString saved = home.saved();
        QVERIFY2(saved.contains(QStringLiteral("trip(a.jpg+ day(b.png")), qPrintable(saved));
        QVERIFY(!QImage(home.path(QStringLiteral("window.png"))).isNull());

        QCOMPARE(home.run({}), 0);
        QCOMPARE(home.saved(), saved);
    }

    void aLinkedLibraryStaysALink()
    {
        Home home;
        QDir().mkpath(QFileInfo(home.database()).path());
        QDir().mkpath(home.path(QStringLiteral("elsewhere")));
        const QString target = home.path(QStringLiteral("elsewhere/Mine.xml"));
        QVERIFY(QFile::link(target, home.path(QStringLiteral("elsewhere/link"))));
        QVERIFY(QFile::link(home.path(QStringLiteral("elsewhere/link")), home.database()));
        QCOMPARE(home.run({}), 0);
        QCOMPARE(home.run({}), 0);
        QVERIFY(QFileInfo(home.database()).isSymLink());
        QVERIFY(QFileInfo(target).isFile() && !QFileInfo(target).isSymLink());
        QVERIFY(QFileInfo::exists(home.path(QStringLiteral("elsewhere/Photo~.xml"))));
        QCOMPARE(home.saved(), QStringLiteral("New Group(New Folder())"));
    }

    void photosFollowTheirFilesAcrossRuns()
    {
        Home home;
        const auto at = [&home](const char *name) { return home.path(QString::fromUtf8(name)); };
        const char *names[] = {"Photos/2023/a.png", "Photos/2023/b.png", "Photos/2024/a.png",
                               "Photos/2024/sub ü/d.png"};
        for (int i = 0; i < 4; ++i)
            makePicture(at(names[i]), 300 + i);
        QCOMPARE(home.run({at("Photos")}), 0);
        // What each photo shows is its caption from now on.
        home.withLibrary([&home](PhotoLibrary &library) {
            library.forEachPhoto([](const std::shared_ptr<PIPhoto> &photo) {
                photo->setCaption(QString::number(QImage(photo->fileRef()->path()).width()));
            });
            QVERIFY(LibraryFile::save(home.database(), library, {}));
        });

        const auto move = [&at](const char *from, const char *to) {
            QDir().mkpath(QFileInfo(at(to)).path());
            QVERIFY2(QFile::rename(at(from), at(to)), from);
        };
        move("Photos", "Pictures/Old");
        move("Pictures/Old/2023/a.png", "Pictures/Old/2024/sub ü/a.png");
        move("Pictures/Old/2024/a.png", "Pictures/Old/2023/a.png"); // another photo under an old name
        move("Pictures/Old/2023/b.png", "Pictures/renamed.png");
        QCOMPARE(home.run({}), 0);

        QStringList places;
        home.withLibrary([&](PhotoLibrary &library) {
            library.forEachPhoto([&](const std::shared_ptr<PIPhoto> &photo) {
                const QString path = photo->fileRef()->path();
                QCOMPARE(photo->caption(), QString::number(QImage(path).width()));
                places << path.mid(at("Pictures/").size());
            });
        });
        places.sort();
        QCOMPARE(places, QStringList({QStringLiteral("Old/2023/a.png"), QString::fromUtf8("Old/2024/sub ü/a.png"),
                                      QString::fromUtf8("Old/2024/sub ü/d.png"), QStringLiteral("renamed.png")}));
    }

    void aDamagedLibraryIsCopiedAside()
    {
        Home home;
        QDir().mkpath(QFileInfo(home.database()).path());
        QFile file(home.database());
        QVERIFY(file.open(QFile::WriteOnly));
        file.write("<?xml version=\"1.0\"?>\n<Photo version=\"0\">\n\t<photos>\n\t\t<photo id=\"precious\">");
        file.close();
        QCOMPARE(home.run({}), 0);
        QCOMPARE(home.saved(), QStringLiteral("New Group(New Folder())"));
        QVERIFY(home.log.contains(QStringLiteral("The database contents have been corrupted.")));

        QStringList precious;
        const QDir folder = QFileInfo(home.database()).dir();
        for (const QString &name : folder.entryList(QDir::Files)) {
            QFile candidate(folder.filePath(name));
            if (candidate.open(QFile::ReadOnly) && candidate.readAll().contains("precious"))
                precious << name;
        }
        precious.removeAll(QStringLiteral("Photo~.xml")); // the next save but one takes that away
        QCOMPARE(precious.size(), 1);
        QVERIFY(home.log.contains(precious.first()));
    }

    void aVolumeThatIsAwayIsWaitedFor()
    {
        Disk disk;
        if (!disk.isUsable())
            QSKIP("volumes cannot be mounted here");
        const QString picture = disk.path(QStringLiteral("far.png"));
        makePicture(picture);
        PIAppController &controller = PIAppController::sharedInstance();
        QCOMPARE(controller.applicationDidFinishLaunching({picture}, {}), PIAppController::Launch::Running);
        QTRY_COMPARE_WITH_TIMEOUT(controller.library().fileRefs().count(), 1, 30000);
        QTRY_VERIFY(!controller.windowController().isImporting());
        const auto spoken = [&controller] {
            QAccessibleInterface *grid =
                QAccessible::queryAccessibleInterface(&controller.windowController().thumbnailView());
            return grid && grid->childCount() == 1 ? grid->child(0)->text(QAccessible::Name) : QString();
        };
        QTRY_COMPARE(spoken(), QStringLiteral("far.png"));

        QVERIFY(disk.takeAway());
        QTRY_COMPARE_WITH_TIMEOUT(spoken(), QStringLiteral("far.png, volume not mounted"), 30000);
        QCOMPARE(controller.library().fileRefs().knownPaths(), QStringList(picture));
        QVERIFY(disk.bringBack());
        QTRY_COMPARE_WITH_TIMEOUT(spoken(), QStringLiteral("far.png"), 30000);
        controller.library().setDirty(false);
        controller.applicationWillTerminate();
    }

    void aSecondStartHandsItsFilesOver()
    {
        PIAppController &controller = PIAppController::sharedInstance();
        QCOMPARE(controller.applicationDidFinishLaunching({}, {}), PIAppController::Launch::Running);
        QTemporaryDir dir;
        const QString picture = dir.filePath(QStringLiteral("handed.jpg"));
        makePicture(picture);

        QProcess second;
        second.start(QStringLiteral(TAMSEL_PROGRAM), {picture});
        QTRY_COMPARE_WITH_TIMEOUT(second.state(), QProcess::NotRunning, 60000);
        QCOMPARE(second.exitCode(), 0);
        QTRY_COMPARE_WITH_TIMEOUT(controller.library().fileRefs().count(), 1, 30000);
        QTRY_VERIFY(!controller.windowController().isImporting());
        QTRY_COMPARE(controller.library().groups().first()->folders().first()->photos().size(), 1);
        controller.library().setDirty(false);
        controller.applicationWillTerminate();
    }
};

REGISTER_TEST(TestProgram)
#include "TestProgram.moc"
