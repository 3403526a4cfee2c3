#include "LibraryActions.h"

#include "Icons.h"

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QTextEdit>

namespace {

QString toolTipWithShortcut(const CommandInfo &info, const QList<QKeySequence> &shortcuts)
{
    const QString text = QCoreApplication::translate("Command", info.toolTip);
    if (shortcuts.isEmpty())
        return text;
    return QStringLiteral("%1 (%2)").arg(text, shortcuts.first().toString(QKeySequence::NativeText));
}

QWidget *focusedTextField()
{
    QWidget *focus = QApplication::focusWidget();
    const bool isText =
        qobject_cast<QLineEdit *>(focus) || qobject_cast<QPlainTextEdit *>(focus) || qobject_cast<QTextEdit *>(focus);
    return isText ? focus : nullptr;
}

/// In a text field the commands of the clipboard mean the text, also when they are chosen from the menu.
bool isTakenByTextField(Command command)
{
    static const QHash<Command, const char *> textSlots{
        {Command::Cut, "cut"}, {Command::Copy, "copy"}, {Command::Paste, "paste"}, {Command::SelectAll, "selectAll"}};
    QWidget *field = focusedTextField();
    const char *slot = textSlots.value(command);
    return slot && field && QMetaObject::invokeMethod(field, slot);
}

/// Commands find what was typed taken. Leaving a field is what takes it.
void endTextEditing()
{
    const QPointer<QWidget> field = focusedTextField();
    if (!field)
        return;
    QWidget *viewport = field->parentWidget();
    auto *view = viewport ? qobject_cast<QAbstractItemView *>(viewport->parentWidget()) : nullptr;
    field->clearFocus();
    if (view) // whose editor it was
        view->setFocus();
    else if (field && field->isVisible())
        field->setFocus();
}

}

LibraryActions::LibraryActions(QWidget &window)
    : QObject(&window)
{
    for (const CommandInfo &info : commandTable()) {
        auto *action = new QAction(QCoreApplication::translate("Command", info.text), this);
        action->setToolTip(toolTipWithShortcut(info, info.shortcuts()));
        action->setStatusTip(QCoreApplication::translate("Command", info.toolTip));
        action->setShortcuts(info.shortcuts());
        action->setCheckable(info.checkable);
        if (*info.iconName)
            action->setIcon(themedIcon(QLatin1String(info.iconName)));
        window.addAction(action);
        m_actions.insert(info.command, action);
    }
}

void LibraryActions::bind(Command command, std::function<void(bool)> perform)
{
    connect(action(command), &QAction::triggered, this, [command, perform = std::move(perform)](bool checked) {
        if (isTakenByTextField(command))
            return;
        endTextEditing();
        perform(checked);
    });
}

void LibraryActions::setEnabled(Command command, bool enabled)
{
    action(command)->setEnabled(enabled);
}

void LibraryActions::setChecked(Command command, bool checked)
{
    action(command)->setChecked(checked);
}

void LibraryActions::lendKeys(const QList<QKeySequence> &keys)
{
    for (const CommandInfo &info : commandTable()) {
        QList<QKeySequence> own = info.shortcuts();
        own.removeIf([&](const QKeySequence &key) { return keys.contains(key); });
        QAction *command = action(info.command);
        command->setShortcuts(own);
        command->setToolTip(toolTipWithShortcut(info, own));
    }
}

void LibraryActions::addContextMenu(QWidget &widget, const QList<std::optional<Command>> &commands)
{
    widget.setContextMenuPolicy(Qt::CustomContextMenu);
    connect(&widget, &QWidget::customContextMenuRequested, this, [this, &widget, commands](const QPoint &position) {
        const auto *area = qobject_cast<QAbstractScrollArea *>(&widget);
        showContextMenu(widget, commands, (area ? area->viewport() : &widget)->mapToGlobal(position));
    });
}

void LibraryActions::showContextMenu(QWidget &widget, const QList<std::optional<Command>> &commands, QPoint position)
{
    QMenu menu(&widget);
    for (const auto &command : commands) {
        if (command)
            menu.addAction(action(*command));
        else
            menu.addSeparator();
    }
    setContextMenuWidget(&widget);
    menu.exec(position); // the chosen command is performed before it returns
    setContextMenuWidget(nullptr);
}

void LibraryActions::setContextMenuWidget(QWidget *widget)
{
    m_contextMenuWidget = widget;
    Q_EMIT contextChanged();
}
