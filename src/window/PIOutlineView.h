#pragma once

#include <QTreeView>

#include <memory>

class NavigatorModel;
class PIGroup;

/// The navigator: groups as section rows, folders beneath them. What is open and closed is kept in the library.
class PIOutlineView final : public QTreeView
{
    Q_OBJECT

public:
    explicit PIOutlineView(NavigatorModel &model, QWidget *parent = nullptr);

    [[nodiscard]] std::shared_ptr<PIGroup> selectedItem() const;
    /// Rebuilds the rows, opens and closes them as the library says, and selects and centres `item` when given.
    void resetList(const std::shared_ptr<PIGroup> &item);
    void selectAndCenter(const std::shared_ptr<PIGroup> &item);
    /// Starts editing the item's name.
    void editName(const std::shared_ptr<PIGroup> &item);

Q_SIGNALS:
    /// The selected row is another one, or the rows were rebuilt.
    void selectedItemChanged();

protected:
    void selectionChanged(const QItemSelection &selected, const QItemSelection &deselected) override;

private:
    void applyClosedFlags(const QModelIndex &parent);
    void noteClosed(const QModelIndex &index, bool closed);

    NavigatorModel &m_model;
    bool m_rebuilding = false;
};
