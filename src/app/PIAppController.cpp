#include "PIAppController.h"

#include "CropSizes.h"
#include "DateFormatter.h"
#include "DirectoryReader.h"
#include "ExportPreferences.h"
#include "GiveAlert.h"
#include "Icons.h"
#include "LibraryActions.h"
#include "LibraryFile.h"
#include "LibraryFollower.h"
#include "LibraryNotifications.h"
#include "LibraryWindow.h"
#include "LocatorFileFinder.h"
#include "LogString.h"
#include "LostFileProgress.h"
#include "MainMenu.h"
#include "PILocatorManager.h"
#include "PIWindowController.h"
#include "PhotoLibrary.h"
#include "PrintInfo.h"
#include "PrintSettings.h"
#include "StringUtilities.h"
#include "TerminationSignals.h"
#include "ThumbnailFolder.h"
#include "Toolkit.h"
#include "WindowPreferences.h"

#include <QFileOpenEvent>
#include <QGuiApplication>
#include <QSessionManager>
#include <QStatusBar>
#include <QTimer>

namespace {

constexpr Preference<bool> kHasRun{"hmphoto.run", false};
constexpr QSize kPlaceholderSize(240, 180);

}

PIAppController &PIAppController::sharedInstance()
{
    static PIAppController instance;
    return instance;
}

PIAppController::PIAppController() = default;

PIAppController::~PIAppController() = default;

PIAppController::Launch PIAppController::applicationDidFinishLaunching(const QStringList &files,
                                                                       const LibraryPlace &place)
{
    g_dateFormatter = DateFormatter();
    m_defaults = std::make_unique<UserDefaults>(UserDefaults::standardPath());
    m_hasRunBefore = m_defaults->value(kHasRun);
    InitializeQuorvane();
    Decoder::initialize();
    readPreferences();
    const auto paths = prepareLibraryPaths(place);
    if (!paths)
        return Launch::Failed;
    m_paths = *paths;
    const Launch claim = claimLibrary(files);
    if (claim != Launch::Running)
        return claim;

    m_openingLocators =
        std::async(std::launch::async, [folder = m_paths.libraryFolder] { return PILocatorManager::open(folder); });
    m_fileFinder = std::make_unique<LocatorFileFinder>([this] { return locators(); }, m_bookmarks,
                                                       LocatorFileFinder::Search::Later);
    m_fileFinder->postpone();
    m_library = std::make_unique<PhotoLibrary>(m_paths.thumbnailFolder, *m_fileFinder, m_notifications);
    m_library->thumbnails().setPlaceholder(
        renderSvg(QStringLiteral(":/MissingThumbnail.svg"), kPlaceholderSize, Qt::gray));
    LibraryFile::registerTags();
    loadLibrary();
    showLibrary(files);
    observeTermination();
    m_launched = true;
    return Launch::Running;
}

PILocatorManager *PIAppController::locators()
{
    if (m_openingLocators.valid())
        m_locators = m_openingLocators.get();
    return m_locators.get();
}

PIAppController::Launch PIAppController::claimLibrary(const QStringList &files)
{
    m_instance = std::make_unique<SingleInstance>(QVString::deletingLastPathComponent(m_paths.databasePath));
    switch (m_instance->claim(files)) {
    case SingleInstance::Claim::HandedOver:
        return Launch::HandedOver;
    case SingleInstance::Claim::Failed:
        GiveAlert(
            tr("The photo library cannot be opened."),
            tr("Its folder \"%1\" cannot be locked, or too many files were given at once.").arg(m_paths.libraryFolder));
        return Launch::Failed;
    case SingleInstance::Claim::NoAnswer:
        GiveAlert(tr("The photo library is in use."),
                  tr("Another program has the photo library open and does not answer. Quit it and try again."));
        return Launch::Failed;
    case SingleInstance::Claim::First:
        break;
    }
    m_instance->setHandler([this](const QStringList &paths) {
        if (!m_launched)
            return;
        LibraryWindow &window = m_windowController->window();
        window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
        window.raise();
        window.activateWindow();
        if (!paths.isEmpty())
            applicationOpenFiles(paths);
    });
    return Launch::Running;
}

void PIAppController::readPreferences()
{
    const int cropSize = m_defaults->value(WindowPreferences::kCropSize);
    g_cropSizeIndex = cropSize > 0 && cropSize < static_cast<int>(kCropSizes.size()) ? cropSize : 0;
    g_cropMarks = m_defaults->value(kCropMarks);
    g_printLayout = m_defaults->value(kPrintLayout);
    g_printInfo = printInfoFromArchive(m_defaults->data(QLatin1String(kPrintInfo)));
    readExportPreferences(*m_defaults);
}

void PIAppController::loadLibrary()
{
    if (entryTypeAt(m_paths.databasePath)) {
        LibraryFile::LoadResult result = LibraryFile::load(m_paths.databasePath, *m_library);
        m_restore = result.restore;
        if (result.failure.isEmpty() && !result.cutShort) {
            m_photoGuids = result.photoGuids;
        } else {
            // The damaged file may still hold what the user needs: nothing is saved over it before it is safe.
            const bool isSafe = LibraryFile::copyAside(m_paths.databasePath);
            if (!result.failure.isEmpty())
                GiveAlert(tr("Can't read photo database."), result.failure);
            if (!isSafe)
                GiveAlert(tr("The damaged photo library could not be set aside."),
                          tr("Its folder cannot be written, so nothing can be saved there either."));
        }
    } else if (entryTypeAt(LibraryFile::backupPath(m_paths.databasePath))) {
        LogString("There is a backup and no database at %@", m_paths.databasePath);
        GiveAlert(tr("The photo library is missing."),
                  tr("Its backup is still there. To use it, quit, and rename the backup to \"Photo.xml\"."));
    }
    if (m_library->groups().isEmpty())
        m_library->makeDefaultLibrary();
}

