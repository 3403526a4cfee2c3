#pragma once

#include "RenamePlan.h"

#include <QAbstractTableModel>

/// Shows what files are named and will be named, one row each, and what stands in the way.
class RenamePlanModel final : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column { OldName, NewName, Note, ColumnCount };

    using QAbstractTableModel::QAbstractTableModel;
    void setPlan(const RenamePlan &plan);
    [[nodiscard]] const RenamePlan &plan() const { return m_plan; }
    /// The row of the first file that cannot get its name; -1 when all can.
    [[nodiscard]] int firstObstacle() const;
    /// What will happen, in a sentence.
    [[nodiscard]] QString summary() const;

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    [[nodiscard]] const RenamePlan::Step &step(int row) const { return m_plan.steps().at(m_rows.at(row)); }

    RenamePlan m_plan{{}, {}};
    QList<qsizetype> m_rows; ///< the step that each shows
};
