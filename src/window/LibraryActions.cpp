#include "LibraryActions.h"

#include "Icons.h"

#include <QAction>
#include <QApplication>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTextEdit>

namespace {

QString toolTipWithShortcut(const CommandInfo &info)
{
    const QString text = QCoreApplication::translate("Command", info.toolTip);
    const QList<QKeySequence> shortcuts = info.shortcuts();
    if (shortcuts.isEmpty())
        return text;
    return QStringLiteral("%1 (%2)").arg(text, shortcuts.first().toString(QKeySequence::NativeText));
}

}

namespace {

/// In a text field the commands of the clipboard mean the text, also when they are chosen from the menu.
bool isTakenByTextField(Command command)
{
    static const QHash<Command, const char *> textSlots{
        {Command::Cut, "cut"}, {Command::Copy, "copy"}, {Command::Paste, "paste"}, {Command::SelectAll, "selectAll"}};
    QWidget *focus = QApplication::focusWidget();
    const char *slot = textSlots.value(command);
    const bool isText =
        qobject_cast<QLineEdit *>(focus) || qobject_cast<QPlainTextEdit *>(focus) || qobject_cast<QTextEdit *>(focus);
    return slot && isText && QMetaObject::invokeMethod(focus, slot);
}

}

LibraryActions::LibraryActions(QWidget &window)
    : QObject(&window)
{
    for (const CommandInfo &info : commandTable()) {
        auto *action = new QAction(QCoreApplication::translate("Command", info.text), this);
        action->setToolTip(toolTipWithShortcut(info));
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
        if (!isTakenByTextField(command))
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

void LibraryActions::addContextMenu(QWidget &widget, const QList<std::optional<Command>> &commands)
{
    widget.setContextMenuPolicy(Qt::ActionsContextMenu);
    for (const auto &command : commands) {
        if (command) {
            widget.addAction(action(*command));
        } else {
            auto *separator = new QAction(&widget);
            separator->setSeparator(true);
            widget.addAction(separator);
        }
    }
}
