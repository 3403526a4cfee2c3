#include "LibraryFile.h"

#include "DirectoryReader.h"
#include "FileWriter.h"
#include "LibraryReader.h"
#include "LibraryTags.h"
#include "LibraryWriter.h"
#include "LogString.h"
#include "PhotoLibrary.h"
#include "QVXmlDecoder.h"
#include "StringUtilities.h"
#include "UniqueFileName.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>

namespace LibraryFile {

void registerTags()
{
    QList<std::pair<QString, int>> table;
    int number = 0;
    for (const char *name : LibraryTag::kNames)
        table.append({QLatin1String(name), ++number});
    QVXmlDecoder::setKeyDecoder(table);
}

LoadResult load(const QString &path, PhotoLibrary &library)
{
    LoadResult result;
    if (!QFileInfo::exists(path))
        return result;
    QString reason;
    auto decoder = QVXmlDecoder::fromFile(path, &reason);
    if (!decoder) {
        if (reason.isEmpty())
            reason = QStringLiteral("(null)"); // readable, but no such file
        result.failure = FormatMessage(QStringLiteral("The database could not be opened. %@"), {reason});
        return result;
    }
    const QString failure = LibraryReader(*decoder, library, result).read();
    if (!failure.isEmpty()) {
        result = LoadResult();
        result.failure = failure;
    }
    return result;
}

namespace {

QString uniquePathBeside(const QString &path)
{
    const QString folder = QVString::deletingLastPathComponent(path);
    const QString name = UniqueFileName(folder, QVString::fileNameMinusExtension(path), QVString::pathExtension(path));
    return QVString::appendingPathComponent(folder, name);
}

}

namespace {

bool haveSameContent(const QString &one, const QString &other)
{
    constexpr qint64 kPiece = 1 << 20;
    QFile a(one);
    QFile b(other);
    if (!a.open(QFile::ReadOnly) || !b.open(QFile::ReadOnly) || a.size() != b.size())
        return false;
    while (!a.atEnd()) {
        const QByteArray piece = a.read(kPiece);
        if (piece.isEmpty() || piece != b.read(kPiece))
            return false;
    }
    return true;
}

/// A library that cannot be read is met at every start until it is saved anew.
bool isCopiedAlready(const QString &original)
{
    const QString folder = QVString::deletingLastPathComponent(original);
    const QString stem = QVString::fileNameMinusExtension(original) + QLatin1Char('-');
    const auto listing = readDirectory(folder);
    if (!listing)
        return false;
    return std::any_of(listing->entries.cbegin(), listing->entries.cend(), [&](const DirectoryEntry &entry) {
        return entry.type == EntryType::File && entry.name.startsWith(stem) &&
               haveSameContent(original, QVString::appendingPathComponent(folder, entry.name));
    });
}

bool setAside(const QString &original)
{
    const QString copy = uniquePathBeside(original);
    QString reason;
    if (FileWriter::copyNoReplace(original, copy, &reason)) {
        LogString("Copied the unreadable database %@ to %@", original, copy);
        return true;
    }
    LogString("Can't copy %@ to %@: %@", original, copy, reason);
    if (!FileWriter::renameNoReplace(original, copy, &reason)) {
        LogString("Can't move %@ to %@: %@", original, copy, reason);
        return false;
    }
    LogString("Moved the unreadable database %@ to %@", original, copy);
    return true;
}

}

bool copyAside(const QString &path)
{
    bool isSafe = true;
    for (const QString &original : {path, backupPath(path)}) {
        if (QFileInfo::exists(original) && !isCopiedAlready(original))
            isSafe = setAside(original) && isSafe;
    }
    return isSafe;
}

namespace {

/// A backup without a library beside it may be all that is left of one: it gives up its name, but is not lost.
void setAsideStrayBackup(const QString &path)
{
    const QString backup = backupPath(path);
    if (QFileInfo::exists(path) || !QFileInfo::exists(backup))
        return;
    const QString target = uniquePathBeside(backup);
    QString reason;
    if (FileWriter::renameNoReplace(backup, target, &reason))
        LogString("Moved the backup without a database %@ to %@", backup, target);
    else
        LogString("Can't move %@ to %@: %@", backup, target, reason);
}

/// Makes the present file the backup. It keeps its own name meanwhile where the file system allows that.
bool makeBackup(const QString &path)
{
    setAsideStrayBackup(path);
    if (!QFileInfo::exists(path))
        return true;
    const QString backup = backupPath(path);
    QString reason;
    if (FileWriter::linkOver(path, backup) || FileWriter::renameOver(path, backup, &reason))
        return true;
    LogString("Can't rename previous version %@ to %@: %@", path, backup, reason);
    return false;
}

void restoreBackup(const QString &path)
{
    const QString backup = backupPath(path);
    QString reason;
    if (QFileInfo::exists(path) || !QFileInfo::exists(backup))
        return;
    if (!FileWriter::renameNoReplace(backup, path, &reason))
        LogString("Can't restore database after failure %@: %@", backup, reason);
}

/// The new file is complete on disk before anything happens to the present one.
bool writeWithBackup(const QString &path, const QByteArray &bytes)
{
    const QString fresh = path + QLatin1String(".new");
    QString reason;
    bool written = FileWriter::write(fresh, bytes, FileWriter::Flush::ToDisk, &reason, FileWriter::modeOf(path));
    if (written && !makeBackup(path)) {
        QFile::remove(fresh);
        return false;
    }
    written = written && FileWriter::renameOver(fresh, path, &reason) && FileWriter::syncFolder(path, &reason);
    if (written)
        return true;
    LogString("Can't write database %@: %@", path, reason);
    QFile::remove(fresh);
    restoreBackup(path);
    return false;
}

}

bool save(const QString &path, PhotoLibrary &library, const WindowState &window)
{
    if (!writeWithBackup(path, LibraryWriter(library, window).write()))
        return false;
    library.setDirty(false);
    return true;
}

QString backupPath(const QString &path)
{
    return QVString::stringByReplacingFile(path, QStringLiteral("Photo~"), QVString::pathExtension(path));
}

}
