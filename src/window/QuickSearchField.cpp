#include "QuickSearchField.h"

#include "FindCriteria.h"
#include "Icons.h"

#include <QAction>
#include <QActionGroup>
#include <QKeyEvent>
#include <QMenu>

QuickSearchField::QuickSearchField(QWidget *parent)
    : QLineEdit(parent)
    , m_menu(new QMenu(this))
    , m_options(new QActionGroup(this))
{
    setObjectName(QStringLiteral("QuickSearch"));
    setPlaceholderText(tr("Quick search"));
    setAccessibleName(tr("Quick search"));
    setToolTip(
        tr("Finds photos by their captions, file names and keywords as you type. Return goes to the photo found"));
    setClearButtonEnabled(true);
    setMaxLength(FindCriteria::kLongestText);
    const auto add = [this](Option option, const QString &text) {
        QAction *action = m_menu->addAction(text);
        action->setCheckable(true);
        action->setData(static_cast<int>(option));
        m_options->addAction(action);
    };
    add(Option::AllWords, tr("All of the Words"));
    add(Option::Exact, tr("The Exact Text"));
    add(Option::OneWord, tr("One of the Words"));
    add(Option::NoneWords, tr("None of the Words"));
    connect(m_options, &QActionGroup::triggered, this,
            [this](const QAction *action) { Q_EMIT optionChosen(static_cast<Option>(action->data().toInt())); });
    QAction *front = addAction(themedIcon(QLatin1String("edit-find")), LeadingPosition);
    front->setToolTip(tr("How the words are meant"));
    connect(front, &QAction::triggered, this, &QuickSearchField::popUpMenu);
    connect(this, &QLineEdit::textEdited, this, [this] { showNothingFound(false); });
}

void QuickSearchField::showOption(Option option)
{
    for (QAction *action : m_options->actions())
        action->setChecked(action->data().toInt() == static_cast<int>(option));
}

void QuickSearchField::showNothingFound(bool isNothingFound)
{
    QPalette colors;
    const bool isDark = palette().color(QPalette::Base).lightness() < 128;
    if (isNothingFound)
        colors.setColor(QPalette::Text, isDark ? QColor(255, 140, 130) : QColor(176, 20, 20));
    setPalette(colors);
    setAccessibleDescription(isNothingFound ? tr("Nothing found") : QString());
}

void QuickSearchField::popUpMenu()
{
    m_menu->popup(mapToGlobal(QPoint(0, height())));
}

namespace {

bool opensMenu(const QKeyEvent &event)
{
    return event.key() == Qt::Key_Down && event.modifiers().testFlag(Qt::AltModifier);
}

}

/// A command of the window would have the key of the menu.
bool QuickSearchField::event(QEvent *event)
{
    if (event->type() == QEvent::ShortcutOverride && opensMenu(*static_cast<QKeyEvent *>(event))) {
        event->accept();
        return true;
    }
    return QLineEdit::event(event);
}

void QuickSearchField::keyPressEvent(QKeyEvent *event)
{
    const bool isEscape = event->key() == Qt::Key_Escape;
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        Q_EMIT searchWanted();
    else if (opensMenu(*event))
        popUpMenu();
    else if (isEscape && text().isEmpty())
        Q_EMIT leaveWanted();
    else if (isEscape)
        clear();
    else
        QLineEdit::keyPressEvent(event);
}

void QuickSearchField::focusOutEvent(QFocusEvent *event)
{
    QLineEdit::focusOutEvent(event);
    if (event->reason() != Qt::PopupFocusReason)
        Q_EMIT left();
}
