#include "FolderNames.h"

#include "DirectoryReader.h"
#include "ImageFormat.h"
#include "LogString.h"
#include "StringUtilities.h"

#include <QFileInfo>

namespace {

void indexSidecars(FolderNames::Folder &folder)
{
    const QString sidecar = QStringLiteral("xmp");
    for (const QString &name : std::as_const(folder.names))
        if (QVString::isFuzzyEqualToString(QVString::pathExtension(name), sidecar))
            folder.sidecars[QVString::fileNameMinusExtension(name)].append(name);
    if (folder.sidecars.isEmpty())
        return;
    for (const QString &name : std::as_const(folder.names)) {
        const QString stem = QVString::fileNameMinusExtension(name);
        if (folder.sidecars.contains(stem) && isReadableImageExtension(QVString::pathExtension(name)))
            folder.pictures[stem].append(name);
    }
    for (QStringList &names : folder.sidecars)
        names.sort();
}

}

/// Names that are no text are left out: nothing that can be typed is like them.
QStringList FolderNames::namesIn(const QString &path) const
{
    if (m_listing)
        return m_listing(path);
    QString reason;
    const auto listing = readDirectory(path, &reason);
    if (!listing) {
        LogString("Can't read %@. %@", path, reason);
        return {};
    }
    QStringList names;
    names.reserve(listing->entries.size());
    for (const DirectoryEntry &entry : listing->entries)
        names.append(entry.name);
    return names;
}

const FolderNames::Folder &FolderNames::at(const QString &path)
{
    std::shared_ptr<Folder> &known = m_folders[path];
    if (known)
        return *known;
    const QString resolved = m_listing ? path : QFileInfo(path).canonicalFilePath();
    const QString place = resolved.isEmpty() ? path : resolved;
    std::shared_ptr<Folder> folder = m_folders.value(place);
    if (!folder) {
        folder = std::make_shared<Folder>();
        folder->place = place;
        const QStringList names = namesIn(path);
        folder->names = QSet<QString>(names.cbegin(), names.cend());
        indexSidecars(*folder);
        m_folders.insert(place, folder);
    }
    m_folders.insert(path, folder);
    return *folder;
}
