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
    explicit RenamePreview(QWidget *parent);

    /// Of several asked for in one go, only the last is worked out. `reserved` are paths that no file may get.
    void showPlan(const RenameSettings &settings, const QStringList &paths, const QStringList &reserved);
    /// What was asked for last is on show.
    [[nodiscard]] bool isUpToDate() const { return !m_isPlanning; }
    /// The plan on show.
    [[nodiscard]] const RenamePlan &plan() const;

Q_SIGNALS:
    void becameUpToDate();

private:
    void work();
    void show(const RenamePlan &plan);

    struct Question
    {
        RenameSettings settings;
        QStringList paths;
        QStringList reserved;
        bool operator==(const Question &) const = default;
    };
    Question m_wanted;
    Question m_planned;
    bool m_isPlanning = false;
    RenamePlanModel *m_model;
    QTreeView *m_table;
    QLabel *m_summary;
    DispatchQueue m_worker; ///< reads folders. Last: its blocks end first
};
