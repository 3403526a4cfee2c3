#include "PrintInfo.h"
#include "PrintPreview.h"
#include "PrintSettings.h"
#include "PrintSheet.h"
#include "TestRunner.h"
#include "WindowDesk.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPrintDialog>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <QTimer>
#include <QToolButton>

namespace {

template<typename T>
T *shown()
{
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        auto *found = qobject_cast<T *>(widget);
        if (found && found->isVisible())
            return found;
    }
    return nullptr;
}

/// Waits for a dialog that a command opens and does something with it; closes it if that takes it wrong.
template<typename T>
void whenShown(QObject &context, const std::function<void(T &)> &act)
{
    auto *timer = new QTimer(&context);
    QObject::connect(timer, &QTimer::timeout, &context, [timer, act] {
        if (auto *dialog = shown<T>()) {
            timer->stop();
            act(*dialog);
        }
    });
    timer->start(10);
}

}

/// Printing from the library window.
class TestPrintCommands : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { g_printInfo = printInfoFromArchive({}); }
    void cleanup()
    {
        g_printInfo = {};
        g_printLayout = 0;
    }

    void aFolderIsPrintedAsItsPreviewShows()
    {
        WindowDesk desk;
        FakeAlerts alerts;
        const auto folder = desk.group()->lastFolder();
        for (const char *name : {"a.png", "b.png", "c.png", "d.png", "e.png"})
            folder->photos() << std::make_shared<PIPhoto>(
                desk.library.fileRefs().fileRefForPath(desk.makePicture(QString::fromUtf8(name))));
        desk.controller->resetList(folder);
        const QString path = desk.dir.filePath(QStringLiteral("out.pdf"));
        QStringList positions;
        QColor middle;
        QObject context;
        whenShown<PrintSheet>(context, [&](PrintSheet &sheet) {
            const auto position = [&] {
                for (const auto *label : sheet.findChildren<QLabel *>()) {
                    if (label->text().startsWith(QLatin1String("Page ")) && label->text().contains(QLatin1String("of")))
                        positions << label->text();
                }
            };
            position();
            for (auto *choice : sheet.findChildren<QRadioButton *>()) {
                if (choice->text() == u"2 per page")
                    choice->click();
            }
            position();
            for (auto *button : sheet.findChildren<QToolButton *>()) {
                if (button->toolTip() == u"Next page")
                    button->click();
            }
            position();
            auto &preview = *sheet.findChild<PrintPreview *>();
            const QPoint upperPhoto(preview.width() / 2, preview.height() / 4);
            [&] { QTRY_COMPARE(preview.grab().toImage().pixelColor(upperPhoto), QColor(Qt::red)); }();
            middle = preview.grab().toImage().pixelColor(upperPhoto);
            whenShown<QPrintDialog>(context, [&](QPrintDialog &dialog) {
                dialog.findChild<QLineEdit *>(QStringLiteral("filename"))->setText(path);
                dialog.accept();
                if (dialog.isVisible())
                    dialog.reject();
            });
            for (auto *button : sheet.findChildren<QPushButton *>()) {
                if (button->isDefault())
                    button->click();
            }
            if (sheet.isVisible())
                sheet.reject();
        });
        desk.trigger(Command::PrintFolder);
        QCOMPARE(positions.join(u'|'), QStringLiteral("Page 1 of 5|Page 1 of 3|Page 2 of 3"));
        QCOMPARE(middle, QColor(Qt::red));
        QTRY_VERIFY(QFile::exists(path));
        QVERIFY(alerts.said.isEmpty());
    }

    void nothingIsPrintedWithoutPhotos()
    {
        WindowDesk desk;
        FakeAlerts alerts;
        QObject context;
        whenShown<QDialog>(context, [](QDialog &dialog) { dialog.reject(); });
        desk.trigger(Command::PrintFolder);
        desk.trigger(Command::PrintSelected);
        QVERIFY(!shown<QDialog>());
    }
};

REGISTER_TEST(TestPrintCommands)
#include "TestPrintCommands.moc"
