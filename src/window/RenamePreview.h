#pragma once

#include "DispatchQueue.h"
#include "RenamePlan.h"

#include <QStringList>
#include <QWidget>

class QLabel;
class QTreeView;
class RenamePlanModel;

/// Shows what files will be named, worked out in the background as often as how is changed.
class RenamePreview final : public QWidget
{
    Q_OBJECT

public:
    RenamePreview(const QStringList &paths, QWidget *parent);

    /// Of several asked for in one go, only the last is worked out.
    void showPlan(const RenameSettings &settings);

private:
    void plan();
    void show(const RenamePlan &plan);

    const QStringList m_paths;
    RenameSettings m_wanted;
    RenameSettings m_planned;
    bool m_isPlanning = false;
    RenamePlanModel *m_model;
    QTreeView *m_table;
    QLabel *m_summary;
    DispatchQueue m_worker; ///< reads folders. Last: its blocks end first
};
