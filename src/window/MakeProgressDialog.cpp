#include "MakeProgressDialog.h"

#include <QProgressDialog>

namespace {

constexpr int kProgressDelayMilliseconds = 500;

}

void ProgressDialogEnd::operator()(QProgressDialog *dialog) const
{
    dialog->hide();
    dialog->reset(); // else one that was to show itself soon still does so, over the alert that tells what failed
    dialog->deleteLater();
}

ProgressDialogPointer makeProgressDialog(const QString &title, const QString &text, QWidget &window)
{
    ProgressDialogPointer dialog(new QProgressDialog(&window));
    dialog->setWindowTitle(title);
    dialog->setLabelText(text);
    dialog->setMinimumDuration(kProgressDelayMilliseconds);
    dialog->setAutoClose(false);
    dialog->setAutoReset(false);
    dialog->setRange(0, 0);
    dialog->setValue(0);
    return dialog;
}
