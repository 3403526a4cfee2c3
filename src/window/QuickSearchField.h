#pragma once

#include <QLineEdit>

class QActionGroup;
class QMenu;

/// A line in which to type what to find, with a menu at its front of how the words are meant.
class QuickSearchField final : public QLineEdit
{
    Q_OBJECT

public:
    explicit QuickSearchField(QWidget *parent = nullptr);

    /// How the text is meant. The numbers are stored; any other counts as Exact.
    enum class Option { AllWords = 0, Exact = 1, OneWord = 2, NoneWords = 3 };
    /// Marks it in the menu.
    void showOption(Option option);
    /// Tells that nothing was found, until the text is edited.
    void showNothingFound(bool isNothingFound);

Q_SIGNALS:
    void optionChosen(Option option);
    /// Return was pressed.
    void searchWanted();
    /// Escape was pressed in the empty field.
    void leaveWanted();
    /// The focus is elsewhere now, but for a menu.
    void left();

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    void popUpMenu();

    QMenu *m_menu;
    QActionGroup *m_options;
};
