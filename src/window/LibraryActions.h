#pragma once

#include "CommandTable.h"

#include <QHash>
#include <QObject>
#include <QPointer>

#include <functional>
#include <optional>

class QAction;
class QWidget;

/// One QAction per command, made from the command table; menus, toolbars and context menus share them.
class LibraryActions final : public QObject
{
    Q_OBJECT

public:
    /// The actions' shortcuts work in `window`.
    explicit LibraryActions(QWidget &window);

    [[nodiscard]] QAction *action(Command command) const { return m_actions.value(command); }
    /// What triggering the command does; for a checkable one it gets the new state.
    void bind(Command command, std::function<void(bool checked)> perform);
    void setEnabled(Command command, bool enabled);
    void setChecked(Command command, bool checked);
    /// Keys that stand for something else from now on: commands do without them as long as they are lent.
    void lendKeys(const QList<QKeySequence> &keys);
    /// Gives the widget a context menu of these commands; nothing stands for a separator.
    void addContextMenu(QWidget &widget, const QList<std::optional<Command>> &commands);
    /// The widget whose context menu is open: its commands mean what it shows. Null when there is none.
    [[nodiscard]] const QWidget *contextMenuWidget() const { return m_contextMenuWidget; }

Q_SIGNALS:
    /// What commands mean may be something else from now on.
    void contextChanged();

private:
    void showContextMenu(QWidget &widget, const QList<std::optional<Command>> &commands, QPoint position);
    void setContextMenuWidget(QWidget *widget);

    QPointer<QWidget> m_contextMenuWidget;
    QHash<Command, QAction *> m_actions;
};