void PIAppController::showLibrary(const QStringList &files)
{
    m_windowController = std::make_unique<PIWindowController>(*m_library, *m_defaults, m_paths.databasePath);
    qApp->installEventFilter(this);
    buildMainMenu(m_windowController->window(), m_windowController->actions(), m_windowController->cropSizesMenu(),
                  m_windowController->effectSetsMenu());
    connect(&m_windowController->window(), &LibraryWindow::closed, qApp, &QCoreApplication::quit);
    m_windowController->showWindow(/*zoomed=*/!m_hasRunBefore);
    m_windowController->resetList(nullptr);
    followFiles();
    QTimer::singleShot(0, m_windowController.get(), [this, files] {
        m_windowController->restoreState(m_restore);
        m_restore = {};
        m_follower->begin();
        if (!files.isEmpty())
            applicationOpenFiles(files);
    });
    m_notifications.post(kEffectSetsNotification);
    if (m_hooks.startUpdateCheck)
        m_hooks.startUpdateCheck();
    if (m_photoGuids)
        m_operationQueue.start(new PIClearOperation(m_paths.thumbnailFolder, *m_photoGuids));
    m_photoGuids.reset();
    if (!m_hasRunBefore && m_hooks.openHelp)
        m_hooks.openHelp();
}

void PIAppController::observeTermination()
{
    m_terminationSignals = std::make_unique<TerminationSignals>([this] { m_windowController->window().close(); });
    connect(qApp, &QGuiApplication::commitDataRequest, this, &PIAppController::commitData, Qt::DirectConnection);
}

/// The desktop's session is about to end.
void PIAppController::commitData(QSessionManager &session)
{
    if (!m_launched)
        return;
    if (session.allowsInteraction()) {
        if (!applicationShouldTerminate())
            session.cancel();
        session.release();
        // Another program may keep the session from ending.
        constexpr int kSessionEndsWithin = 30000; // milliseconds
        QTimer::singleShot(kSessionEndsWithin, m_windowController.get(), &PIWindowController::keepDiscardedChanges);
    } else {
        static_cast<void>(m_windowController->finishWork(PIWindowController::IfBusy::Stop));
        m_notifications.post(kNormalizeNotification);
        m_fileFinder->save();
        if (m_library->isDirty() && !m_windowController->SaveLibrary())
            LogString("The session ends and the library could not be saved");
    }
}

bool PIAppController::applicationShouldTerminate()
{
    return !m_windowController || m_windowController->windowShouldClose();
}

void PIAppController::followFiles()
{
    m_follower = std::make_unique<LibraryFollower>(*m_library, *m_fileFinder);
    LibraryFollower *follower = m_follower.get();
    LibraryWindow &window = m_windowController->window();
    connect(m_windowController.get(), &PIWindowController::folderShown, follower, &LibraryFollower::setFolder);
    connect(&window, &LibraryWindow::cameBack, follower, &LibraryFollower::lookAgain);

    auto *progress = new LostFileProgress(*window.statusBar());
    connect(follower, &LibraryFollower::walking, progress, &LostFileProgress::walking);
    connect(follower, &LibraryFollower::finished, progress, &LostFileProgress::finished);
    connect(progress, &LostFileProgress::cancelled, follower, &LibraryFollower::cancelSearch);
    m_windowController->actions().bind(Command::SearchAgain, [this](bool) { searchAgain(); });
}

void PIAppController::searchAgain()
{
    constexpr int kAnswerMilliseconds = 10'000;
    QStatusBar &bar = *m_windowController->window().statusBar();
    if (m_follower && m_follower->searchAgain())
        bar.showMessage(tr("Looking for missing files…"), kAnswerMilliseconds);
    else
        bar.showMessage(tr("No files are missing."), kAnswerMilliseconds);
}

bool PIAppController::isSearching() const
{
    return m_follower && m_follower->isSearching();
}

void PIAppController::applicationWillTerminate()
{
    if (!m_launched)
        return;
    m_launched = false;
    m_terminationSignals.reset();
    m_follower.reset();
    m_windowController.reset(); // writes preferences of its own
    m_defaults->setValue(kHasRun, true);
    if (PILocatorManager *stored = locators())
        stored->close();
    writeExportPreferences(*m_defaults);
    if (!m_defaults->synchronize())
        LogString("Can't write preferences %@", UserDefaults::standardPath());
    m_operationQueue.waitForDone();
    m_library.reset();
    m_fileFinder.reset();
    m_locators.reset();
    m_defaults.reset();
    m_instance.reset();
}

void PIAppController::applicationOpenFiles(const QStringList &paths, const std::function<void()> &finished)
{
    if (!m_launched)
        return;
    const auto report = [finished](const PhotoImport::Outcome &outcome) {
        if (outcome.photosAdded == 0 && !outcome.scan.cancelled)
            GiveAlert(tr("No photos added."),
                      tr("The folders or files you specified did not contain any usable images."));
        if (finished)
            finished();
    };
    if (!m_windowController->openFiles(paths, nullptr, kNotFound, UndoName::AddPhoto, report))
        report({});
}

bool PIAppController::applicationOpenFile(const QString &path)
{
    return m_windowController && m_windowController->openFiles({path}, nullptr, kNotFound, UndoName::AddPhoto);
}

bool PIAppController::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::FileOpen && applicationOpenFile(static_cast<QFileOpenEvent *>(event)->file()))
        return true;
    return QObject::eventFilter(watched, event);
}

QString PIAppController::aboutString()
{
    return tr("Photo library for people who know where their files are and want to keep them there.");
}
