#include "AboutBox.h"

#include "PIAppController.h"

#include <QCoreApplication>
#include <QMessageBox>

void showAboutBox(QWidget &parent)
{
    QMessageBox::about(&parent, QCoreApplication::translate("AboutBox", "About Tamsel Photo"),
                       QStringLiteral("<h3>%1 %2</h3><p>%3</p>")
                           .arg(QCoreApplication::applicationName(), QCoreApplication::applicationVersion(),
                                PIAppController::aboutString()));
}
