#pragma once

#include "LocatorFileFinder.h"
#include "PILocatorManager.h"

#include <stop_token>

/// A look at many files, such as all of a library just read: are they where their locators have them? Made on the main
/// thread, run on another.
class LocatorCheck
{
public:
    /// `guidsInUse` are those of the whole library; none when that is not known, and then all are in use. `bookmarks`
    /// outlives the check.
    LocatorCheck(QList<PostponedFile> files, QStringList guidsInUse, LocatorSnapshot locators,
                 BookmarkService &bookmarks);

    [[nodiscard]] bool isEmpty() const { return m_files.isEmpty(); }
    /// Hands the files that are not as their references have it to `checked`, some at a time. It is called, if need be
    /// with none, as long as the disks answer.
    void run(const std::stop_token &stop, const std::function<void(const QList<CheckedFile> &)> &checked) const;
    /// The guids of locators that nobody uses any more.
    [[nodiscard]] QStringList unusedGuids() const;

private:
    QList<PostponedFile> m_files;
    QStringList m_guidsInUse;
    LocatorSnapshot m_locators;
    BookmarkService *m_bookmarks;
};
