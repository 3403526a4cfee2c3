#include "TestRunner.h"
#include "WindowDesk.h"

#include "FileDates.h"
#include "FileSystemCalls.h"
#include "PIDateSeriesDialog.h"
#include "PIFolder.h"
#include "PIRenameDialog.h"
#include "SeriesCommands.h"
#include "StringUtilities.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QProgressDialog>
#include <QPushButton>
#include <QRadioButton>
#include <QSemaphore>
#include <QSpinBox>
#include <QTest>
#include <QTimer>
#include <QTreeView>

#include <atomic>

namespace {

const FileSystemCalls realCalls = fileSystemCalls();
QSemaphore g_turns;
std::atomic<int> g_waiting = 0;

/// A disk that answers when it is told to.
int renameWhenTold(const char *from, const char *to)
{
    ++g_waiting;
    g_turns.acquire();
    return realCalls.renameNoReplace(from, to);
}

/// A window that shows photos of real files, all of them selected.
struct SeriesDesk : WindowDesk
{
    FakeAlerts alerts;
    std::shared_ptr<PIFolder> folder = group()->folders().first();

    explicit SeriesDesk(const char *names)
    {
        for (const QString &name : QString::fromUtf8(names).split(u' '))
            folder->photos() << std::make_shared<PIPhoto>(library.fileRefs().fileRefForPath(makePicture(name)));
        controller->resetList(folder);
        selectAll();
        controller->window().activateWindow();
    }
    void selectAll() const { controller->selectIndexes(IndexSet::range(0, folder->photos().size())); }
    [[nodiscard]] QString names() const
    {
        QStringList names;
        for (const auto &photo : std::as_const(folder->photos()))
            names << QVString::lastPathComponent(photo->fileRef()->path());
        return names.join(u' ');
    }
    [[nodiscard]] bool isBusy() const { return controller->window().findChild<SeriesCommands *>()->isBusy(); }
    template<typename Dialog>
    [[nodiscard]] Dialog *sheet() const
    {
        return controller->window().findChild<Dialog *>();
    }
    /// The sheet that the command brings up, with the focus in it.
    template<typename Dialog>
    Dialog *open(Command command) const
    {
        trigger(command);
        auto *dialog = sheet<Dialog>();
        const auto isReady = [&] { return dialog && dialog->isActiveWindow() && dialog->focusWidget(); };
        return QTest::qWaitFor(isReady) ? dialog : nullptr;
    }
};

/// The field of that accessible name.
template<typename Field>
Field *field(const QDialog &dialog, const char *name)
{
    for (auto *found : dialog.findChildren<Field *>())
        if (found->accessibleName() == QString::fromUtf8(name))
            return found;
    return nullptr;
}

QPushButton *defaultButton(const QDialog &dialog)
{
    for (auto *button : dialog.findChildren<QPushButton *>())
        if (button->isDefault())
            return button;
    return nullptr;
}

/// "now > new (note)" for each row.
QString rows(const QDialog &dialog)
{
    const QAbstractItemModel &model = *dialog.findChild<QTreeView *>()->model();
    QStringList lines;
    for (int row = 0; row < model.rowCount(); ++row) {
        QStringList texts;
        for (int column = 0; column < 3; ++column)
            texts << model.index(row, column).data().toString();
        lines << texts[0] + QStringLiteral(" > ") + texts[1] +
                     (texts[2].isEmpty() ? QString() : QStringLiteral(" (%1)").arg(texts[2]));
    }
    return lines.join(QStringLiteral(", "));
}

bool shows(const QDialog &dialog, const QString &text)
{
    const auto labels = dialog.findChildren<QLabel *>();
    return std::any_of(labels.begin(), labels.end(), [&](const QLabel *label) { return label->text() == text; });
}

/// Types over what stands in the field with the focus.
void type(const QDialog &dialog, const char *text)
{
    QWidget *focus = dialog.focusWidget();
    QTest::keyClick(focus, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(focus, QString::fromUtf8(text));
}

}

/// Sheets that rename and date many files.
class TestSeriesCommands : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup()
    {
        fileSystemCalls() = realCalls;
        g_turns.acquire(g_turns.available());
    }

