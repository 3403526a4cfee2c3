#pragma once

#include "NavigatorDrop.h"

#include <QTreeView>

#include <memory>
#include <optional>

class NavigatorModel;
class PIGroup;
class QLineEdit;

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
    /// Takes the name that is being edited as it stands.
    void commitEditing();
    /// Starts editing the item's name.
    void editName(const std::shared_ptr<PIGroup> &item);
    /// Ends editing; the item keeps the name it had.
    void abortEditing();

Q_SIGNALS:
    /// The selected row is another one, or the rows were rebuilt.
    void selectedItemChanged();
    /// Something that DragData knows was dropped at a place that takes it. The signal's receiver takes it at once.
    void dropped(const QDropEvent &event, const NavigatorDrop &place);

protected:
    bool event(QEvent *event) override;
    void selectionChanged(const QItemSelection &selected, const QItemSelection &deselected) override;
    void paintEvent(QPaintEvent *event) override;
    void startDrag(Qt::DropActions supportedActions) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    [[nodiscard]] QLineEdit *openEditor() const;
    void applyClosedFlags(const QModelIndex &parent);
    void noteClosed(const QModelIndex &index, bool closed);
    [[nodiscard]] NavigatorDrop placeFor(const QDropEvent &event) const;
    void setDropPlace(const std::optional<NavigatorDrop> &place);
    [[nodiscard]] QRect dropMark() const;

    NavigatorModel &m_model;
    std::optional<NavigatorDrop> m_dropPlace; ///< under the drag
    bool m_rebuilding = false;
};
