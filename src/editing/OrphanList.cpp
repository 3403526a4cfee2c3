#include "OrphanList.h"

#include "FileFinder.h"
#include "PIFolder.h"
#include "PhotoLibrary.h"
#include "StringUtilities.h"

#include <QCoreApplication>

#include <algorithm>

OrphanRequest orphanRequest(const PhotoLibrary &library, const QString &folder)
{
    OrphanRequest request{folder, library.fileRefs().knownPaths(), {}};
    const auto lost = library.usedFileRefs([](const PIFileRef &file) { return file.isFileLost(); });
    for (const auto &file : lost) {
        const QByteArray bookmark = library.fileFinder().bookmark(file->guid());
        if (!bookmark.isEmpty())
            (file->isVolumeAway() ? request.away : request.missing).append({file->guid(), bookmark});
    }
    return request;
}

OrphanList::OrphanList(const PhotoLibrary &library, const QString &folder, OrphanSearchResult result)
    : m_folder(folder)
    , m_result(std::move(result))
    , m_add(static_cast<std::size_t>(m_result.orphans.count()), false)
{
    for (auto found = m_result.missing.cbegin(); found != m_result.missing.cend(); ++found) {
        const auto file = library.fileRefs().fileRefForGuid(found.value());
        // It may have been found while the search ran.
        if (!file || !file->isFileLost())
            continue;
        m_ofPhotos[found.key()].files.append(file);
        setAdd(found.key(), true);
    }
    for (auto found = m_result.copiesOfAway.cbegin(); found != m_result.copiesOfAway.cend(); ++found) {
        const auto file = library.fileRefs().fileRefForGuid(found.value());
        if (!file || !file->isVolumeAway())
            continue;
        OfPhoto &copy = m_ofPhotos[found.key()];
        copy.files.append(file);
        copy.isAway = true;
        copy.reattached = false; // its photo will have its own file again
    }
    describe(library);
}

const char *OrphanList::textFor(qsizetype row) const
{
    if (isOfPhotoAway(row))
        return QT_TRANSLATE_NOOP("OrphanList",
                                 "This is probably a copy of the photo “%1” of “%2”, the file of which is "
                                 "on a volume that is not mounted.");
    return m_result.byContent.contains(row)
               ? QT_TRANSLATE_NOOP("OrphanList", "This is probably the missing photo “%1” of “%2”.")
               : QT_TRANSLATE_NOOP("OrphanList", "This is the missing photo “%1” of “%2”.");
}

/// Names the first photo of each file.
void OrphanList::describe(const PhotoLibrary &library)
{
    QHash<const PIFileRef *, qsizetype> undescribed;
    for (auto missing = m_ofPhotos.cbegin(); missing != m_ofPhotos.cend(); ++missing)
        for (const auto &file : missing->files)
            undescribed.insert(file.get(), missing.key());
    if (undescribed.isEmpty())
        return;
    library.forEachPhoto([&](const std::shared_ptr<PIPhoto> &photo) {
        const auto found = undescribed.constFind(photo->fileRef().get());
        if (found == undescribed.cend() || !m_ofPhotos[*found].text.isEmpty())
            return;
        const auto folder = library.folderForPhoto(*photo);
        const QString name = photo->caption().isEmpty() ? QVString::lastPathComponent(photo->fileRef()->path())
                                                        : photo->caption().simplified();
        m_ofPhotos[*found].text =
            QCoreApplication::translate("OrphanList", textFor(*found)).arg(name, folder ? folder->name() : QString());
    });
}

QString OrphanList::path(qsizetype row) const
{
    return QVString::appendingPathComponent(m_folder, m_result.orphans.path(row));
}

QString OrphanList::fileName(qsizetype row) const
{
    return QVString::lastPathComponent(m_result.orphans.path(row));
}

QString OrphanList::subfolder(qsizetype row) const
{
    return QVString::deletingLastPathComponent(m_result.orphans.path(row));
}

qsizetype OrphanList::startRow() const
{
    qsizetype first = count();
    for (auto file = m_ofPhotos.cbegin(); file != m_ofPhotos.cend(); ++file)
        if (!file->isAway)
            first = std::min(first, file.key());
    return first == count() ? 0 : first;
}

int OrphanList::missingCount() const
{
    return static_cast<int>(
        std::count_if(m_ofPhotos.cbegin(), m_ofPhotos.cend(), [](const OfPhoto &file) { return !file.isAway; }));
}

QString OrphanList::photoText(qsizetype row) const
{
    return m_ofPhotos.value(row).text;
}

bool OrphanList::isReattached(qsizetype row) const
{
    const auto missing = m_ofPhotos.constFind(row);
    return missing != m_ofPhotos.cend() && missing->reattached;
}

void OrphanList::setReattached(qsizetype row, bool reattached)
{
    if (const auto missing = m_ofPhotos.find(row); missing != m_ofPhotos.end())
        missing->reattached = reattached;
}

QStringList OrphanList::filesToAdd() const
{
    QStringList paths;
    for (qsizetype row = 0; row < count(); ++row)
        if (add(row) && !isReattached(row))
            paths.append(path(row));
    return paths;
}

QList<FileCommands::MovedFile> OrphanList::filesToReattach() const
{
    QList<FileCommands::MovedFile> files;
    for (auto missing = m_ofPhotos.cbegin(); missing != m_ofPhotos.cend(); ++missing)
        if (missing->reattached && add(missing.key()))
            for (const auto &file : missing->files)
                files.append({file, path(missing.key())});
    return files;
}
