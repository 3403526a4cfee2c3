#pragma once

#include <QString>

#include <optional>

/// Where the library and its caches live.
struct LibraryPaths
{
    QString libraryFolder;
    QString databasePath;    ///< the library file, "Photo.xml", or what that leads to as a symbolic link
    QString thumbnailFolder; ///< cached thumbnails
};

/// What the choice of the library folder depends on.
struct LibraryPlace
{
    QString alternateVolume;         ///< the volume of the developers' own library
    Qt::KeyboardModifiers modifiers; ///< held at launch
};

/// Finds or makes the folders. The developers' own library is chosen when Control, Option and Command are all held and
/// an entry that marks such a user exists. Nothing, and a line in the log, when a folder cannot be had.
[[nodiscard]] std::optional<LibraryPaths> prepareLibraryPaths(const LibraryPlace &place);
