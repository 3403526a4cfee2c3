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
    const auto missing =
        library.usedFileRefs([](const PIFileRef &file) { return file.isFileLost() && !file.isVolumeAway(); });
    for (const auto &file : missing) {
        const QByteArray bookmark = library.fileFinder().bookmark(file->guid());
        if (!bookmark.isEmpty())
            request.missing.append({file->guid(), bookmark});
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
        m_missing[found.key()].files.append(file);
        setAdd(found.key(), true);
    }
    describe(library);
}

/// Names the first photo of each missing file.
void OrphanList::describe(const PhotoLibrary &library)
{
    QHash<const PIFileRef *, qsizetype> undescribed;
    for (auto missing = m_missing.cbegin(); missing != m_missing.cend(); ++missing)
        for (const auto &file : missing->files)
            undescribed.insert(file.get(), missing.key());
    if (undescribed.isEmpty())
        return;
    library.forEachPhoto([&](const std::shared_ptr<PIPhoto> &photo) {
        const auto found = undescribed.constFind(photo->fileRef().get());
        if (found == undescribed.cend() || !m_missing[*found].text.isEmpty())
            return;
        const auto folder = library.folderForPhoto(*photo);
        const QString name = photo->caption().isEmpty() ? QVString::lastPathComponent(photo->fileRef()->path())
                                                        : photo->caption().simplified();
        const char *text = m_result.byContent.contains(*found)
                               ? QT_TRANSLATE_NOOP("OrphanList", "This is probably the missing photo “%1” of “%2”.")
                               : QT_TRANSLATE_NOOP("OrphanList", "This is the missing photo “%1” of “%2”.");
        m_missing[*found].text =
            QCoreApplication::translate("OrphanList", text).arg(name, folder ? folder->name() : QString());
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
    const auto first = std::min_element(m_missing.keyBegin(), m_missing.keyEnd());
    return first == m_missing.keyEnd() ? 0 : *first;
}

QString OrphanList::missingText(qsizetype row) const
{
    return m_missing.value(row).text;
}

bool OrphanList::isReattached(qsizetype row) const
{
    const auto missing = m_missing.constFind(row);
    return missing != m_missing.cend() && missing->reattached;
}

void OrphanList::setReattached(qsizetype row, bool reattached)
{
    if (const auto missing = m_missing.find(row); missing != m_missing.end())
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
    for (auto missing = m_missing.cbegin(); missing != m_missing.cend(); ++missing)
        if (missing->reattached && add(missing.key()))
            for (const auto &file : missing->files)
                files.append({file, path(missing.key())});
    return files;
}
