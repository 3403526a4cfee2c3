#include "LibraryFollower.h"

#include "PhotoLibrary.h"

#include <chrono>

namespace {

constexpr std::chrono::milliseconds kNoteTime(50);
constexpr std::chrono::milliseconds kMountTime(200);
constexpr std::chrono::seconds kPatience(30);

}

LibraryFollower::LibraryFollower(PhotoLibrary &library, LocatorFileFinder &finder, const BookmarkOptions &options,
                                 QObject *parent)
    : QObject(parent)
    , m_library(library)
    , m_finder(finder)
    , m_folder(library, finder)
    , m_search(library, finder, options)
    , m_mounts(this)
    , m_check(
          library, finder, QStringLiteral("hmphoto.fileCheck"),
          [this](const FileCheck::Files &changed, const FileCheck::Files &doubtful) { takeChecked(changed, doubtful); },
          [this](int) { endCheck(); })
{
    m_searchSoon.setSingleShot(true);
    m_searchSoon.setInterval(kNoteTime);
    m_mountsSettle.setSingleShot(true);
    m_mountsSettle.setInterval(kMountTime);
    m_patience.setSingleShot(true);
    m_patience.setInterval(kPatience);
    connect(&m_searchSoon, &QTimer::timeout, this, [this] { m_search.start(); });
    connect(&m_patience, &QTimer::timeout, this, &LibraryFollower::endCheck);
    connect(&m_mountsSettle, &QTimer::timeout, this, &LibraryFollower::lookAtAbsent);
    connect(&m_mounts, &MountWatcher::mountsChanged, this, [this] {
        if (m_begun)
            m_mountsSettle.start();
    });
    m_search.setProgress([this](qsizetype found, const BookmarkProgress &walk) { Q_EMIT walking(found, walk.total); });
    connect(&m_folder, &FolderFollower::announced, this,
            [this](const FileCheck::Files &files) { m_search.noteAnnounced(files); });
    m_search.setIsWatched(
        [this](const PIFileRef &file) { return m_folder.isWatched(file) && !m_doubtfulAtStart.contains(&file); });
    m_search.setMoved([this] { m_folder.watchAgain(); });
    m_search.setFinished([this](const LostFileSearch::Summary &summary) { Q_EMIT finished(summary); });
}

LibraryFollower::~LibraryFollower()
{
    m_finder.setNoteListener({});
}

void LibraryFollower::setFolder(const std::shared_ptr<PIFolder> &folder)
{
    if (folder == m_folder.folder())
        return m_folder.watchAgain(); // files may have come into it
    m_folder.setFolder(folder);
    if (m_begun)
        m_folder.lookAgain();
}

void LibraryFollower::begin()
{
    m_begun = true;
    const LocatorCheck check = m_finder.takePostponed();
    if (check.isEmpty())
        return endCheck();
    m_isChecking = true;
    m_patience.start();
    m_check.run(check);
}

void LibraryFollower::takeChecked(const FileCheck::Files &changed, const FileCheck::Files &doubtful)
{
    m_shownAnew.unite(changed);
    m_doubtfulAtStart.unite(doubtful);
    m_patience.start();
}

/// What is missing is looked for with one walk, so this waits until all of it is known, or a disk does not answer: the
/// others are not to wait for it.
void LibraryFollower::endCheck()
{
    m_isChecking = false;
    m_patience.stop();
    const auto changed = std::exchange(m_shownAnew, {});
    if (!changed.isEmpty()) {
        m_library.filesChangedPlace(changed);
        m_folder.watchAgain();
    }
    m_finder.setNoteListener([this] { m_searchSoon.start(); });
    if (m_finder.hasUnsettled())
        m_searchSoon.start();
}

void LibraryFollower::lookAgain()
{
    if (m_begun)
        m_folder.lookAgain();
}

bool LibraryFollower::searchAgain()
{
    const auto missing =
        m_library.usedFileRefs([](const PIFileRef &file) { return file.isFileLost() && !file.isVolumeAway(); });
    m_search.allowAnotherWalk(missing);
    m_folder.lookAt(missing);
    return !missing.isEmpty();
}

/// What was away may be back, and what is on show may have gone.
void LibraryFollower::lookAtAbsent()
{
    m_folder.lookAgain();
    m_folder.lookAt(m_library.usedFileRefs([](const PIFileRef &file) { return file.isVolumeAway(); }));
}
