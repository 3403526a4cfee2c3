#pragma once

#include "FileCheck.h"
#include "FolderFollower.h"
#include "LostFileSearch.h"
#include "MountWatcher.h"

#include <QObject>
#include <QTimer>

#include <memory>

/// Lets a library follow its files for as long as the program runs: what was found missing is looked for in the
/// background, the folder on show is watched, and photos of a volume that was away come back with it. Main thread.
class LibraryFollower final : public QObject
{
    Q_OBJECT

public:
    /// `library` and `finder` outlive this. `options` tells how far searches may go.
    LibraryFollower(PhotoLibrary &library, LocatorFileFinder &finder, const BookmarkOptions &options = {},
                    QObject *parent = nullptr);
    ~LibraryFollower() override;

    /// The folder whose files are watched. One that was not shown before is looked through, too, once following has
    /// begun.
    void setFolder(const std::shared_ptr<PIFolder> &folder);
    /// To be called once the window is up: the files that were not looked at yet are, in the background, and those
    /// that are missing are looked for from now on.
    void begin();
    /// Looks at every file of the folder, as when the window comes to the front after others were used.
    void lookAgain();
    void cancelSearch() { m_search.cancel(); }
    /// Looks everywhere for all files that are missing, also for those that an earlier walk did not find. False when
    /// none is missing.
    bool searchAgain();
    [[nodiscard]] bool isSearching() const { return m_isChecking || m_search.isRunning() || m_searchSoon.isActive(); }

Q_SIGNALS:
    /// A walk is under way: it found so many files, and looks for so many.
    void walking(qsizetype found, qsizetype total);
    void finished(const LostFileSearch::Summary &summary);

private:
    void lookAtAbsent();
    void takeChecked(const FileCheck::Files &changed, const FileCheck::Files &doubtful);
    void endCheck();

    PhotoLibrary &m_library;
    LocatorFileFinder &m_finder;
    FolderFollower m_folder;
    LostFileSearch m_search;
    MountWatcher m_mounts;
    QTimer m_searchSoon; ///< what is noted in one go is looked for in one go
    QTimer m_mountsSettle;
    bool m_begun = false;

    bool m_isChecking = false;
    QTimer m_patience;            ///< with the check of all files, as long as it gets on
    FileCheck::Files m_shownAnew; ///< whose state the check has changed so far
    /// What stands at their paths may have come there any time ago: no sign that somebody just saved them.
    FileCheck::Files m_doubtfulAtStart;
    FileCheck m_check;
};
