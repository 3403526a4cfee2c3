#pragma once

#include "WindowRestoreRecord.h"

#include <QString>
#include <QStringList>

#include <memory>

class PhotoLibrary;
class PIFolder;
class PIPhoto;

/// The library as one XML file: read once at launch, written whole on every save, with the previous generation kept
/// beside it as "Photo~" with the same extension.
namespace LibraryFile {

/// Registers the 33 tag numbers with the XML reader; before any loading or pasting.
void registerTags();

struct LoadResult
{
    /// Empty when the load succeeded; else the text to show under "Can't read photo database."
    QString failure;
    /// Guids of all photos read; empty after a failure.
    QStringList photoGuids;
    WindowRestoreRecord restore;
    /// Loaded, but the file ends inside its root element, so that something may be missing. The caller copies the file
    /// aside, as after a failure.
    bool cutShort = false;
};

/// Fills the library. After a failure it holds what was read before the fault. The caller gives the alert.
[[nodiscard]] LoadResult load(const QString &path, PhotoLibrary &library);

/// Copies the file and its backup aside under new unique names in their folder and names the copies in the log; those
/// of which there is such a copy already are passed over. What cannot be copied is itself given the new name, so that a
/// save finds nothing to replace. False when not even that could be done: then a save will fail as well.
[[nodiscard]] bool copyAside(const QString &path);

/// What the window adds to the file.
struct WindowState
{
    std::shared_ptr<PIFolder> folder; ///< shown in the grid; null when none
    std::shared_ptr<PIPhoto> photo;   ///< the current photo; null when none
    IndexSet selection;
};

/// Writes the library durably. On success the dirty flag is cleared. On failure
/// the log tells why and the previous file is back, or stands beside as the backup.
[[nodiscard]] bool save(const QString &path, PhotoLibrary &library, const WindowState &window);

/// "Photo~.xml" beside "Photo.xml".
[[nodiscard]] QString backupPath(const QString &path);

}
