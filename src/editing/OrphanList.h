#pragma once

#include "FileCommands.h"
#include "OrphanSearch.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

class PhotoLibrary;
class PIFileRef;

/// Image files of a folder that the library does not know, for the user to pick from. One that is a missing file of
/// the library is picked from the start, and given back to the photos that miss it instead of being added, unless the
/// user decides otherwise. One with the content of a photo on a volume that is away is only told as such. Main thread.
class OrphanList
{
public:
    OrphanList(const PhotoLibrary &library, const QString &folder, OrphanSearchResult result);

    [[nodiscard]] const QString &folder() const { return m_folder; }
    [[nodiscard]] qsizetype count() const { return m_result.orphans.count(); }
    [[nodiscard]] QString path(qsizetype row) const;
    [[nodiscard]] QString fileName(qsizetype row) const;
    /// The part of the path between the folder that was searched and the file; empty for a file in that folder.
    [[nodiscard]] QString subfolder(qsizetype row) const;

    [[nodiscard]] bool add(qsizetype row) const { return m_add[static_cast<std::size_t>(row)]; }
    void setAdd(qsizetype row, bool add) { m_add[static_cast<std::size_t>(row)] = add; }
    void setAllAdd(bool add) { m_add.assign(m_add.size(), add); }

    /// Whether a photo of the library misses the file, or has its content on a volume that is away.
    [[nodiscard]] bool isOfPhoto(qsizetype row) const { return m_ofPhotos.contains(row); }
    [[nodiscard]] bool isOfPhotoAway(qsizetype row) const { return m_ofPhotos.value(row).isAway; }
    [[nodiscard]] bool hasAnyOfPhotos() const { return !m_ofPhotos.isEmpty(); }
    [[nodiscard]] int missingCount() const;
    /// The row to begin with: the first missing file, else the first of all.
    [[nodiscard]] qsizetype startRow() const;
    /// Tells which photo that is; empty for others.
    [[nodiscard]] QString photoText(qsizetype row) const;
    [[nodiscard]] bool isReattached(qsizetype row) const;
    /// Ignored for a file of no photo.
    void setReattached(qsizetype row, bool reattached);

    /// The files to make new photos of, in the order of the list.
    [[nodiscard]] QStringList filesToAdd() const;
    /// The references that get their files back.
    [[nodiscard]] QList<FileCommands::MovedFile> filesToReattach() const;

private:
    struct OfPhoto
    {
        QList<std::shared_ptr<PIFileRef>> files;
        QString text;
        bool isAway = false;
        bool reattached = true;
    };
    void describe(const PhotoLibrary &library);
    [[nodiscard]] const char *textFor(qsizetype row) const;

    QString m_folder;
    OrphanSearchResult m_result;
    std::vector<bool> m_add;
    QHash<qsizetype, OfPhoto> m_ofPhotos;
};

/// What a search needs to know of the library: the files that it knows, and those that it misses, apart
/// from those that are merely on a volume that is away.
[[nodiscard]] OrphanRequest orphanRequest(const PhotoLibrary &library, const QString &folder);
