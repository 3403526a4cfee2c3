#pragma once

#include "BookmarkView.h"
#include "Volumes.h"

/// Where files stood that were in one folder.
struct OldPlace
{
    const Volume *volume = nullptr; ///< null while it is not mounted
    const Mount *mount = nullptr;   ///< through which the old paths lead
    QByteArray folder = {};         ///< under the present place of its volume
    BookmarkView example = {};      ///< of one of the files
};

/// A bookmark while its file is being looked for. Small, because there may be very many.
struct LostFile
{
    qsizetype index = 0; ///< in the list of bookmarks
    BookmarkView stored = {};
    quint64 inode = 0;              ///< the stored one
    const Volume *volume = nullptr; ///< null while it is not mounted
    const OldPlace *place = nullptr;
    bool isOpen = true; ///< still looked for
};

/// Where a file was found. The identity holds the handle only if it had to be asked for.
struct FoundPlace
{
    QByteArray path;
    PresentFile file;
    const Volume *volume = nullptr;
};
