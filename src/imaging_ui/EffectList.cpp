#include "EffectList.h"

#include "FilterCatalogue.h"
#include "UserDefaults.h"

#include <QHeaderView>
#include <QSignalBlocker>

namespace {

const QString kOpenKey = QStringLiteral("hmphoto.filterCatOpen");
const QString kAppliedKey = QStringLiteral("PIPhotoFilters");
const QString kStandardKey = QStringLiteral("PIStandardFilters");

constexpr int kFilterRole = Qt::UserRole;  ///< of a filter's row: its name
constexpr int kKeyRole = Qt::UserRole + 1; ///< of a category's row: its key in the preference

}

EffectList::EffectList(const FilterCatalogue &catalogue, UserDefaults &defaults, QWidget *parent)
    : QTreeWidget(parent)
    , m_catalogue(catalogue)
    , m_defaults(defaults)
{
    setHeaderHidden(true);
    setColumnCount(1);
    setUniformRowHeights(true);
    setSelectionMode(SingleSelection);
    setAccessibleName(tr("Effects"));
    addCategory(kAppliedKey, tr("Applied Effects"), {});
    m_applied = topLevelItem(0);
    for (const FilterCatalogue::Category &category : catalogue.categories()) {
        if (!category.filters.isEmpty())
            addCategory(category.name.isEmpty() ? kStandardKey : category.name, category.displayName, category.filters);
    }
    const QVariantMap open = m_defaults.dictionary(kOpenKey);
    for (int i = 0; i < topLevelItemCount(); ++i) {
        QTreeWidgetItem *category = topLevelItem(i);
        category->setExpanded(category == m_applied ||
                              open.value(category->data(0, kKeyRole).toString(), true).toBool());
    }
    connect(this, &QTreeWidget::itemExpanded, this, [this](auto *category) { recordOpen(*category, true); });
    connect(this, &QTreeWidget::itemCollapsed, this, [this](auto *category) { recordOpen(*category, false); });
}

void EffectList::addCategory(const QString &key, const QString &title, const QStringList &filters)
{
    auto *category = new QTreeWidgetItem(this, {title});
    category->setData(0, kKeyRole, key);
    category->setFlags(Qt::ItemIsEnabled);
    QFont bold = font();
    bold.setBold(true);
    category->setFont(0, bold);
    for (const QString &filter : filters)
        category->addChild(filterItem(filter));
}

QTreeWidgetItem *EffectList::filterItem(const QString &filterName) const
{
    const FilterAttributes *filter = m_catalogue.description(filterName);
    auto *item = new QTreeWidgetItem({m_catalogue.displayName(filterName)});
    item->setData(0, kFilterRole, filterName);
    if (filter)
        item->setToolTip(0, filter->description);
    return item;
}

void EffectList::showChain(const EffectChain &chain, const QString &tried)
{
    const QString selected = selectedFilter();
    const bool wasApplied = currentItem() && currentItem()->parent() == m_applied;
    const QSignalBlocker silent(this);
    qDeleteAll(m_applied->takeChildren());
    for (const EffectEntry &entry : chain)
        m_applied->addChild(filterItem(entry.filterName()));
    if (wasApplied)
        selectApplied(selected);
    markTrial(tried);
}

void EffectList::expandApplied()
{
    m_applied->setExpanded(true);
}

void EffectList::selectApplied(const QString &filterName)
{
    for (int i = m_applied->childCount() - 1; i >= 0; --i) {
        if (m_applied->child(i)->data(0, kFilterRole).toString() == filterName)
            return setCurrentItem(m_applied->child(i));
    }
    setCurrentItem(nullptr);
}

QString EffectList::selectedFilter() const
{
    const QList<QTreeWidgetItem *> selected = selectedItems();
    return selected.isEmpty() ? QString() : selected.first()->data(0, kFilterRole).toString();
}

void EffectList::markTrial(const QString &tried)
{
    for (QTreeWidgetItemIterator item(this); *item; ++item) {
        if (!(*item)->parent())
            continue;
        const bool isTried = !tried.isEmpty() && (*item)->data(0, kFilterRole).toString() == tried;
        (*item)->setForeground(0, isTried ? palette().brush(QPalette::PlaceholderText) : QBrush());
    }
}

void EffectList::recordOpen(const QTreeWidgetItem &category, bool open)
{
    if (m_isFinding)
        return;
    QVariantMap states = m_defaults.dictionary(kOpenKey);
    states.insert(category.data(0, kKeyRole).toString(), open);
    m_defaults.setDictionary(kOpenKey, states);
}

void EffectList::find(const QString &text)
{
    m_isFinding = true;
    const QVariantMap open = m_defaults.dictionary(kOpenKey);
    for (int i = indexOfTopLevelItem(m_applied) + 1; i < topLevelItemCount(); ++i) {
        QTreeWidgetItem *category = topLevelItem(i);
        int found = 0;
        for (int k = 0; k < category->childCount(); ++k) {
            const bool isFound = category->child(k)->text(0).contains(text, Qt::CaseInsensitive);
            category->child(k)->setHidden(!isFound);
            found += isFound ? 1 : 0;
        }
        category->setHidden(found == 0);
        category->setExpanded(!text.isEmpty() || open.value(category->data(0, kKeyRole).toString(), true).toBool());
    }
    m_isFinding = false;
}

void EffectList::selectFirstFound()
{
    setFocus();
    for (int i = indexOfTopLevelItem(m_applied) + 1; i < topLevelItemCount(); ++i) {
        QTreeWidgetItem *category = topLevelItem(i);
        for (int k = 0; k < category->childCount(); ++k) {
            if (!category->isHidden() && !category->child(k)->isHidden()) {
                setCurrentItem(category->child(k));
                return;
            }
        }
    }
}

/// What is being tried stays when a heading, or nothing, is clicked.
QItemSelectionModel::SelectionFlags EffectList::selectionCommand(const QModelIndex &index, const QEvent *event) const
{
    if (!index.isValid() || !index.parent().isValid())
        return QItemSelectionModel::NoUpdate;
    return QTreeWidget::selectionCommand(index, event);
}
