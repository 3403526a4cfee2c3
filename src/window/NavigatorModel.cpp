#include "NavigatorModel.h"

#include "Icons.h"
#include "LibraryEditor.h"
#include "PIFolder.h"
#include "PhotoLibrary.h"
#include "PlainText.h"
#include "TextForPeople.h"

#include <QApplication>
#include <QFont>
#include <QLocale>

namespace {

template<typename List>
int rowIn(const List &list, const PIGroup *item)
{
    for (qsizetype row = 0; row < list.size(); ++row) {
        if (list[row].get() == item)
            return static_cast<int>(row);
    }
    return -1;
}

QString countText(const PIGroup &item)
{
    const PIFolder *folder = item.asFolder();
    const int count = folder ? folder->photoCount(Subfolders::Exclude) : 0;
    return count > 0 ? QLocale().toString(count) : QString();
}

QVariant nameData(const PIGroup &item, int role)
{
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        return item.name();
    case Qt::ToolTipRole:
        return plainText(item.name());
    case Qt::DecorationRole:
        if (item.asFolder())
            return themedIcon(QLatin1String("folder"));
        return {};
    case Qt::FontRole:
        if (!item.asFolder()) {
            QFont font = QApplication::font("QTreeView");
            font.setBold(true);
            return font;
        }
        return {};
    default:
        return {};
    }
}

QVariant countData(const PIGroup &item, int role)
{
    switch (role) {
    case Qt::DisplayRole:
        return countText(item);
    case Qt::TextAlignmentRole:
        return QVariant(Qt::AlignRight | Qt::AlignVCenter);
    case Qt::AccessibleTextRole:
        return CountText(item.asFolder() ? item.asFolder()->photoCount(Subfolders::Exclude) : 0,
                         NavigatorModel::tr("%n photo"), NavigatorModel::tr("%n photos"));
    default:
        return {};
    }
}

}

NavigatorModel::NavigatorModel(PhotoLibrary &library, LibraryEditor &editor, QObject *parent)
    : QAbstractItemModel(parent)
    , m_library(library)
    , m_editor(editor)
{}

std::shared_ptr<PIGroup> NavigatorModel::itemAt(const QModelIndex &index) const
{
    PIGroup *item = pointerAt(index);
    return item ? item->shared_from_this() : nullptr;
}

QModelIndex NavigatorModel::indexOf(const PIGroup *item) const
{
    if (!item)
        return {};
    const int groupRow = rowIn(m_library.groups(), item);
    if (groupRow >= 0)
        return createIndex(groupRow, NameColumn, item);
    const PIFolder *folder = item->asFolder();
    const auto parent = folder ? folder->parent() : nullptr;
    const int row = parent ? rowIn(parent->folders(), item) : -1;
    return row >= 0 ? createIndex(row, NameColumn, item) : QModelIndex();
}

void NavigatorModel::reset()
{
    beginResetModel();
    endResetModel();
}

void NavigatorModel::refreshCounts(const PIGroup *item)
{
    for (QModelIndex index = indexOf(item); index.isValid(); index = index.parent()) {
        const QModelIndex count = index.siblingAtColumn(CountColumn);
        Q_EMIT dataChanged(count, count);
    }
}

QModelIndex NavigatorModel::index(int row, int column, const QModelIndex &parent) const
{
    if (row < 0 || column < 0 || column >= ColumnCount || row >= rowCount(parent))
        return {};
    const PIGroup *item =
        parent.isValid() ? pointerAt(parent)->folders().at(row).get() : m_library.groups().at(row).get();
    return createIndex(row, column, item);
}

QModelIndex NavigatorModel::parent(const QModelIndex &child) const
{
    const PIGroup *item = pointerAt(child);
    const PIFolder *folder = item ? item->asFolder() : nullptr;
    return folder ? indexOf(folder->parent().get()) : QModelIndex();
}

int NavigatorModel::rowCount(const QModelIndex &parent) const
{
    if (!parent.isValid())
        return static_cast<int>(m_library.groups().size());
    return parent.column() == NameColumn ? static_cast<int>(pointerAt(parent)->folders().size()) : 0;
}

int NavigatorModel::columnCount(const QModelIndex &) const
{
    return ColumnCount;
}

QVariant NavigatorModel::data(const QModelIndex &index, int role) const
{
    const PIGroup *item = pointerAt(index);
    if (!item)
        return {};
    return index.column() == NameColumn ? nameData(*item, role) : countData(*item, role);
}

bool NavigatorModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (role != Qt::EditRole || index.column() != NameColumn)
        return false;
    const auto item = itemAt(index);
    if (!item || !m_editor.rename(item, value.toString()))
        return false;
    Q_EMIT dataChanged(index, index);
    Q_EMIT renamed();
    return true;
}

Qt::ItemFlags NavigatorModel::flags(const QModelIndex &index) const
{
    const PIGroup *item = pointerAt(index);
    if (!item)
        return {};
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled;
    if (index.column() == NameColumn && LibraryEditor::canRename(*item))
        flags |= Qt::ItemIsEditable;
    return flags;
}

PIGroup *NavigatorModel::pointerAt(const QModelIndex &index)
{
    return index.isValid() ? static_cast<PIGroup *>(index.internalPointer()) : nullptr;
}