    void filesAreRenamedFromTheKeyboard_data()
    {
        QTest::addColumn<Qt::Key>("style"); ///< with the Alt key
        QTest::addColumn<QByteArray>("typed");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("names");
        const auto row = [](const char *name, Qt::Key style, const char *typed, const char *shown, const char *names) {
            QTest::newRow(name) << style << QByteArray(typed) << QString::fromUtf8(shown) << QString::fromUtf8(names);
        };
        row("prefix", Qt::Key_P, "X_1",
            "IMG_0012.png > IMG_0012.png (Keeps its name), X_1.png > .png (Not a file name)", "IMG_0012.png X_1.png");
        row("another prefix", Qt::Key_P, "X",
            "IMG_0012.png > IMG_0012.png (Keeps its name), X_1.png > \ufffd_1.png (Another sidecar has that name)",
            "IMG_0012.png \u202e_1.png");
        row("numbers", Qt::Key_N, "7", "IMG_0012.png > IMG_0101.png, X_1.png > X_0102.png", "IMG_0101.png X_0102.png");
        row("extension", Qt::Key_E, ".PnG",
            "IMG_0012.png > IMG_0012.png (Keeps its name), X_1.png > X_1.png (Keeps its name)", "IMG_0012.png X_1.png");
        row("new names", Qt::Key_M, "a b", "IMG_0012.png > a b0001.png, X_1.png > a b0002.png (With its sidecar)",
            "a b0001.png a b0002.png");
    }
    void filesAreRenamedFromTheKeyboard()
    {
        QFETCH(Qt::Key, style);
        QFETCH(QByteArray, typed);
        QFETCH(QString, shown);
        QFETCH(QString, names);
        SeriesDesk desk("IMG_0012.png X_1.png");
        desk.makePicture(QStringLiteral("IMG_0100.png"));
        desk.defaults.setValue(Preference<const char *>{"hmphoto.rd.new", ""},
                               typed == "X" ? QString(QChar(0x202e)) : QString());
        QVERIFY(QFile(desk.dir.filePath(QChar(0x202e) + QStringLiteral("_1.xmp"))).open(QFile::WriteOnly));
        if (style == Qt::Key_M)
            QVERIFY(QFile(desk.dir.filePath(QStringLiteral("X_1.png.xmp"))).open(QFile::WriteOnly));
        auto *dialog = desk.open<PIRenameDialog>(Command::RenameFiles);
        QVERIFY(dialog);
        QCOMPARE(field<QLineEdit>(*dialog, "Old prefix")->text(), QStringLiteral("IMG"));
        QTest::keyClick(dialog, Qt::Key(style), Qt::AltModifier);
        QTRY_VERIFY(!qobject_cast<QRadioButton *>(dialog->focusWidget()));
        type(*dialog, typed.constData());
        QTRY_COMPARE(rows(*dialog), shown);
        QTest::keyClick(dialog->focusWidget(), Qt::Key_Return);
        QTRY_VERIFY(!desk.sheet<PIRenameDialog>());
        QTRY_VERIFY(!desk.isBusy());
        QCOMPARE(desk.names(), names);
        QCOMPARE(desk.alerts.said, shown.contains(QStringLiteral("Not a file name"))
                                       ? QStringList(QStringLiteral("Rename failed."))
                                       : QStringList());
        QCOMPARE(desk.defaults.value(Preference<int>{"hmphoto.rd.style", -1}),
                 QList({Qt::Key_P, Qt::Key_N, Qt::Key_E, Qt::Key_M}).indexOf(style));
        QCOMPARE(desk.defaults.contains(QStringLiteral("hmphoto.rd.prefix")), style == Qt::Key_M);
    }

