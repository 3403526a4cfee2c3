#include "StepControl.h"

#include <QAction>
#include <QBoxLayout>
#include <QToolButton>

StepControl::StepControl(QAction &previous, QAction &next, QWidget *parent)
    : QWidget(parent)
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    const auto addButton = [&](QAction &command, Qt::ArrowType arrow) {
        auto *button = new QToolButton(this);
        button->setArrowType(arrow);
        button->setToolTip(command.toolTip());
        button->setAccessibleName(command.text());
        button->setFocusPolicy(Qt::NoFocus); // who types keywords goes on typing them
        connect(button, &QToolButton::clicked, &command, &QAction::trigger);
        layout->addWidget(button);
    };
    addButton(previous, Qt::LeftArrow);
    addButton(next, Qt::RightArrow);
}
