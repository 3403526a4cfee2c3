#include "FolderNames.h"

#include "DirectoryReader.h"
#include "ImageFormat.h"
#include "PosixSupport.h"
#include "StringUtilities.h"

#include <QFileInfo>

#include <sys/stat.h>

namespace {

/// Names that are no text are left out: nothing that can be typed is like them.
std::optional<QStringList> namesOnDisk(const QString &path, QString *reason)
{
    const auto listing = readDirectory(path, reason);
    if (!listing)
        return {};
    QStringList names;
    names.reserve(listing->entries.size());
    for (const DirectoryEntry &entry : listing->entries)
        names.append(entry.name);
    return names;
}

/// Of pictures of one stem, that with the lowest has its sidecar.
int rankOf(const QString &name)
{
    const auto format = imageFormatForFileName(name);
    return format == ImageFormat::Raw ? 0 : format == ImageFormat::Jpeg ? 1 : 2;
}

bool isBefore(const QString &name, const QString &other)
{
    const int rank = rankOf(name);
    const int otherRank = rankOf(other);
    return rank != otherRank ? rank < otherRank : name < other;
}

/// A whole name counts for more than a stem.
void findOwners(FolderNames::Folder &folder)
{
    for (const QString &name : std::as_const(folder.names)) {
        const QString stem = QVString::fileNameMinusExtension(name);
        if (!folder.sidecars.contains(stem) || !isReadableImageExtension(QVString::pathExtension(name)))
            continue;
        QString &owner = folder.owners[stem];
        if (owner.isEmpty() || isBefore(name, owner))
            owner = name;
    }
    for (auto sidecar = folder.sidecars.cbegin(); sidecar != folder.sidecars.cend(); ++sidecar)
        if (folder.names.contains(sidecar.key()) && isReadableImageExtension(QVString::pathExtension(sidecar.key())))
            folder.owners[sidecar.key()] = sidecar.key();
}

void indexSidecars(FolderNames::Folder &folder)
{
    const QString sidecar = QStringLiteral("xmp");
    for (const QString &name : std::as_const(folder.names))
        if (QVString::isFuzzyEqualToString(QVString::pathExtension(name), sidecar))
            folder.sidecars[QVString::fileNameMinusExtension(name)].append(name);
    for (QStringList &names : folder.sidecars)
        names.sort();
    if (!folder.sidecars.isEmpty())
        findOwners(folder);
}

}

FolderNames::FolderNames(Listing listing, const QStringList &reserved, Look look)
    : m_listing(std::move(listing))
    , m_look(std::move(look))
{
    for (const QString &path : reserved)
        m_reserved[QVString::deletingLastPathComponent(path)].insert(QVString::lastPathComponent(path));
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
        const auto names = m_listing ? m_listing(path, &folder->failure) : namesOnDisk(path, &folder->failure);
        if (names)
            folder->names = QSet<QString>(names->cbegin(), names->cend());
        folder->isCaseBlind = isCaseBlind(path, folder->names);
        for (const QString &name : std::as_const(folder->names))
            folder->keys.insert(folder->keyOf(name));
        folder->reserved = m_reserved.value(place);
        indexSidecars(*folder);
        m_folders.insert(place, folder);
    }
    folder->reserved.unite(m_reserved.value(path));
    m_folders.insert(path, folder);
    return *folder;
}

bool FolderNames::isOnDisk(const QString &path) const
{
    if (m_listing)
        return m_look && m_look(path);
    struct stat facts = {};
    return ::lstat(Posix::nativePath(path).constData(), &facts) == 0;
}

/// The disk is asked for one name only, in the other case.
bool FolderNames::isCaseBlind(const QString &path, const QSet<QString> &names) const
{
    for (const QString &name : names) {
        const QString other = name == name.toLower() ? name.toUpper() : name.toLower();
        if (other != name)
            return !names.contains(other) && isOnDisk(QVString::appendingPathComponent(path, other));
    }
    return false;
}
