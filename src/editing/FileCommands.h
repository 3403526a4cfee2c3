#pragma once

#include "FileFinder.h"

#include <QDateTime>
#include <QList>
#include <QString>

#include <memory>
#include <optional>

class PhotoLibrary;
class PIFileRef;
class PIFolder;
class PIPhoto;

/// What the file section does to image files and to the references that lead to them. None of it can be undone.
/// Main thread, but for what says otherwise.
namespace FileCommands {

/// Renames the photo's file within its folder, over whatever file bears the new name. On failure the file and the
/// reference are unchanged, `reason` tells why, and the log has a line.
[[nodiscard]] bool renameFile(PhotoLibrary &library, PIPhoto &photo, const QString &newName, QString *reason);

/// Sets the file's date, in whole seconds, and takes up what the file system made of it.
[[nodiscard]] bool setDate(PhotoLibrary &library, PIPhoto &photo, const QDateTime &date, QString *reason);

/// Lost files that stood under one folder.
struct LostTree
{
    QString folder; ///< as far as can be told, the one that moved
    QList<std::shared_ptr<PIFileRef>> files;
};

// For any thread but the main one: a disk may not answer.
/// The highest folder above a file that is no longer there; the file's own when that is.
[[nodiscard]] QString movedFolderOf(const QString &path);
/// The lowest folder above a file that is still there.
[[nodiscard]] QString folderLeftOf(const QString &path);

/// The lost files under `folder`, which held that of `photo`; nothing when they are fewer than two. Those on a volume
/// that is away count only when that of the photo is.
[[nodiscard]] std::optional<LostTree> lostTreeIn(const QString &folder, const PhotoLibrary &library,
                                                 const PIPhoto &photo);

/// A missing file with the place where it may be now.
struct MovedFile
{
    std::shared_ptr<PIFileRef> file;
    QString path;
    QByteArray bookmark = {}; ///< made before, by preparedFiles(); may be empty
    quint64 size = 0;         ///< of the file that is missing; 0 when that is not known, or not to be looked at
    bool isChosen = false;    ///< by the user, who knows: whatever stands there is the file
};

/// The user found the missing file of `photo` at `path`: that one, and every other lost file of a photo of
/// `shownFolder` (may be null) that stood in or below the same old folder, where one of its name would be in the new
/// folder.
[[nodiscard]] QList<MovedFile> filesFoundWith(const PIPhoto &photo, const PIFolder *shownFolder, const QString &path);

/// Where each file of the tree would be if its folder had moved to `newFolder`.
[[nodiscard]] QList<MovedFile> filesMovedTo(const PhotoLibrary &library, const LostTree &tree,
                                            const QString &newFolder);

/// The slow part of taking files: drops those that are not there, or are plainly others, and makes the bookmarks of the
/// rest. Any thread.
[[nodiscard]] QList<MovedFile> preparedFiles(QList<MovedFile> files, const FileFinder::Preparation &prepare);

/// Lets each reference whose file is still lost take its new path and tells the photos that show it. Returns how many.
qsizetype takeMovedFiles(PhotoLibrary &library, const QList<MovedFile> &files);

}
