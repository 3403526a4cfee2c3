#include "MessageBoxAlertPresenter.h"

#include "PlainText.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>

namespace {

/// The window that stays: a dialog over it may end while the alert is up, and would take the alert along.
QWidget *lastingWindow()
{
    QWidget *window = QApplication::activeWindow();
    while (window && window->parentWidget())
        window = window->parentWidget()->window();
    return window;
}

}

int MessageBoxAlertPresenter::present(const Alert &alert)
{
    QMessageBox box(lastingWindow());
    box.setIcon(QMessageBox::Warning);
    box.setWindowTitle(QApplication::applicationDisplayName());
    box.setTextFormat(Qt::PlainText);
    box.setText(alert.title.isEmpty() ? alert.message : alert.title);
    if (!alert.title.isEmpty())
        box.setInformativeText(plainText(alert.message)); // the format is for the first text alone

    QList<QAbstractButton *> buttons;
    for (const QString &text : alert.buttons)
        buttons << box.addButton(text, buttons.isEmpty() ? QMessageBox::AcceptRole : QMessageBox::RejectRole);
    const int escape = alert.escapeButton >= 0 ? alert.escapeButton : static_cast<int>(buttons.size()) - 1;
    if (escape >= 0 && escape < buttons.size())
        box.setEscapeButton(buttons[escape]);
    if (alert.hiddenButton >= 0 && alert.hiddenButton < buttons.size())
        buttons[alert.hiddenButton]->hide();
    if (!buttons.isEmpty())
        box.setDefaultButton(qobject_cast<QPushButton *>(buttons.first()));

    box.exec();
    const int pressed = static_cast<int>(buttons.indexOf(box.clickedButton()));
    return pressed >= 0 ? pressed : escape;
}

void MessageBoxAlertPresenter::beep()
{
    QApplication::beep();
}
