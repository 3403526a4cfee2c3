#include "ProgramStart.h"

#include "LibraryWindow.h"
#include "PIAppController.h"
#include "PIWindowController.h"
#include "Pair.h"
#include "PhotoLibrary.h"
#include "SampleLibrary.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QDir>
#include <QImage>
#include <QMainWindow>
#include <QPainter>
#include <QProcess>
#include <QWindow>

#include <cstdio>
#include <functional>

namespace {

constexpr char kOurs[] = "--start";
constexpr char kOursSaved[] = "--start-and-save";
constexpr char kBareWindow[] = "--bare-window";
constexpr char kUsable[] = "usable";

void runUntilIdle()
{
    while (QAbstractEventDispatcher::instance()->processEvents(QEventLoop::AllEvents)) {
    }
}

/// Says so on standard output when the window is on show, `isReady` answers true and nothing is left to do.
void runUntilUsable(const QWidget &window, const std::function<bool()> &isReady)
{
    for (;;) {
        runUntilIdle();
        if (window.windowHandle() && window.windowHandle()->isExposed() && isReady())
            break;
        QAbstractEventDispatcher::instance()->processEvents(QEventLoop::WaitForMoreEvents);
    }
    std::puts(kUsable);
    std::fflush(stdout);
}

/// `save` is for the first start, which leaves a folder on show for the next.
int startProgram(bool save)
{
    PIAppController &controller = PIAppController::sharedInstance();
    if (controller.applicationDidFinishLaunching({}, {}) != PIAppController::Launch::Running)
        return 1;
    PIWindowController &window = controller.windowController();
    if (save) {
        runUntilIdle();
        window.resetList(controller.library().groups().first()->folders().first());
    }
    runUntilUsable(window.window(), [&] {
        return window.shownFolder() && !window.shownFolder()->photos().isEmpty() &&
               controller.library().thumbnails().pendingJobs() == 0;
    });
    const bool saved = !save || window.SaveLibrary();
    controller.applicationWillTerminate();
    return saved ? 0 : 1;
}

int startBareWindow()
{
    QMainWindow window;
    window.show();
    runUntilUsable(window, [] { return true; });
    return 0;
}

QByteArray smallPicture(const QString &path)
{
    QImage picture(320, 240, QImage::Format_RGB32);
    picture.fill(Qt::darkCyan);
    QPainter(&picture).fillRect(40, 40, 160, 120, Qt::yellow);
    QFile file(path);
    return picture.save(path, "JPG") && file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
}

bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QFile::WriteOnly) && file.write(bytes) == bytes.size();
}

/// A library whose photos are all there. False when the disk does not take it.
bool writeLibrary(const QString &folder)
{
    SampleShape shape;
    shape.root = folder + QStringLiteral("/Pictures");
    SampleLibrary library = makeSampleLibrary(shape);
    const QByteArray picture = smallPicture(folder + QStringLiteral("/small.jpg"));
    bool written = !picture.isEmpty();
    for (const SampleLibrary::Folder &place : library.folders)
        written = QDir().mkpath(place.path) && written;
    for (SampleLibrary::Photo &photo : library.photos) {
        photo.crop.clear(); // they are made for larger pictures
        written = written && writeFile(library.folders[photo.folder].path + u'/' + photo.file, picture);
    }
    const QString place = qEnvironmentVariable("XDG_DATA_HOME") + QStringLiteral("/Harrowmere/Photo");
    return written && QDir().mkpath(place) &&
           writeFile(place + QStringLiteral("/Photo.xml"), sampleLibraryText(library));
}

/// Starts this very program as told and waits until it says that it is usable; its end is not waited for here.
bool start(QProcess &process, const char *how)
{
    process.waitForFinished(-1); // the one before
    process.start(QCoreApplication::applicationFilePath(), {QString::fromLatin1(how)});
    while (process.waitForReadyRead(-1)) {
        if (process.readAllStandardOutput().contains(kUsable))
            return true;
    }
    return false;
}

}

std::optional<int> ProgramStart::runAsChild(int argc, char **argv)
{
    const QByteArray how = argc == 2 ? QByteArray(argv[1]) : QByteArray();
    if (how != kOurs && how != kOursSaved && how != kBareWindow)
        return std::nullopt;
    const QApplication application(argc, argv);
    return how == kBareWindow ? startBareWindow() : startProgram(how == kOursSaved);
}

void ProgramStart::measure(PairRunner &runner)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    // The first start makes the thumbnails on show and all that is kept beside the library; it does not count.
    if (!writeLibrary(runner.folder()) || !start(process, kOursSaved) || !process.waitForFinished(-1) ||
        process.exitCode() != 0)
        return runner.fail("the library for the start could not be made");
    const auto timed = [&](const char *how) {
        if (!start(process, how))
            runner.fail("the program did not start");
    };
    runner.run({.name = "start",
                .ours = [&] { timed(kOurs); },
                .peerName = "an empty Qt window",
                .peer = [&] { timed(kBareWindow); },
                .prepare = [&] { process.waitForFinished(-1); }});
    process.waitForFinished(-1);
}
