#pragma once

#include "IndexSet.h"
#include "PIGroup.h"

#include <QSet>

class PIFileRef;

enum class Subfolders { Exclude, Include };

/// A group inside a group: it has a parent, photos in the order of the grid, and remembers which were selected.
/// The same photo may stand in several folders.
class PIFolder final : public PIGroup
{
public:
    explicit PIFolder(const QString &name = {});

    [[nodiscard]] std::shared_ptr<PIGroup> copy() const override;
    [[nodiscard]] PIFolder *asFolder() override { return this; }
    [[nodiscard]] const PIFolder *asFolder() const override { return this; }

    /// The group or folder whose list holds this one; null outside a library.
    [[nodiscard]] std::shared_ptr<PIGroup> parent() const { return m_parent.lock(); }
    void setParent(const std::shared_ptr<PIGroup> &parent) { m_parent = parent; }
    [[nodiscard]] PhotoList &photos() { return m_photos; }
    [[nodiscard]] const PhotoList &photos() const { return m_photos; }
    [[nodiscard]] IndexSet &selection() { return m_selection; }
    [[nodiscard]] const IndexSet &selection() const { return m_selection; }

    /// Own photos; with `includeSubfolders`, or when this folder is collapsed, everything beneath as well.
    [[nodiscard]] int photoCount(Subfolders includeSubfolders) const;
    /// The first own photo with this guid; null when there is none. Subfolders are not searched.
    [[nodiscard]] std::shared_ptr<PIPhoto> findPhotoByGuid(const QString &guid) const;
    /// Drops every photo that shows one of `fileRefs`, here and in all subfolders. The selection is left alone.
    void removePhotosForFileRefs(const QSet<const PIFileRef *> &fileRefs);

    void enforceVisibility() override;
    void clearSaveIndexes() override;
    void archiveToXml(QVXmlEncoder &encoder) const override;

protected:
    [[nodiscard]] bool handleUnknownGroupKey(const QVXmlDecoder &decoder, const PhotoList &photos) override;

private:
    PIFolder(const PIFolder &other) = default;

    std::weak_ptr<PIGroup> m_parent;
    PhotoList m_photos;
    IndexSet m_selection;
};
