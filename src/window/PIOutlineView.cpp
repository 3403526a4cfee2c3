#include "PIOutlineView.h"

#include "DragData.h"
#include "NavigatorModel.h"
#include "PIFolder.h"

#include <QDrag>
#include <QDragMoveEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QPainter>

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
    setDragEnabled(true);
    setAcceptDrops(true);
    setDropIndicatorShown(false);   // what is dropped may go elsewhere than the style would show
    constexpr int kOpenAfter = 700; // milliseconds under a drag
    setAutoExpandDelay(kOpenAfter);
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
    commitEditing();
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

/// Those that were closed live on for a moment.
QLineEdit *PIOutlineView::openEditor() const
{
    const auto editors = viewport()->findChildren<QLineEdit *>();
    const auto open =
        std::find_if(editors.cbegin(), editors.cend(), [](const auto *each) { return !each->isHidden(); });
    return open == editors.cend() ? nullptr : *open;
}

void PIOutlineView::commitEditing()
{
    if (auto *editor = openEditor()) {
        commitData(editor);
        closeEditor(editor, QAbstractItemDelegate::NoHint);
    }
}

void PIOutlineView::abortEditing()
{
    if (auto *editor = openEditor())
        closeEditor(editor, QAbstractItemDelegate::NoHint);
}

/// Here the key that renames does so, whatever else it stands for in the window.
bool PIOutlineView::event(QEvent *event)
{
    if (event->type() == QEvent::ShortcutOverride && static_cast<QKeyEvent *>(event)->key() == Qt::Key_F2) {
        event->accept();
        return true;
    }
    return QTreeView::event(event);
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

void PIOutlineView::startDrag(Qt::DropActions)
{
    const auto item = selectedItem();
    if (!item)
        return;
    const QRect row = visualRect(m_model.indexOf(item.get())).adjusted(-iconSize().width(), 0, 0, 0);
    auto *drag = new QDrag(this); // deletes itself after the drop
    drag->setMimeData(DragData::forItem(item).release());
    drag->setPixmap(viewport()->grab(row));
    drag->exec(Qt::MoveAction);
}

void PIOutlineView::dragEnterEvent(QDragEnterEvent *event)
{
    dragMoveEvent(event);
}

void PIOutlineView::dragMoveEvent(QDragMoveEvent *event)
{
    QTreeView::dragMoveEvent(event); // scrolls near the edges, opens rows
    const NavigatorDrop place = placeFor(*event);
    if (place.effect == NavigatorDrop::Effect::Refused) {
        setDropPlace({});
        event->ignore();
        return;
    }
    setDropPlace(place);
    event->setDropAction(place.effect == NavigatorDrop::Effect::Copy ? Qt::CopyAction : Qt::MoveAction);
    event->accept();
}

void PIOutlineView::dragLeaveEvent(QDragLeaveEvent *event)
{
    QTreeView::dragLeaveEvent(event);
    setDropPlace({});
}

void PIOutlineView::dropEvent(QDropEvent *event)
{
    const NavigatorDrop place = placeFor(*event);
    setDropPlace({});
    stopAutoScroll();
    setState(NoState);
    if (place.effect == NavigatorDrop::Effect::Refused) {
        event->ignore();
        return;
    }
    event->setDropAction(place.effect == NavigatorDrop::Effect::Copy ? Qt::CopyAction : Qt::MoveAction);
    event->accept();
    Q_EMIT dropped(*event, place);
}

namespace {

struct ProposedPlace
{
    QModelIndex item; ///< invalid: the top level
    int childIndex = NavigatorDrop::kOntoItem;
};

/// The upper and the lower quarter of a row stand for the places before and behind it.
ProposedPlace proposedPlace(const QTreeView &view, QPoint position)
{
    const QModelIndex index = view.indexAt(position).siblingAtColumn(NavigatorModel::NameColumn);
    if (!index.isValid())
        return {{}, view.model()->rowCount()};
    const QRect row = view.visualRect(index);
    const int edge = std::max(2, row.height() / 4);
    if (position.y() < row.top() + edge)
        return {index.parent(), index.row()};
    if (position.y() <= row.bottom() - edge)
        return {index, NavigatorDrop::kOntoItem};
    if (view.isExpanded(index) && view.model()->rowCount(index) > 0)
        return {index, 0};
    return {index.parent(), index.row() + 1};
}

}

NavigatorDrop PIOutlineView::placeFor(const QDropEvent &event) const
{
    const auto kind = DragData::kind(event);
    if (!kind)
        return {};
    const ProposedPlace place = proposedPlace(*this, event.position().toPoint());
    return NavigatorDrop::validate(m_model.library(), *kind, m_model.itemAt(place.item), place.childIndex);
}

void PIOutlineView::setDropPlace(const std::optional<NavigatorDrop> &place)
{
    m_dropPlace = place;
    viewport()->update();
}

/// A row that takes the drop, or a flat line between two.
QRect PIOutlineView::dropMark() const
{
    const QModelIndex item = m_model.indexOf(m_dropPlace->item.get());
    const auto acrossView = [this](QRect row) {
        row.setRight(viewport()->width() - 1);
        return row;
    };
    if (m_dropPlace->childIndex == NavigatorDrop::kOntoItem)
        return item.isValid() ? acrossView(visualRect(item)) : viewport()->rect();
    const QModelIndex before = m_model.index(m_dropPlace->childIndex, NavigatorModel::NameColumn, item);
    if (before.isValid()) {
        const QRect row = acrossView(visualRect(before));
        return {row.left(), row.top() - 1, row.width(), 2};
    }
    QModelIndex last = item;
    while (m_model.rowCount(last) > 0 && (!last.isValid() || isExpanded(last)))
        last = m_model.index(m_model.rowCount(last) - 1, NavigatorModel::NameColumn, last);
    const QRect row = acrossView(visualRect(last));
    return {row.left(), row.bottom(), row.width(), 2};
}

void PIOutlineView::paintEvent(QPaintEvent *event)
{
    QTreeView::paintEvent(event);
    if (!m_dropPlace)
        return;
    QPainter painter(viewport());
    painter.setPen(QPen(palette().highlight(), 2));
    const QRect mark = dropMark();
    if (mark.height() <= 2)
        painter.fillRect(mark, palette().highlight());
    else
        painter.drawRect(mark.adjusted(1, 1, -1, -1));
}
