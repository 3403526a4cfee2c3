#include "KeywordTable.h"

#include "KeywordTableModel.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QSortFilterProxyModel>
#include <QStyledItemDelegate>

namespace {

/// Keywords that contain a text, and those that are changed: what is committed is seen.
class ShownRows final : public QSortFilterProxyModel
{
public:
    using QSortFilterProxyModel::QSortFilterProxyModel;

protected:
    bool filterAcceptsRow(int row, const QModelIndex &parent) const override
    {
        const QModelIndex index = sourceModel()->index(row, KeywordTableModel::Keyword, parent);
        return index.data(KeywordTableModel::ChangedRole).toBool() ||
               QSortFilterProxyModel::filterAcceptsRow(row, parent);
    }
};

/// Paints rows that are to be deleted red: their text, or what marks it when it is selected.
class RowDelegate final : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override
    {
        QStyledItemDelegate::initStyleOption(option, index);
        if (!index.data(KeywordTableModel::ToBeDeletedRole).toBool())
            return;
        QPalette &colours = option->palette;
        const bool isDark = colours.color(QPalette::Base).lightness() < colours.color(QPalette::Text).lightness();
        colours.setColor(QPalette::Text, isDark ? QColor(255, 110, 100) : QColor(200, 0, 0));
        colours.setColor(QPalette::Highlight, QColor(190, 30, 30));
        colours.setColor(QPalette::HighlightedText, Qt::white);
    }
};

}

KeywordTable::KeywordTable(KeywordTableModel &model, QWidget *parent)
    : QTreeView(parent)
    , m_shownRows(new ShownRows(this))
{
    m_shownRows->setDynamicSortFilter(false); // a row that is edited stays
    m_shownRows->setFilterCaseSensitivity(Qt::CaseInsensitive);
    m_shownRows->setFilterKeyColumn(KeywordTableModel::Keyword);
    m_shownRows->setSourceModel(&model);
    setModel(m_shownRows);
    setItemDelegate(new RowDelegate(this));
    setRootIsDecorated(false);
    setUniformRowHeights(true); // there may be very many
    setAlternatingRowColors(true);
    setAllColumnsShowFocus(true);
    setTabKeyNavigation(false);
    setTextElideMode(Qt::ElideMiddle);
    setEditTriggers(EditKeyPressed | DoubleClicked);
    setAccessibleName(tr("Keywords"));
    header()->setStretchLastSection(false);
    header()->setSectionsMovable(false);
    header()->setSectionResizeMode(KeywordTableModel::Keyword, QHeaderView::Stretch);
    header()->setSectionResizeMode(KeywordTableModel::Photos, QHeaderView::Fixed);
    header()->resizeSection(KeywordTableModel::Photos, fontMetrics().horizontalAdvance(tr("Photos")) + 40);
}

void KeywordTable::setFilter(const QString &text)
{
    const int selected = selectedRow();
    m_shownRows->setFilterFixedString(text);
    if (selected < 0)
        return;
    if (m_shownRows->mapFromSource(m_shownRows->sourceModel()->index(selected, 0)).isValid())
        scrollTo(currentIndex());
    else
        selectionModel()->clear(); // not another in its place
}

int KeywordTable::selectedRow() const
{
    const QModelIndexList rows = selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : m_shownRows->mapToSource(rows.first()).row();
}

void KeywordTable::enter()
{
    setFocus();
    if (selectedRow() < 0)
        setCurrentIndex(m_shownRows->index(0, KeywordTableModel::Keyword));
}

void KeywordTable::editSelected()
{
    const QModelIndexList rows = selectionModel()->selectedRows();
    if (!rows.isEmpty())
        edit(rows.first());
}

/// A button's mnemonic leaves the focus in the editor.
void KeywordTable::endEditing()
{
    if (state() == EditingState)
        setFocus();
}

void KeywordTable::selectionChanged(const QItemSelection &selected, const QItemSelection &deselected)
{
    QTreeView::selectionChanged(selected, deselected);
    Q_EMIT selectedRowChanged();
}

void KeywordTable::keyPressEvent(QKeyEvent *event)
{
    if (event->matches(QKeySequence::Delete))
        Q_EMIT deleteWanted();
    else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        editSelected(); // rather than close the sheet
    else
        QTreeView::keyPressEvent(event);
}

/// Else the arrow keys would begin with the second row.
void KeywordTable::focusInEvent(QFocusEvent *event)
{
    QTreeView::focusInEvent(event);
    const bool isByKey = event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason;
    if (isByKey && selectedRow() < 0)
        enter();
}