    void fieldsBelongToTheirStyle_data()
    {
        QTest::addColumn<int>("style"); ///< as it was used last
        QTest::addColumn<QStringList>("enabled");
        QTest::addColumn<QString>("needed"); ///< must be filled before files can be renamed
        const QString prefix = QStringLiteral("Old prefix");
        const QString extension = QStringLiteral("Extension");
        QTest::newRow("prefix") << 0 << QStringList{prefix, QStringLiteral("New prefix")} << prefix;
        QTest::newRow("numbers") << 1 << QStringList{QStringLiteral("First number")} << QString();
        QTest::newRow("extension") << 2 << QStringList{extension} << extension;
        QTest::newRow("new names") << 3
                                   << QStringList{QStringLiteral("Prefix of new names"),
                                                  QStringLiteral("Number of the first new name")}
                                   << QString();
        QTest::newRow("one that is not known") << 17 << QStringList{prefix, QStringLiteral("New prefix")} << prefix;
    }
    void fieldsBelongToTheirStyle()
    {
        QFETCH(int, style);
        QFETCH(QStringList, enabled);
        QFETCH(QString, needed);
        SeriesDesk desk("IMG_0012.png");
        desk.defaults.setValue(Preference<int>{"hmphoto.rd.style", 0}, style);
        auto *dialog = desk.open<PIRenameDialog>(Command::RenameFiles);
        QVERIFY(dialog);
        QStringList found;
        for (const char *name : {"Old prefix", "New prefix", "First number", "Extension", "Prefix of new names",
                                 "Number of the first new name"})
            if (field<QWidget>(*dialog, name)->isEnabled())
                found << QString::fromUtf8(name);
        QCOMPARE(found, enabled);
        QCOMPARE(dialog->focusWidget()->accessibleName(), enabled.first());
        QCOMPARE(field<QLineEdit>(*dialog, "Extension")->text(), QStringLiteral("jpg"));
        QVERIFY(defaultButton(*dialog)->isEnabled());
        if (!needed.isEmpty()) {
            auto *line = field<QLineEdit>(*dialog, needed.toUtf8().constData());
            line->clear();
            QVERIFY(!defaultButton(*dialog)->isEnabled());
            line->setText(QStringLiteral("  "));
            QVERIFY(defaultButton(*dialog)->isEnabled());
        }
        QTest::keyClick(dialog, Qt::Key_Escape);
        QTRY_VERIFY(!desk.sheet<PIRenameDialog>());
        QCOMPARE(desk.names(), QStringLiteral("IMG_0012.png"));
        QCOMPARE(desk.defaults.value(Preference<int>{"hmphoto.rd.style", 0}), style);
    }

    void clashesAreShownAndEndTheRun()
    {
        SeriesDesk desk("a.png b.bmp b.png c.png");
        desk.defaults.setValue(Preference<int>{"hmphoto.rd.style", 0}, 2);
        auto *dialog = desk.open<PIRenameDialog>(Command::RenameFiles);
        QVERIFY(dialog);
        QTRY_COMPARE(rows(*dialog),
                     QStringLiteral("a.png > a.jpg, b.bmp > b.jpg, b.png > b.jpg (Name is taken), c.png > c.jpg"));
        const auto *table = dialog->findChild<QTreeView *>();
        QVERIFY(!table->model()->index(2, 2).data(Qt::DecorationRole).isNull());
        QVERIFY(
            shows(*dialog, QStringLiteral("2 files will be renamed. It ends at “b.png”, which cannot be renamed.")));
        defaultButton(*dialog)->click();
        QTRY_COMPARE(desk.alerts.said, QStringList(QStringLiteral("Rename failed.")));
        QCOMPARE(desk.alerts.messages.first(),
                 QStringLiteral("I can't rename \"%1/b.png\" to \"%1/b.jpg\". File exists").arg(desk.dir.path()));
        QCOMPARE(desk.names(), QStringLiteral("a.jpg b.jpg b.png c.png"));
    }

