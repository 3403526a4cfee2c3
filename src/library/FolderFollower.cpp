#include "FolderFollower.h"

#include "PIFolder.h"
#include "PIPhoto.h"
#include "PhotoLibrary.h"

#include <algorithm>
#include <chrono>

namespace {

constexpr std::chrono::milliseconds kSettleTime(200);
constexpr std::chrono::seconds kPatience(30);

QStringView diskFolderOf(const PIFileRef &file)
{
    return QStringView(file.path()).left(qMax<qsizetype>(file.path().lastIndexOf(u'/'), 1));
}

template<typename Visit>
void forEachFile(const std::shared_ptr<PIFolder> &folder, const Visit &visit)
{
    if (!folder)
        return;
    for (const auto &photo : std::as_const(folder->photos()))
        if (photo->fileRef())
            visit(photo->fileRef());
}

}

FolderFollower::FolderFollower(PhotoLibrary &library, LocatorFileFinder &finder, QObject *parent)
    : QObject(parent)
    , m_library(library)
    , m_finder(finder)
    , m_check(
          library, finder, QStringLiteral("hmphoto.shownFiles"),
          [this](const FileCheck::Files &changed, const FileCheck::Files &doubtful) { take(changed, doubtful); },
          [this](int look) { endLook(look); })
{
    m_settle.setSingleShot(true);
    m_settle.setInterval(kSettleTime);
    connect(&m_watcher, &FolderWatcher::namesChanged, this, &FolderFollower::namesChanged);
    connect(&m_watcher, &FolderWatcher::folderGone, this, &FolderFollower::folderGone);
    connect(&m_watcher, &FolderWatcher::fileWritten, this, &FolderFollower::fileWritten);
    connect(&m_watcher, &FolderWatcher::overflowed, this, &FolderFollower::lookAgain);
    m_patience.setSingleShot(true);
    m_patience.setInterval(kPatience);
    connect(&m_patience, &QTimer::timeout, this, [this] {
        m_unanswered.unite(m_lookedAt);
        goOn();
    });
    connect(&m_settle, &QTimer::timeout, this, &FolderFollower::takeUpEvents);
}

void FolderFollower::setFolder(const std::shared_ptr<PIFolder> &folder)
{
    m_folder = folder;
    m_changedFolders.clear();
    m_goneFolders.clear();
    m_writtenPaths.clear();
    watchAgain();
}

void FolderFollower::watchAgain()
{
    QSet<QString> folders;
    QStringView last; // neighbours mostly stand in one folder
    forEachFile(m_folder, [&](const std::shared_ptr<PIFileRef> &file) {
        const QStringView folder = diskFolderOf(*file);
        if (folder != last)
            folders.insert(folder.toString());
        last = folder;
    });
    m_watched = folders;
    m_watcher.setFolders(folders.values());
}

void FolderFollower::lookAgain()
{
    forEachFile(m_folder, [this](const std::shared_ptr<PIFileRef> &file) { m_toLookAt.insert(file->guid()); });
    look();
}

void FolderFollower::lookAt(const QList<std::shared_ptr<PIFileRef>> &files)
{
    for (const auto &file : files)
        m_toLookAt.insert(file->guid());
    look();
}

void FolderFollower::look()
{
    if (m_finder.isPostponing())
        m_toLookAt.clear(); // every file of the library is about to be looked at
    m_toLookAt.subtract(m_unanswered);
    if (m_look != 0 || m_toLookAt.isEmpty())
        return;
    QList<PostponedFile> files;
    m_lookedAt = std::exchange(m_toLookAt, {});
    for (const QString &guid : std::as_const(m_lookedAt))
        if (const auto file = m_library.fileRefs().fileRefForGuid(guid))
            files.append({guid, file->path(), file->isFileLost()});
    m_patience.start();
    m_look = m_check.run(m_finder.check(std::move(files)));
}

bool FolderFollower::isWatched(const PIFileRef &file) const
{
    return m_watched.contains(diskFolderOf(file).toString());
}

void FolderFollower::take(const FileCheck::Files &changed, const FileCheck::Files &doubtful)
{
    if (m_look != 0)
        m_patience.start(); // it gets on
    if (!changed.isEmpty())
        m_library.filesChangedPlace(changed);
    FileCheck::Files told = doubtful;
    told.removeIf([this](const PIFileRef *file) { return !m_announced.contains(file->guid()); });
    if (!told.isEmpty())
        Q_EMIT announced(told);
}

void FolderFollower::endLook(int look)
{
    if (look == m_look)
        goOn();
    else
        m_unanswered.clear(); // a disk answers again
}

void FolderFollower::goOn()
{
    m_patience.stop();
    m_look = 0;
    m_announced.intersect(m_toLookAt);
    watchAgain();
    look();
}

void FolderFollower::namesChanged(const QString &diskFolder)
{
    m_changedFolders.insert(diskFolder);
    if (!m_settle.isActive())
        m_settle.start();
}

void FolderFollower::folderGone(const QString &diskFolder)
{
    m_goneFolders.insert(diskFolder);
    if (!m_settle.isActive())
        m_settle.start();
}

void FolderFollower::fileWritten(const QString &path)
{
    m_writtenPaths.insert(path);
    if (!m_settle.isActive())
        m_settle.start();
}

namespace {

bool isBeneathAny(const QString &path, const QSet<QString> &folders)
{
    return std::any_of(folders.cbegin(), folders.cend(), [&](const QString &folder) {
        return path.size() > folder.size() && path.startsWith(folder) && path.at(folder.size()) == u'/';
    });
}

}

void FolderFollower::takeUpEvents()
{
    const QSet<QString> folders = std::exchange(m_changedFolders, {});
    const QSet<QString> gone = std::exchange(m_goneFolders, {});
    const QSet<QString> paths = std::exchange(m_writtenPaths, {});
    QSet<PIFileRef *> written;
    QList<std::shared_ptr<PIFileRef>> touched;
    forEachFile(m_folder, [&](const std::shared_ptr<PIFileRef> &file) {
        const bool isWritten = paths.contains(file->path());
        if (isWritten && !file->isFileLost())
            written.insert(file.get());
        if (isWritten || folders.contains(diskFolderOf(*file).toString()) || isBeneathAny(file->path(), gone))
            touched.append(file);
    });
    for (const PIFileRef *file : std::as_const(written))
        m_announced.insert(file->guid());
    m_library.filesChangedContent(written);
    lookAt(touched);
}
