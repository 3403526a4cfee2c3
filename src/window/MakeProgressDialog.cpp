#include "MakeProgressDialog.h"

#include <QProgressDialog>

namespace {

constexpr int kProgressDelayMilliseconds = 500;

}

std::unique_ptr<QProgressDialog> makeProgressDialog(const QString &title, const QString &text, QWidget &window)
{
    auto dialog = std::make_unique<QProgressDialog>(&window);
    dialog->setWindowTitle(title);
    dialog->setLabelText(text);
    dialog->setMinimumDuration(kProgressDelayMilliseconds);
    dialog->setAutoClose(false);
    dialog->setAutoReset(false);
    dialog->setRange(0, 0);
    dialog->setValue(0);
    return dialog;
}
