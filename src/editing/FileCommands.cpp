#include "FileCommands.h"

#include "DirectoryReader.h"
#include "FileDates.h"
#include "FileWriter.h"
#include "LibraryNotifications.h"
#include "LogString.h"
#include "PIFolder.h"
#include "PhotoLibrary.h"
#include "StringUtilities.h"

#include <QSet>

#include <algorithm>
#include <iterator>

namespace {

QString folderOf(const QString &path)
{
    return QVString::deletingLastPathComponent(path);
}

/// The photo's picture comes from another place now.
void rebuildThumbnail(PhotoLibrary &library, PIPhoto &photo)
{
    library.thumbnails().updateForFilters(photo);
    library.notifications().post(kThumbnailNotification, &photo);
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
    if (const auto present = FileDates::dateOf(file.path()))
        file.setCreationTime(static_cast<double>(*present));
    library.notifications().post(kRedrawNotification, &photo);
    return set;
}

namespace {

/// Tells the photos of these files, but for those that were told already.
void tellPhotos(PhotoLibrary &library, const QSet<const PIFileRef *> &taken, const QSet<const PIPhoto *> &told)
{
    library.forEachPhotoOf(taken, [&](const std::shared_ptr<PIPhoto> &photo) {
        if (!told.contains(photo.get()))
            rebuildThumbnail(library, *photo);
    });
}

}

int FileCommands::updateLostPhotos(PhotoLibrary &library, const std::shared_ptr<PIPhoto> &photo,
                                   const PIFolder *shownFolder, const QString &path)
{
    if (!photo->fileRef())
        return 0;
    const QString oldFolder = folderOf(photo->fileRef()->path());
    const QString newFolder = folderOf(path);
    QSet<const PIFileRef *> taken;
    QSet<const PIPhoto *> told;
    const auto take = [&](PIPhoto &found, const QString &place) {
        found.fileRef()->setPath(place);
        rebuildThumbnail(library, found);
        taken.insert(found.fileRef().get());
        told.insert(&found);
    };
    take(*photo, path);
    const PIGroup::PhotoList photos = shownFolder ? shownFolder->photos() : PIGroup::PhotoList();
    for (qsizetype i = photos.size() - 1; i >= 0; --i) {
        PIPhoto &other = *photos[i];
        if (&other == photo.get() || !other.fileRef() || !other.isFileLost() ||
            !other.fileRef()->path().startsWith(oldFolder))
            continue;
        const QString candidate =
            QVString::appendingPathComponent(newFolder, QVString::lastPathComponent(other.fileRef()->path()));
        if (entryTypeAt(candidate))
            take(other, candidate);
    }
    tellPhotos(library, taken, told);
    library.setDirtyForGood();
    library.notifications().post(kSelectNotification, photo);
    return static_cast<int>(told.size()) - 1;
}

namespace {

/// The folder and everything above it, the deepest first, without the root: everything stands under that.
QStringList withAncestors(QString folder)
{
    QStringList folders;
    while (folder.size() > 1) {
        folders << folder;
        folder = folderOf(folder);
    }
    return folders;
}

}

std::optional<FileCommands::LostTree> FileCommands::lostTreeAround(const PhotoLibrary &library, const PIPhoto &photo)
{
    if (!photo.fileRef())
        return std::nullopt;
    const QStringList folders = withAncestors(folderOf(photo.fileRef()->path()));
    const auto files = library.usedFileRefs([](const PIFileRef &file) { return file.isFileLost(); });
    // Every folder above holds at least as many; the deepest one that gains nothing by going up is the one that moved.
    std::optional<LostTree> best;
    for (const QString &folder : folders) {
        const QString prefix = folder + u'/';
        QList<std::shared_ptr<PIFileRef>> held;
        std::copy_if(files.begin(), files.end(), std::back_inserter(held),
                     [&](const auto &file) { return file->path().startsWith(prefix); });
        if (held.size() > 1 && (!best || held.size() > best->files.size()))
            best = LostTree{folder, held};
    }
    return best;
}

QList<FileCommands::MovedFile> FileCommands::filesMovedTo(const LostTree &tree, const QString &newFolder)
{
    QList<MovedFile> moved;
    for (const auto &file : tree.files)
        moved << MovedFile{file, QVString::appendingPathComponent(newFolder, file->path().mid(tree.folder.size() + 1))};
    return moved;
}

QList<FileCommands::MovedFile> FileCommands::preparedFiles(QList<MovedFile> files,
                                                           const FileFinder::Preparation &prepare)
{
    files.removeIf([](const MovedFile &file) { return entryTypeAt(file.path) != EntryType::File; });
    if (prepare)
        for (MovedFile &file : files)
            file.bookmark = prepare(file.path);
    return files;
}

void FileCommands::takeMovedFiles(PhotoLibrary &library, const QList<MovedFile> &files)
{
    QSet<const PIFileRef *> taken;
    for (const MovedFile &moved : files) {
        if (!moved.file->isFileLost() || entryTypeAt(moved.path) != EntryType::File)
            continue; // found, or gone, since it was chosen
        library.fileFinder().usePrepared(moved.path, moved.bookmark);
        moved.file->setPath(moved.path);
        taken.insert(moved.file.get());
    }
    if (taken.isEmpty())
        return;
    tellPhotos(library, taken, {});
    library.setDirtyForGood();
}
