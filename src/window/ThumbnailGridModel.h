#pragma once

#include "IndexSet.h"

#include <QAbstractListModel>
#include <QCache>
#include <QItemSelection>
#include <QList>

#include <memory>

class PIFolder;
class PIPhoto;

/// The photos of one folder in their order, as they were when last loaded.
class ThumbnailGridModel final : public QAbstractListModel
{
    Q_OBJECT

public:
    enum Role {
        PhotoRole = Qt::UserRole, ///< std::shared_ptr<PIPhoto>
        CaptionRole,
        DateRole, ///< text; empty until `learnDate`
        FileNameRole,
        MarkedRole,
        LostRole
    };

    explicit ThumbnailGridModel(QObject *parent = nullptr);
    ~ThumbnailGridModel() override;

    void setFolder(const std::shared_ptr<PIFolder> &folder);
    [[nodiscard]] const std::shared_ptr<PIFolder> &folder() const { return m_folder; }
    /// Takes up the folder's present photos.
    void reload();

    [[nodiscard]] const QList<std::shared_ptr<PIPhoto>> &photos() const { return m_photos; }
    /// Null when there is no such row.
    [[nodiscard]] std::shared_ptr<PIPhoto> photo(int row) const;

    // A date costs a look at the file, so it is learnt apart from painting.
    [[nodiscard]] bool isDateKnown(int row) const;
    /// Takes up the date of the photo's file as far as that is known.
    void learnDate(int row);
    void forgetDate(const PIPhoto &photo);

    /// One range for each range of `rows`, which must exist.
    [[nodiscard]] QItemSelection itemSelection(const IndexSet &rows) const;
    [[nodiscard]] static IndexSet rowsOf(const QItemSelection &selection);

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;

private:
    [[nodiscard]] static QString fileName(const PIPhoto &photo);
    [[nodiscard]] static QString toolTip(const PIPhoto &photo);
    [[nodiscard]] static QString spokenText(const PIPhoto &photo);

    std::shared_ptr<PIFolder> m_folder;
    QList<std::shared_ptr<PIPhoto>> m_photos;
    QCache<QString, QString> m_dates; // by photo guid
};

using PhotoList = QList<std::shared_ptr<PIPhoto>>;

/// Where the photos that stood at `rows` of `before` stand in `now`; a photo that was exchanged for a copy of itself
/// counts as the same.
[[nodiscard]] IndexSet rowsOfSame(const PhotoList &before, const IndexSet &rows, const PhotoList &now);
/// Where the photo or its copy stands; -1 when it is gone.
[[nodiscard]] int rowOfSame(const PIPhoto &photo, const PhotoList &photos);
