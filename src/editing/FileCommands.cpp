#include "FileCommands.h"

#include "DirectoryReader.h"
#include "FileBookmark.h"
#include "FileDates.h"
#include "FileWriter.h"
#include "LibraryNotifications.h"
#include "LogString.h"
#include "PIFolder.h"
#include "PhotoLibrary.h"
#include "StringUtilities.h"

#include <QFileInfo>
#include <QSet>

namespace {

QString folderOf(const QString &path)
{
    return QVString::deletingLastPathComponent(path);
}

/// Whether the file is still the one that the reference means; it may have moved since it was looked at.
bool isThere(PIFileRef &file, QString *reason)
{
    if (file.verify())
        return true;
    LogString("Can't find %@", file.path());
    if (reason)
        *reason = QStringLiteral("The file is missing.");
    return false;
}

bool isUsableName(const QString &name, QString *reason)
{
    const bool usable = name.isValidUtf16() && !name.contains(u'/') && !name.contains(QChar::Null) &&
                        name != QStringLiteral(".") && name != QStringLiteral("..");
    if (!usable && reason)
        *reason = QStringLiteral("A file cannot have this name.");
    return usable;
}

}

bool FileCommands::renameFile(PhotoLibrary &library, PIPhoto &photo, const QString &newName, QString *reason)
{
    PIFileRef &file = *photo.fileRef();
    if (!isThere(file, reason))
        return false;
    const QString target = QVString::appendingPathComponent(folderOf(file.path()), newName);
    if (target == file.path())
        return true;
    QString why;
    if (!isUsableName(newName, &why) || !FileWriter::renameOver(file.path(), target, &why)) {
        LogString("Can't move %@ to %@. %@", file.path(), target, why);
        if (reason)
            *reason = why;
        return false;
    }
    file.setPath(target);
    library.fileRefs().takeUpPaths({&file});
    library.setDirtyForGood();
    library.notifications().post(kRedrawNotification, &photo);
    return true;
}

bool FileCommands::setDate(PhotoLibrary &library, PIPhoto &photo, const QDateTime &date, QString *reason)
{
    PIFileRef &file = *photo.fileRef();
    if (!isThere(file, reason))
        return false;
    const bool set = FileDates::setDate(file.path(), date.toSecsSinceEpoch(), reason);
    if (set)
        file.setPath(file.path()); // it is findable with its new date
    if (const auto present = FileDates::dateOf(file.path()))
        file.setCreationTime(static_cast<double>(*present));
    library.notifications().post(kRedrawNotification, &photo);
    return set;
}

QList<FileCommands::MovedFile> FileCommands::filesFoundWith(const PIPhoto &photo, const PIFolder *shownFolder,
                                                            const QString &path)
{
    const auto &file = photo.fileRef();
    if (!file)
        return {};
    const QString oldFolder = folderOf(file->path());
    const QString newFolder = folderOf(path);
    QList<MovedFile> found{{.file = file, .path = path, .isChosen = true}};
    QSet<const PIFileRef *> known{file.get()};
    const PIGroup::PhotoList photos = shownFolder ? shownFolder->photos() : PIGroup::PhotoList();
    for (qsizetype i = photos.size() - 1; i >= 0; --i) {
        const auto &other = photos[i]->fileRef();
        if (photos[i]->isFileLost() && photos[i]->isVolumeAway() == photo.isVolumeAway() &&
            !known.contains(other.get()) && other->path().startsWith(oldFolder)) {
            known.insert(other.get());
            const QString name = QVString::lastPathComponent(other->path());
            found.append({.file = other, .path = QVString::appendingPathComponent(newFolder, name)});
        }
    }
    return found;
}

QString FileCommands::movedFolderOf(const QString &path)
{
    QString moved = folderOf(path);
    for (QString folder = moved; folder.size() > 1 && !entryTypeAt(folder); folder = folderOf(folder))
        moved = folder;
    return moved;
}

QString FileCommands::folderLeftOf(const QString &path)
{
    QString folder = folderOf(path);
    while (folder.size() > 1 && entryTypeAt(folder) != EntryType::Folder)
        folder = folderOf(folder);
    return folder;
}

std::optional<FileCommands::LostTree> FileCommands::lostTreeIn(const QString &folder, const PhotoLibrary &library,
                                                               const PIPhoto &photo)
{
    const QString prefix = folder + u'/';
    const auto files = library.usedFileRefs([&](const PIFileRef &file) {
        return file.isFileLost() && file.isVolumeAway() == photo.isVolumeAway() && file.path().startsWith(prefix);
    });
    const bool isItsFolder = photo.fileRef() && photo.fileRef()->path().startsWith(prefix);
    return isItsFolder && files.size() > 1 ? std::optional(LostTree{folder, files}) : std::nullopt;
}

QList<FileCommands::MovedFile> FileCommands::filesMovedTo(const PhotoLibrary &library, const LostTree &tree,
                                                          const QString &newFolder)
{
    QList<MovedFile> moved;
    for (const auto &file : tree.files) {
        const QString path = QVString::appendingPathComponent(newFolder, file->path().mid(tree.folder.size() + 1));
        moved << MovedFile{file, path, {}, FileBookmark::fileSize(library.fileFinder().bookmark(file->guid()))};
    }
    return moved;
}

QList<FileCommands::MovedFile> FileCommands::preparedFiles(QList<MovedFile> files,
                                                           const FileFinder::Preparation &prepare)
{
    files.removeIf([](const MovedFile &file) {
        return !file.isChosen && (entryTypeAt(file.path) != EntryType::File ||
                                  (file.size > 0 && static_cast<quint64>(QFileInfo(file.path).size()) != file.size));
    });
    if (prepare)
        for (MovedFile &file : files)
            file.bookmark = prepare(file.path);
    return files;
}

qsizetype FileCommands::takeMovedFiles(PhotoLibrary &library, const QList<MovedFile> &files)
{
    QSet<const PIFileRef *> taken;
    for (const MovedFile &moved : files) {
        if (!moved.isChosen && (!moved.file->isFileLost() || entryTypeAt(moved.path) != EntryType::File))
            continue; // found, or gone, since it was chosen
        library.fileFinder().usePrepared(moved.path, moved.bookmark);
        moved.file->setPath(moved.path);
        taken.insert(moved.file.get());
    }
    if (taken.isEmpty())
        return 0;
    library.fileRefs().takeUpPaths(taken);
    library.forEachPhotoOf(taken, [&](const std::shared_ptr<PIPhoto> &photo) { library.pictureChanged(*photo); });
    library.setDirtyForGood();
    return taken.size();
}
