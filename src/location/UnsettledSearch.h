#pragma once

#include "LocatorFileFinder.h"

#include <functional>
#include <optional>

/// A file with what a search told about it.
struct SearchedFile
{
    LocatorFileFinder::Unsettled file;
    BookmarkResolution::Status status = BookmarkResolution::Status::Unsearched;
    QVFileLocator locator; ///< as it is to be from now on
    bool isToBeStored = false;
    FoundFile place;
};

/// Looks for all the files with one walk, and hands them to `searched`, some at a time, for
/// LocatorFileFinder::settle(). `options` tells how far to go; `lastStored` is the finder's. Not on the main thread.
void searchUnsettled(const QList<LocatorFileFinder::Unsettled> &files, std::optional<FileTime> lastStored,
                     const BookmarkOptions &options, const std::function<void(const QList<SearchedFile> &)> &searched);

/// Looks for one file, as far as it takes.
[[nodiscard]] SearchedFile searchUnsettled(const LocatorFileFinder::Unsettled &file, std::optional<FileTime> lastStored,
                                           BookmarkService &bookmarks);
