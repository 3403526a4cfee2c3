#include "TestRunner.h"

#include "FileFinder.h"
#include "LibraryFile.h"
#include "PIAppController.h"
#include "PIWindowController.h"
#include "PhotoLibrary.h"

#include <QDir>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

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
        QTemporaryDir thumbnails;
        NotificationCenter notifications;
        PathFileFinder finder;
        PhotoLibrary library(thumbnails.path(), finder, notifications);
        LibraryFile::registerTags();
        const auto result = LibraryFile::load(database(), library);
        QString text = result.failure;
        for (const auto &group : library.groups())
            text += describe(*group);
        return text;
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

void makePicture(const QString &path)
{
    QDir().mkpath(QFileInfo(path).path());
    QImage image(320, 200, QImage::Format_RGB32);
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
