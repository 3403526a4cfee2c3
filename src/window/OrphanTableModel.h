#pragma once

#include "EmbeddedThumbnails.h"

#include <QAbstractTableModel>
#include <QPixmap>

class OrphanList;

/// Shows a list of orphans as rows with a small picture and a tick box, and lets them be ticked.
class OrphanTableModel final : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column { Add, Name, Path, Missing, ColumnCount };

    /// `list` outlives the model.
    OrphanTableModel(OrphanList &list, QObject *parent);

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex &index) const override;
    /// With the Alt key held, every row gets the tick.
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;

    /// The rows on show: their pictures are read now, and no others.
    void setVisibleRows(int first, int last);

    void setAllAdd(bool add);
    void setReattached(int row, bool reattached);

private:
    [[nodiscard]] QString text(const QModelIndex &index) const;
    [[nodiscard]] QPixmap picture(int row) const;
    void pictureReady(int row);

    OrphanList &m_list;
    mutable EmbeddedThumbnails m_pictures; ///< by row; what was looked at last stays longest
};
