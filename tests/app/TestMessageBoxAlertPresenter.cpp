#include "TestRunner.h"

#include "MessageBoxAlertPresenter.h"

#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QMainWindow>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTextDocumentFragment>
#include <QTimer>

class TestMessageBoxAlertPresenter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anAlertOutlivesTheDialogItCameOver()
    {
        QMainWindow window;
        window.show();
        auto *dialog = new QDialog(&window);
        dialog->show();
        dialog->activateWindow();
        QTRY_COMPARE(QApplication::activeWindow(), dialog);

        QStringList texts;
        QTimer::singleShot(0, dialog, [&] {
            auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            QVERIFY(box);
            delete dialog;
            texts << box->text() << QTextDocumentFragment::fromHtml(box->informativeText()).toPlainText();
            box->findChildren<QPushButton *>().first()->click();
        });
        const QString name = QStringLiteral("I can't find \"<img src=x>.jpg\".");
        const QString title = QStringLiteral("<b>Title</b>");
        QCOMPARE(MessageBoxAlertPresenter().present({title, name, {QStringLiteral("OK")}}), 0);
        QCOMPARE(texts, QStringList({title, name}));
    }
};

REGISTER_TEST(TestMessageBoxAlertPresenter)
#include "TestMessageBoxAlertPresenter.moc"
