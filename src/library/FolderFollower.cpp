#include "FolderFollower.h"

#include "FileNotifications.h"
#include "LibraryNotifications.h"
#include "PIFolder.h"
#include "PIPhoto.h"
#include "PhotoLibrary.h"
#include "StringUtilities.h"

#include <chrono>

namespace {

constexpr std::chrono::milliseconds kSettleTime(200);
constexpr int kFilesPerSlice = 200;

QString diskFolderOf(const PIFileRef &file)
{
    return QVString::deletingLastPathComponent(file.path());
}

}

FolderFollower::FolderFollower(PhotoLibrary &library, QObject *parent)
    : QObject(parent)
    , m_library(library)
{
    m_settle.setSingleShot(true);
    m_settle.setInterval(kSettleTime);
    m_slice.setInterval(0);
    connect(&m_watcher, &FolderWatcher::namesChanged, this, &FolderFollower::namesChanged);
    connect(&m_watcher, &FolderWatcher::fileWritten, this, &FolderFollower::fileWritten);
    connect(&m_watcher, &FolderWatcher::overflowed, this, &FolderFollower::lookAgain);
    connect(&m_slice, &QTimer::timeout, this, &FolderFollower::lookAtSome);
    connect(&m_settle, &QTimer::timeout, this, [this] {
        for (const auto &photo : m_folder ? m_folder->photos() : PIGroup::PhotoList()) {
            if (photo->fileRef() && m_changedFolders.contains(diskFolderOf(*photo->fileRef())))
                m_toLookAt.push_back(photo->fileRef());
        }
        m_changedFolders.clear();
        m_slice.start();
    });
}

void FolderFollower::setFolder(const std::shared_ptr<PIFolder> &folder)
{
    m_folder = folder;
    m_changedFolders.clear();
    m_toLookAt.clear();
    watchFolders();
}

void FolderFollower::lookAgain()
{
    if (!m_folder)
        return;
    m_toLookAt.clear();
    for (const auto &photo : m_folder->photos()) {
        if (photo->fileRef())
            m_toLookAt.push_back(photo->fileRef());
    }
    m_slice.start();
}

void FolderFollower::watchFolders()
{
    QSet<QString> folders;
    for (const auto &photo : m_folder ? m_folder->photos() : PIGroup::PhotoList()) {
        if (photo->fileRef())
            folders.insert(diskFolderOf(*photo->fileRef()));
    }
    m_watcher.setFolders(folders.values());
}

void FolderFollower::namesChanged(const QString &diskFolder)
{
    m_changedFolders.insert(diskFolder);
    m_settle.start();
}

void FolderFollower::fileWritten(const QString &path)
{
    for (const auto &photo : m_folder ? m_folder->photos() : PIGroup::PhotoList()) {
        if (photo->fileRef() && photo->fileRef()->path() == path) {
            m_library.notifications().post(kFileChangeNotification, photo->fileRef());
            return;
        }
    }
}

void FolderFollower::lookAtSome()
{
    QSet<const PIFileRef *> changed;
    for (int i = 0; i < kFilesPerSlice && !m_toLookAt.empty(); ++i) {
        const auto file = m_toLookAt.front().lock();
        m_toLookAt.pop_front();
        if (!file)
            continue;
        const bool wasLost = file->isFileLost();
        if (file->verify() == wasLost)
            changed.insert(file.get());
    }
    for (const auto &photo : m_folder ? m_folder->photos() : PIGroup::PhotoList()) {
        if (changed.contains(photo->fileRef().get()))
            m_library.notifications().post(kThumbnailNotification, photo);
    }
    if (!m_toLookAt.empty())
        return;
    m_slice.stop();
    watchFolders();
    Q_EMIT looked();
}
