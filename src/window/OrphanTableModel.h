#pragma once

#include <QAbstractTableModel>

class OrphanList;

/// Shows a list of orphans as rows with a tick box, and lets them be ticked.
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

    void setAllAdd(bool add);
    void setReattached(int row, bool reattached);

private:
    [[nodiscard]] QString text(const QModelIndex &index) const;

    OrphanList &m_list;
};
