#pragma once

#include "BookmarkService.h"
#include "LibraryPaths.h"
#include "NotificationCenter.h"
#include "SingleInstance.h"
#include "UserDefaults.h"
#include "WindowRestoreRecord.h"

#include <QObject>
#include <QStringList>
#include <QThreadPool>

#include <functional>
#include <future>
#include <memory>
#include <optional>

class LibraryFollower;
class LocatorFileFinder;
class PhotoLibrary;
class PILocatorManager;
class PIWindowController;
class QSessionManager;
class TerminationSignals;

/// Owns the photo library and its window, runs the launch and quit sequences, and answers requests to open files.
/// One for the whole process.
class PIAppController final : public QObject
{
    Q_OBJECT

public:
    static PIAppController &sharedInstance();
    ~PIAppController() override;
    PIAppController(const PIAppController &) = delete;
    PIAppController &operator=(const PIAppController &) = delete;

    /// What the launch came to.
    enum class Launch {
        Running,
        HandedOver, ///< another process has the library and takes the files
        Failed,     ///< told of in the log
    };

    /// Reads the preferences and the library and shows the window. `files` are opened once it is up, or handed to the
    /// process that has this library open already.
    [[nodiscard]] Launch applicationDidFinishLaunching(const QStringList &files, const LibraryPlace &place);
    /// Whether the program may end: asks about unsaved changes.
    [[nodiscard]] bool applicationShouldTerminate();
    /// Writes the preferences that outlive a run; the library itself was saved, or not, before.
    void applicationWillTerminate();

    /// Brings files and folders into the library; ignored before the launch has finished. `finished` (may be empty)
    /// comes when they are in.
    void applicationOpenFiles(const QStringList &paths, const std::function<void()> &finished = {});
    /// Brings one file or folder in, without a word when it holds no picture; what the desktop asks for while the
    /// program runs comes here. False when it is not taken up, as before the window is there.
    bool applicationOpenFile(const QString &path);
    bool eventFilter(QObject *watched, QEvent *event) override;

    /// Services that are not part of the launch but begun by it; empty ones are passed over. To be set before it.
    struct LaunchHooks
    {
        std::function<void()> openHelp; ///< at the end of the very first launch
        std::function<void()> startUpdateCheck;
    };
    void setLaunchHooks(LaunchHooks hooks) { m_hooks = std::move(hooks); }

    [[nodiscard]] static QString aboutString();

    [[nodiscard]] bool isLaunched() const { return m_launched; }
    [[nodiscard]] PhotoLibrary &library() const { return *m_library; }
    [[nodiscard]] PIWindowController &windowController() const { return *m_windowController; }
    /// Whether moved files are being looked for.
    [[nodiscard]] bool isSearching() const;
    [[nodiscard]] QThreadPool &operationQueue() { return m_operationQueue; }

private:
    PIAppController();

    [[nodiscard]] Launch claimLibrary(const QStringList &files);
    /// Waits for them if need be; null when there are none.
    [[nodiscard]] PILocatorManager *locators();
    void readPreferences();
    void observeTermination();
    void commitData(QSessionManager &session);
    void loadLibrary();
    void showLibrary(const QStringList &files);
    void followFiles();
    void searchAgain();

    NotificationCenter m_notifications;
    FileBookmarkService m_bookmarks;
    std::future<std::unique_ptr<PILocatorManager>> m_openingLocators; ///< read beside the library
    std::unique_ptr<PILocatorManager> m_locators; ///< null when the database cannot be opened: nothing is stored then
    std::unique_ptr<LocatorFileFinder> m_fileFinder;
    QThreadPool m_operationQueue;
    std::unique_ptr<UserDefaults> m_defaults;
    LibraryPaths m_paths;
    std::unique_ptr<SingleInstance> m_instance;
    std::unique_ptr<PhotoLibrary> m_library;
    std::unique_ptr<PIWindowController> m_windowController;
    std::unique_ptr<LibraryFollower> m_follower;
    WindowRestoreRecord m_restore;
    std::optional<QStringList> m_photoGuids; ///< of a library that was read without fault, until the clean-up has them
    LaunchHooks m_hooks;
    std::unique_ptr<TerminationSignals> m_terminationSignals;
    bool m_hasRunBefore = false;
    bool m_launched = false;
};
