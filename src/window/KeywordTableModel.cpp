#include "KeywordTableModel.h"

#include "KeywordCounts.h"
#include "KeywordManager.h"
#include "KeywordText.h"
#include "PlainText.h"

#include <QLocale>

KeywordTableModel::KeywordTableModel(KeywordManager &manager, const KeywordCounts &counts, QObject *parent)
    : QAbstractTableModel(parent)
    , m_manager(manager)
    , m_counts(counts)
{}

int KeywordTableModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_manager.rows().size());
}

int KeywordTableModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant KeywordTableModel::text(const QModelIndex &index) const
{
    const KeywordManager::Row &row = m_manager.rows().at(index.row());
    if (index.column() == Keyword)
        return row.key;
    const auto photos = m_counts.photosWith(row.index);
    return photos ? QLocale().toString(*photos) : QString();
}

QVariant KeywordTableModel::data(const QModelIndex &index, int role) const
{
    const KeywordManager::Row &row = m_manager.rows().at(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return text(index);
    case Qt::EditRole:
        return row.key;
    case Qt::ToolTipRole:
        return index.column() == Keyword ? plainText(row.key) : QVariant();
    case Qt::AccessibleTextRole:
        return index.column() == Keyword && row.isToBeDeleted ? tr("%1, to be deleted").arg(row.key) : text(index);
    case Qt::TextAlignmentRole:
        return index.column() == Photos ? QVariant(Qt::AlignRight | Qt::AlignVCenter) : QVariant();
    case ToBeDeletedRole:
        return row.isToBeDeleted;
    case ChangedRole:
        return row.isToBeDeleted || row.isRenamed;
    default:
        return {};
    }
}

QVariant KeywordTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal)
        return {};
    if (role == Qt::TextAlignmentRole && section == Photos)
        return QVariant(Qt::AlignRight | Qt::AlignVCenter);
    if (role != Qt::DisplayRole)
        return {};
    return section == Keyword ? tr("Keyword") : tr("Photos");
}

Qt::ItemFlags KeywordTableModel::flags(const QModelIndex &index) const
{
    const Qt::ItemFlags flags = QAbstractTableModel::flags(index) | Qt::ItemNeverHasChildren;
    return index.column() == Keyword ? flags | Qt::ItemIsEditable : flags;
}

bool KeywordTableModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (role != Qt::EditRole || index.column() != Keyword)
        return false;
    const QString text = value.toString();
    const QString keyword = KeywordText::asOneKeyword(text.trimmed());
    if (text != m_manager.rows().at(index.row()).key && (text.isEmpty() || !keyword.isEmpty()))
        m_manager.setKey(index.row(), keyword);
    rowChanged(index.row());
    return true;
}

void KeywordTableModel::rowChanged(int row)
{
    Q_EMIT dataChanged(index(row, Keyword), index(row, Photos));
}

void KeywordTableModel::toggleDeleted(int row)
{
    m_manager.toggleDeleted(row);
    rowChanged(row);
}

void KeywordTableModel::takeUpNewKeywords()
{
    while (const auto place = m_manager.placeOfNewKeyword()) {
        beginInsertRows({}, static_cast<int>(*place), static_cast<int>(*place));
        m_manager.insertNewKeyword(*place);
        endInsertRows();
    }
}

void KeywordTableModel::countsChanged()
{
    Q_EMIT dataChanged(index(0, Photos), index(rowCount() - 1, Photos), {Qt::DisplayRole});
}
