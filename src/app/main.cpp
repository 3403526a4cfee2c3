#include "DispatchQueue.h"
#include "FilterLibrary.h"
#include "MessageBoxAlertPresenter.h"
#include "PIAppController.h"
#include "ScreenshotRun.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QIcon>

#include <cstdlib>
#include <memory>

namespace {

QStringList absolutePaths(const QStringList &arguments)
{
    QStringList paths;
    for (const QString &argument : arguments)
        paths << QDir::cleanPath(QDir::current().absoluteFilePath(argument));
    return paths;
}

}

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Tamsel Photo"));
    QApplication::setApplicationVersion(QStringLiteral(TAMSEL_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("com.harrowmere.TamselPhoto"));
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/tamsel-photo.svg")));
    QApplication::setQuitOnLastWindowClosed(true);

    QCommandLineParser parser;
    parser.setApplicationDescription(PIAppController::aboutString());
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption screenshot(QStringLiteral("screenshot"),
                                        QStringLiteral("Open the files, write the window to <file>, save and end."),
                                        QStringLiteral("file"));
    parser.addOption(screenshot);
    parser.addPositionalArgument(QStringLiteral("files"), QStringLiteral("Image files and folders to add."),
                                 QStringLiteral("[files…]"));
    parser.process(application);

    const FilterLibrary filters;
    installFilterBackEnd(&filters);
    MessageBoxAlertPresenter presenter;
    if (!parser.isSet(screenshot)) // nobody is there to answer: alerts go to the log
        AlertPresenter::install(&presenter);
    PIAppController &controller = PIAppController::sharedInstance();
    const LibraryPlace place{QStringLiteral("/Volumes/XT"), QApplication::queryKeyboardModifiers()};
    const auto launch = controller.applicationDidFinishLaunching(absolutePaths(parser.positionalArguments()), place);
    // Files handed to another process show in its window, of which this one can take no picture.
    const bool isDone = launch == PIAppController::Launch::HandedOver && !parser.isSet(screenshot);
    int status = isDone ? 0 : 1;
    if (launch == PIAppController::Launch::Running) {
        std::unique_ptr<ScreenshotRun> run;
        if (parser.isSet(screenshot))
            run = std::make_unique<ScreenshotRun>(controller, parser.value(screenshot));
        status = QApplication::exec();
        controller.applicationWillTerminate();
    }
    AlertPresenter::install(nullptr);
    if (DispatchQueue::isAnyLeftBehind()) // everything is saved by now
        std::_Exit(status);
    return status;
}
