#include "SourceFiles.h"

#include "FileIdentity.h"
#include "StringUtilities.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>

#include <algorithm>

namespace {

/// The folder with the links on the way to it resolved; as it is where it does not exist.
QString resolvedFolder(const QString &folder)
{
    const QString resolved = QFileInfo(folder).canonicalFilePath();
    return resolved.isEmpty() ? QDir::cleanPath(folder) : resolved;
}

QString throughFolders(const QString &path)
{
    const QString clean = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    return QVString::appendingPathComponent(resolvedFolder(QVString::deletingLastPathComponent(clean)),
                                            QVString::lastPathComponent(clean));
}

bool isPlaceOf(const QString &file, const QString &place)
{
    return QVString::lastPathComponent(file) == QVString::lastPathComponent(place) && throughFolders(file) == place;
}

}

bool SourceFiles::isAmong(const QStringList &files, const QString &path, const std::atomic<bool> &cancelled)
{
    const QString place = throughFolders(path);
    const auto target = examineLinkedFile(QFile::encodeName(path).constData());
    return std::any_of(files.begin(), files.end(), [&](const QString &file) {
        if (cancelled)
            return false;
        if (isPlaceOf(file, place))
            return true;
        const auto source = target ? examineLinkedFile(QFile::encodeName(file).constData()) : std::nullopt;
        return source && source->device == target->device && source->identity.inode == target->identity.inode;
    });
}

QSet<QString> SourceFiles::namesIn(const QString &folder, const QStringList &files)
{
    const QString place = resolvedFolder(folder);
    QHash<QString, bool> isThere; // there are far fewer folders than files
    QSet<QString> names;
    for (const QString &file : files) {
        const QString parent = QVString::deletingLastPathComponent(file);
        auto found = isThere.constFind(parent);
        if (found == isThere.constEnd())
            found = isThere.insert(parent, resolvedFolder(parent) == place);
        if (*found)
            names.insert(QVString::lastPathComponent(file).toLower());
    }
    return names;
}
