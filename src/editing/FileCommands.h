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

/// The user found the missing file of `photo` at `path`: the photo takes it, and so does every other lost photo of
/// `shownFolder` (may be null) that stood in or below the same old folder and whose file name exists in the new one.
/// Returns how many others were found.
int updateLostPhotos(PhotoLibrary &library, const std::shared_ptr<PIPhoto> &photo, const PIFolder *shownFolder,
                     const QString &path);

/// Lost files that stood under one folder.
struct LostTree
{
    QString folder; ///< as far as can be told, the one that moved
    QList<std::shared_ptr<PIFileRef>> files;
};

/// The highest folder above a file that is no longer there; the file's own when that is. Any thread but the main one: a
/// disk may not answer.
[[nodiscard]] QString movedFolderOf(const QString &path);

/// The lost files under `folder`, which held that of `photo`; nothing when they are fewer than two. Those on a volume
/// that is away count only when that of the photo is.
[[nodiscard]] std::optional<LostTree> lostTreeIn(const QString &folder, const PhotoLibrary &library,
                                                 const PIPhoto &photo);

/// One file of a lost tree at the place where it would be after the move.
struct MovedFile
{
    std::shared_ptr<PIFileRef> file;
    QString path;
    QByteArray bookmark = {}; ///< made before, by preparedFiles(); may be empty
    quint64 size = 0;         ///< of the file that is missing; 0 when it is not known
};

/// Where each file of the tree would be if its folder had moved to `newFolder`.
[[nodiscard]] QList<MovedFile> filesMovedTo(const PhotoLibrary &library, const LostTree &tree,
                                            const QString &newFolder);

/// The slow part of taking files: drops those that are not there, or are plainly others, and makes the bookmarks of the
/// rest. Any thread.
[[nodiscard]] QList<MovedFile> preparedFiles(QList<MovedFile> files, const FileFinder::Preparation &prepare);

/// Lets each reference whose file is still lost take its new path and tells the photos that show it.
void takeMovedFiles(PhotoLibrary &library, const QList<MovedFile> &files);

}
