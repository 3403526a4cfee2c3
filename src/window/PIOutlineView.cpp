#include "PIOutlineView.h"

#include "NavigatorModel.h"
#include "PIFolder.h"

#include <QHeaderView>

PIOutlineView::PIOutlineView(NavigatorModel &model, QWidget *parent)
    : QTreeView(parent)
    , m_model(model)
{
    setModel(&model);
    setHeaderHidden(true);
    setUniformRowHeights(true);
    setAnimated(false);
    setFrameShape(QFrame::NoFrame);
    setIndentation(16);
    setIconSize(QSize(16, 16));
    setTextElideMode(Qt::ElideMiddle);
    setEditTriggers(EditKeyPressed | SelectedClicked);
    setSelectionMode(SingleSelection);
    setAccessibleName(tr("Groups and folders"));
    header()->setStretchLastSection(false);
    header()->setSectionResizeMode(NavigatorModel::NameColumn, QHeaderView::Stretch);
    header()->setSectionResizeMode(NavigatorModel::CountColumn, QHeaderView::ResizeToContents);

    connect(this, &QTreeView::collapsed, this, [this](const QModelIndex &index) { noteClosed(index, true); });
    connect(this, &QTreeView::expanded, this, [this](const QModelIndex &index) { noteClosed(index, false); });
}

std::shared_ptr<PIGroup> PIOutlineView::selectedItem() const
{
    const QModelIndexList rows = selectionModel()->selectedRows(NavigatorModel::NameColumn);
    return rows.isEmpty() ? nullptr : m_model.itemAt(rows.first());
}

void PIOutlineView::resetList(const std::shared_ptr<PIGroup> &item)
{
    const std::shared_ptr<PIGroup> kept = item ? item : selectedItem();
    m_rebuilding = true;
    setUpdatesEnabled(false);
    m_model.reset();
    applyClosedFlags({});
    if (const QModelIndex index = m_model.indexOf(kept.get()); index.isValid())
        setCurrentIndex(index);
    setUpdatesEnabled(true);
    m_rebuilding = false;
    if (item)
        selectAndCenter(item);
    Q_EMIT selectedItemChanged();
}

void PIOutlineView::selectAndCenter(const std::shared_ptr<PIGroup> &item)
{
    const QModelIndex index = m_model.indexOf(item.get());
    if (!index.isValid())
        return;
    setCurrentIndex(index);
    scrollTo(index, PositionAtCenter);
}

void PIOutlineView::editName(const std::shared_ptr<PIGroup> &item)
{
    const QModelIndex index = m_model.indexOf(item.get());
    if (!index.isValid())
        return;
    scrollTo(index);
    setFocus();
    edit(index);
}

void PIOutlineView::selectionChanged(const QItemSelection &selected, const QItemSelection &deselected)
{
    QTreeView::selectionChanged(selected, deselected);
    if (!m_rebuilding)
        Q_EMIT selectedItemChanged();
}

/// Groups open. Folders are as the library has them, also those inside closed ones.
void PIOutlineView::applyClosedFlags(const QModelIndex &parent)
{
    for (int row = m_model.rowCount(parent) - 1; row >= 0; --row) {
        const QModelIndex index = m_model.index(row, NavigatorModel::NameColumn, parent);
        if (m_model.rowCount(index) == 0)
            continue;
        const auto item = m_model.itemAt(index);
        if (!parent.isValid())
            item->setClosed(false);
        setExpanded(index, !item->isClosed());
        applyClosedFlags(index);
    }
}

void PIOutlineView::noteClosed(const QModelIndex &index, bool closed)
{
    const auto item = m_model.itemAt(index);
    if (!item || m_rebuilding)
        return;
    item->setClosed(closed);
    m_model.refreshCounts(item.get());
}
