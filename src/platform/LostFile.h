#pragma once

#include "BookmarkData.h"
#include "Volumes.h"

/// A bookmark while its file is being looked for.
struct LostFile
{
    qsizetype index = 0; ///< in the list of bookmarks
    bool isOpen = true;  ///< still looked for
    BookmarkData data = {};
    const Volume *volume = nullptr; ///< null while it is not mounted
    const Mount *mount = nullptr;   ///< through which its old path leads
    QByteArray oldFolder = {};      ///< in which it stood, under the present place of its volume
};

/// Where a file was found. The identity holds the handle only if it had to be asked for.
struct FoundPlace
{
    QByteArray path;
    PresentFile file;
    const Volume *volume = nullptr;
};
