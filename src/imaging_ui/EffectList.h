#pragma once

#include "EffectChain.h"

#include <QTreeWidget>

class FilterCatalogue;
class UserDefaults;

/// The effects of a photo and, by category, all that there are. Which categories are open is a preference.
class EffectList final : public QTreeWidget
{
    Q_OBJECT

public:
    /// Both outlive it.
    EffectList(const FilterCatalogue &catalogue, UserDefaults &defaults, QWidget *parent = nullptr);

    /// Lists the chain under the applied effects; `tried`, which may be empty, is shown as the one on trial. The
    /// selection stays where it is, as far as that row is still there.
    void showChain(const EffectChain &chain, const QString &tried);
    void expandApplied();
    /// Selects the filter among the applied effects; none when it is not among them.
    void selectApplied(const QString &filterName);
    /// Of the selected row; empty when none is.
    [[nodiscard]] QString selectedFilter() const;
    /// Selects the first of the filters on offer that is shown; the list gets the focus.
    void selectFirstFound();
    /// Shows only those of the filters on offer whose name has the text in it.
    void find(const QString &text);

protected:
    [[nodiscard]] QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex &index,
                                                                       const QEvent *event) const override;

private:
    void addCategory(const QString &key, const QString &title, const QStringList &filters);
    [[nodiscard]] QTreeWidgetItem *filterItem(const QString &filterName) const;
    void markTrial(const QString &tried);
    void recordOpen(const QTreeWidgetItem &category, bool open);

    const FilterCatalogue &m_catalogue;
    UserDefaults &m_defaults;
    QTreeWidgetItem *m_applied = nullptr;
    bool m_isFinding = false; ///< what is opened to show what was found is not the user's choice
};
