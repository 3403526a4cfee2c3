#include "AccessibleGrid.h"

#include "ThumbnailGridView.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QHash>
#include <QPointer>

namespace {

/// The photo in one row, whichever that is.
class PhotoInterface final : public QAccessibleInterface
{
public:
    PhotoInterface(ThumbnailGridView *view, int row)
        : m_view(view)
        , m_row(row)
    {}

    [[nodiscard]] int row() const { return m_row; }
    [[nodiscard]] bool isValid() const override { return m_view && m_row < m_view->model()->rowCount(); }
    [[nodiscard]] QObject *object() const override { return nullptr; }
    [[nodiscard]] QWindow *window() const override { return parent() ? parent()->window() : nullptr; }
    [[nodiscard]] QAccessibleInterface *childAt(int, int) const override { return nullptr; }
    [[nodiscard]] QAccessibleInterface *parent() const override
    {
        return QAccessible::queryAccessibleInterface(m_view);
    }
    [[nodiscard]] QAccessibleInterface *child(int) const override { return nullptr; }
    [[nodiscard]] int childCount() const override { return 0; }
    [[nodiscard]] int indexOfChild(const QAccessibleInterface *) const override { return -1; }
    void setText(QAccessible::Text, const QString &) override {}
    [[nodiscard]] QAccessible::Role role() const override { return QAccessible::ListItem; }

    [[nodiscard]] QString text(QAccessible::Text kind) const override
    {
        return isValid() && kind == QAccessible::Name ? index().data(Qt::AccessibleTextRole).toString() : QString();
    }

    [[nodiscard]] QRect rect() const override
    {
        if (!isValid())
            return {};
        const QRect tile = m_view->visualRect(index());
        return {m_view->viewport()->mapToGlobal(tile.topLeft()), tile.size()};
    }

    [[nodiscard]] QAccessible::State state() const override
    {
        QAccessible::State state;
        state.invalid = !isValid();
        if (state.invalid)
            return state;
        state.selectable = true;
        state.focusable = true;
        state.selected = m_view->selectedPositions().contains(m_row);
        state.focused = m_view->hasFocus() && m_view->currentIndex().row() == m_row;
        state.offscreen = !m_view->viewport()->rect().intersects(m_view->visualRect(index()));
        return state;
    }

private:
    [[nodiscard]] QModelIndex index() const { return m_view->model()->index(m_row, 0); }

    QPointer<ThumbnailGridView> m_view;
    int m_row;
};

class GridInterface final : public QAccessibleWidget
{
public:
    explicit GridInterface(ThumbnailGridView *view)
        : QAccessibleWidget(view, QAccessible::List)
    {}
    GridInterface(const GridInterface &) = delete;
    GridInterface &operator=(const GridInterface &) = delete;
    ~GridInterface() override
    {
        for (const QAccessible::Id id : std::as_const(m_photos))
            QAccessible::deleteAccessibleInterface(id);
    }

    [[nodiscard]] int childCount() const override { return view()->model()->rowCount(); }

    [[nodiscard]] QAccessibleInterface *child(int row) const override
    {
        if (row < 0 || row >= childCount())
            return nullptr;
        const auto known = m_photos.constFind(row);
        if (known != m_photos.constEnd())
            return QAccessible::accessibleInterface(*known);
        auto *made = new PhotoInterface(view(), row);
        m_photos.insert(row, QAccessible::registerAccessibleInterface(made));
        return made;
    }

    [[nodiscard]] int indexOfChild(const QAccessibleInterface *child) const override
    {
        const auto *photo = dynamic_cast<const PhotoInterface *>(child);
        return photo ? photo->row() : -1;
    }

    [[nodiscard]] QAccessibleInterface *childAt(int x, int y) const override
    {
        return child(view()->indexAt(view()->viewport()->mapFromGlobal(QPoint(x, y))).row());
    }

    [[nodiscard]] QAccessibleInterface *focusChild() const override
    {
        return view()->hasFocus() ? child(view()->currentIndex().row()) : nullptr;
    }

    [[nodiscard]] QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.multiSelectable = true;
        state.extSelectable = true;
        return state;
    }

private:
    [[nodiscard]] ThumbnailGridView *view() const { return static_cast<ThumbnailGridView *>(object()); }

    mutable QHash<int, QAccessible::Id> m_photos; // by row
};

QAccessibleInterface *makeInterface(const QString &, QObject *object)
{
    auto *view = qobject_cast<ThumbnailGridView *>(object);
    return view ? new GridInterface(view) : nullptr;
}

void announce(ThumbnailGridView &view, QAccessible::Event kind)
{
    QAccessibleInterface *list = QAccessible::queryAccessibleInterface(&view);
    QAccessibleInterface *photo = list ? list->child(view.currentIndex().row()) : nullptr;
    if (!photo)
        return;
    QAccessibleEvent event(photo, kind);
    QAccessible::updateAccessibility(&event);
}

}

void AccessibleGrid::install()
{
    QAccessible::installFactory(makeInterface);
}

void AccessibleGrid::announceFocus(ThumbnailGridView &view)
{
    if (QAccessible::isActive() && view.hasFocus() && view.currentIndex().isValid())
        announce(view, QAccessible::Focus);
}

void AccessibleGrid::announceSelection(ThumbnailGridView &view)
{
    if (!QAccessible::isActive() || !view.currentIndex().isValid())
        return;
    if (view.selectedPositions().contains(view.currentIndex().row()))
        announce(view, QAccessible::SelectionAdd);
    else
        announce(view, QAccessible::SelectionRemove);
}
