#pragma once

#include "OrphanList.h"

#include <QDialog>
#include <QTimer>

#include <functional>
#include <memory>

class OrphanTableModel;
class PicturePreview;
class PixelPool;
class QCheckBox;
class QLabel;
class QPushButton;
class QTreeView;

/// Lets the user pick from a list of orphans, with a preview of the one that is selected.
class PIOrphanDialog final : public QDialog
{
    Q_OBJECT

public:
    using Orphans = std::shared_ptr<OrphanList>;
    /// What the user picked is in the list; nothing counts when `success` is false.
    using Completion = std::function<void(const Orphans &orphans, bool success)>;

    /// Shows the dialog as a sheet on the window and returns at once. `pool` outlives the window.
    static void pickOrphans(const Orphans &orphans, PixelPool &pool, QWidget &inWindow, const Completion &completion);

    PIOrphanDialog(Orphans orphans, PixelPool &pool, QWidget *parent);

    // The dialog's own commands.
    void addAll();
    void showInFinder();

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void build();
    void showPicturesSoon();
    void showPictures();
    [[nodiscard]] QWidget *buildList();
    [[nodiscard]] QWidget *buildPreview();
    [[nodiscard]] QString summary() const;
    /// The selected row; -1 when there is none.
    [[nodiscard]] int selectedRow() const;
    void selectionChanged();

    Orphans m_orphans;
    OrphanTableModel *m_model;
    QTreeView *m_table;
    QTimer m_picturesTimer;
    PicturePreview *m_preview;
    QLabel *m_path;
    QLabel *m_missing;
    QCheckBox *m_reattach;
    QPushButton *m_show;
};
