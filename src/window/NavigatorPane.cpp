#include "NavigatorPane.h"

#include "LibraryActions.h"
#include "PIOutlineView.h"

#include <QBoxLayout>
#include <QToolButton>

namespace {

QToolButton *makeButton(LibraryActions &actions, Command command, QWidget *parent)
{
    auto *button = new QToolButton(parent);
    button->setDefaultAction(actions.action(command));
    button->setAutoRaise(true);
    button->setAccessibleName(actions.action(command)->text());
    return button;
}

}

NavigatorPane::NavigatorPane(PIOutlineView &outline, LibraryActions &actions, QWidget *parent)
    : QWidget(parent)
{
    auto *folderNavigator = new QHBoxLayout;
    folderNavigator->setContentsMargins(4, 4, 4, 4);
    folderNavigator->addStretch();
    folderNavigator->addWidget(makeButton(actions, Command::Back, this));
    folderNavigator->addWidget(makeButton(actions, Command::Forward, this));
    folderNavigator->addStretch();

    auto *buttons = new QHBoxLayout;
    buttons->setContentsMargins(4, 2, 4, 2);
    for (const Command command : {Command::NewFolder, Command::NewGroup})
        buttons->addWidget(makeButton(actions, command, this));
    buttons->addStretch();

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(folderNavigator);
    layout->addWidget(&outline, 1);
    layout->addLayout(buttons);
}