    void whatIsShownIsDone()
    {
        SeriesDesk desk("a.png b.png c.png");
        desk.defaults.setValue(Preference<int>{"hmphoto.rd.style", 0}, 3);
        desk.defaults.setValue(Preference<const char *>{"hmphoto.rd.prefix", ""}, QStringLiteral("n"));
        auto *dialog = desk.open<PIRenameDialog>(Command::RenameFiles);
        QVERIFY(dialog);
        QTRY_COMPARE(rows(*dialog), QStringLiteral("a.png > n0001.png, b.png > n0002.png, c.png > n0003.png"));
        const auto lost = desk.folder->photos().at(1);
        QVERIFY(QFile::remove(lost->fileRef()->path()));
        lost->fileRef()->setFileLost(true);
        desk.library.filesChangedPlace({lost->fileRef().get()});
        QTRY_COMPARE(rows(*dialog), QStringLiteral("a.png > n0001.png, c.png > n0002.png"));
        desk.makePicture(QStringLiteral("n0008.png")); // too late for these numbers
        defaultButton(*dialog)->click();
        QTRY_VERIFY(!desk.isBusy() && !desk.sheet<PIRenameDialog>());
        QCOMPARE(desk.names(), QStringLiteral("n0001.png b.png n0002.png"));
        // Pressed at once, it waits for the names.
        dialog = desk.open<PIRenameDialog>(Command::RenameFiles);
        QVERIFY(dialog);
        type(*dialog, "x");
        QTest::keyClick(dialog->focusWidget(), Qt::Key_Return);
        QTRY_VERIFY(!desk.sheet<PIRenameDialog>());
        QTRY_COMPARE(desk.names(), QStringLiteral("x0001.png b.png x0002.png"));
        QVERIFY(desk.alerts.said.isEmpty());
    }

    void aRunCanBeStopped_data()
    {
        QTest::addColumn<bool>("closes");
        QTest::newRow("with the Cancel button") << false;
        QTest::newRow("by closing the window") << true;
    }
    /// The file that the disk is busy with is renamed still.
    void aRunCanBeStopped()
    {
        QFETCH(bool, closes);
        SeriesDesk desk("p1.png p2.png p3.png");
        desk.defaults.setValue(Preference<const char *>{"hmphoto.rd.new", ""}, QStringLiteral("q"));
        auto *dialog = desk.open<PIRenameDialog>(Command::RenameFiles);
        QVERIFY(dialog);
        g_waiting = 0;
        fileSystemCalls().renameNoReplace = renameWhenTold;
        const QSemaphoreReleaser atEnd(g_turns, 10);
        defaultButton(*dialog)->click();
        QTRY_COMPARE(g_waiting, 1);
        desk.trigger(Command::RenameFiles);
        QCOMPARE(desk.alerts.said, QStringList(QStringLiteral("Files are still being changed.")));
        g_turns.release();
        auto *progress = desk.sheet<QProgressDialog>();
        QVERIFY(progress);
        QTRY_COMPARE(progress->labelText(), QStringLiteral("One file renamed, of 3"));
        QCOMPARE(progress->findChild<QProgressBar *>()->value(), 1);
        QTRY_COMPARE(g_waiting, 2);
        QTimer::singleShot(0, [] { g_turns.release(2); });
        if (closes)
            QVERIFY(desk.controller->windowShouldClose());
        else
            progress->findChild<QPushButton *>()->click();
        QTRY_VERIFY(!desk.isBusy());
        QCOMPARE(desk.names(), QStringLiteral("q1.png q2.png p3.png"));
        if (closes)
            QVERIFY(desk.alerts.said.contains(QStringLiteral("Stop changing files?")));
        QCOMPARE(desk.alerts.messages.contains(QStringLiteral("Stopped. 2 files renamed.")), !closes);
    }

    void newNamesBeginWhereTheyAreTold()
    {
        SeriesDesk desk("a.png");
        desk.defaults.setValue(Preference<int>{"hmphoto.rd.style", 0}, 3);
        desk.defaults.setValue(Preference<const char *>{"hmphoto.rd.prefix", ""}, QStringLiteral("n"));
        auto *dialog = desk.open<PIRenameDialog>(Command::RenameFiles);
        QVERIFY(dialog);
        QTRY_COMPARE(rows(*dialog), QStringLiteral("a.png > n0001.png"));
        field<QSpinBox>(*dialog, "Number of the first new name")->setFocus();
        type(*dialog, "12345");
        QTRY_COMPARE(rows(*dialog), QStringLiteral("a.png > n12345.png"));
        defaultButton(*dialog)->click();
        QTRY_COMPARE(desk.names(), QStringLiteral("n12345.png"));
        QCOMPARE(desk.defaults.value(Preference<int>{"hmphoto.rd.complete", 0}), 1);
    }

    void nothingIsRenamedWhereAllIsLost()
    {
        SeriesDesk desk("a.png b.png");
        for (const auto &photo : std::as_const(desk.folder->photos()))
            photo->fileRef()->setFileLost(true);
        desk.trigger(Command::RenameFiles);
        QCOMPARE(desk.alerts.beeps, 1);
        QVERIFY(!desk.sheet<PIRenameDialog>());
        const auto isEnabled = [&](Command command) { return desk.controller->actions().action(command)->isEnabled(); };
        QVERIFY(isEnabled(Command::IncrementDate));
        desk.controller->selectIndexes(IndexSet::single(1));
        QVERIFY(isEnabled(Command::RenameFiles) && !isEnabled(Command::IncrementDate));
        desk.controller->selectIndexes({});
        QVERIFY(!isEnabled(Command::RenameFiles));
    }

    void datesAreShownBeforeTheyAreSet()
    {
        SeriesDesk desk("a.png b.png c.png");
        const auto path = [&](int photo) { return desk.folder->photos().at(photo)->fileRef()->path(); };
        const qint64 base = QDateTime(QDate(2020, 2, 28), QTime(13, 30)).toSecsSinceEpoch();
        QVERIFY(FileDates::setDate(path(0), base));
        auto *dialog = desk.open<PIDateSeriesDialog>(Command::IncrementDate);
        QVERIFY(dialog);
        QCOMPARE(dialog->increment(), 1);
        QCOMPARE(dialog->focusWidget()->accessibleName(), QStringLiteral("Step"));
        type(*dialog, "-2");
        QTest::keyClick(dialog->focusWidget(), Qt::Key_Tab);
        QTest::keyClicks(dialog->focusWidget(), QStringLiteral("d"));
        QTRY_VERIFY(shows(*dialog, QStringLiteral("28 Feb 2020 13:30:00 — a.png")));
        QVERIFY(shows(*dialog, QStringLiteral("24 Feb 2020 13:30:00 — c.png")));
        QVERIFY(shows(*dialog, QStringLiteral("2 files will get other dates")));
        QTest::keyClick(dialog->focusWidget(), Qt::Key_Return);
        QTRY_COMPARE(FileDates::dateOf(path(2)), base - 4 * 86400);
        QCOMPARE(FileDates::dateOf(path(1)), base - 2 * 86400);
        QCOMPARE(FileDates::dateOf(path(0)), base);
        QTRY_COMPARE(desk.folder->photos().at(2)->fileRef()->creationTime(), double(base - 4 * 86400));
        QCOMPARE(desk.defaults.value(Preference<int>{"hmphoto.dsd.what", -1}), 3);
        QCOMPARE(desk.defaults.value(Preference<int>{"hmphoto.dsd.howMuch", 7}), -2);
    }

    void aDateSeriesNeedsADateToBeginWith()
    {
        SeriesDesk desk("a.png b.png");
        desk.defaults.setValue(Preference<int>{"hmphoto.dsd.howMuch", 7}, 0);
        desk.folder->photos().first()->fileRef()->setFileLost(true);
        auto *dialog = desk.open<PIDateSeriesDialog>(Command::IncrementDate);
        QVERIFY(dialog);
        QTRY_VERIFY(shows(*dialog, QStringLiteral("The date of the first photo's file can't be read.")));
        QVERIFY(!defaultButton(*dialog)->isEnabled());
        QCOMPARE(dialog->increment(), 1);
    }
};

REGISTER_TEST(TestSeriesCommands)
#include "TestSeriesCommands.moc"
