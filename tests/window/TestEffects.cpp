#include "WindowDesk.h"

#include "EffectSetEdits.h"
#include "EffectSetsDialog.h"
#include "FakeAlerts.h"
#include "FilterCatalogue.h"
#include "FilterLibrary.h"
#include "LibraryNotifications.h"
#include "PIDetailController.h"
#include "PIEffectDialog.h"
#include "QVUndoManager.h"
#include "TestRunner.h"
#include "ThumbnailGridView.h"

#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>
#include <QSlider>
#include <QTest>
#include <QTimer>

namespace {

EffectChain chainOf(const char *filter)
{
    return {EffectEntry(QString::fromLatin1(filter))};
}

/// The window on a folder of two photos, both selected.
struct Gallery
{
    FilterLibrary filters;
    std::unique_ptr<WindowDesk> desk;
    PIGroup::PhotoList photos;

    Gallery()
    {
        installFilterBackEnd(&filters);
        desk = std::make_unique<WindowDesk>();
        const auto folder = desk->group()->lastFolder();
        for (const char *name : {"a.png", "b.png"})
            photos << std::make_shared<PIPhoto>(
                desk->library.fileRefs().fileRefForPath(desk->makePicture(QString::fromLatin1(name))));
        folder->photos() = photos;
        desk->controller->resetList(folder);
        desk->controller->selectIndexes(IndexSet::range(0, 2));
    }
    ~Gallery()
    {
        desk.reset();
        installFilterBackEnd(nullptr);
    }
    void save(const char *name, const EffectChain &chain) const
    {
        QCOMPARE(EffectSetEdits::save(desk->controller->editor(), QString::fromUtf8(name), chain),
                 EffectSetEdits::Outcome::Done);
    }
    QString effects() const
    {
        QStringList all;
        for (const auto &photo : photos)
            all << (photo->filterDicts().isEmpty() ? QString() : photo->filterDicts().first().filterName().mid(2));
        return all.join(u' ');
    }
    QStringList keys(Command command) const
    {
        return QStringList(QKeySequence::listToString(desk->controller->actions().action(command)->shortcuts()));
    }
};

}

/// Effects and effect sets in the library window.
class TestEffects : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theMenuListsTheSetsWithTheirKeys()
    {
        Gallery gallery;
        QMenu &menu = gallery.desk->controller->effectSetsMenu();
        QVERIFY(menu.isEmpty() && !menu.menuAction()->isEnabled());
        for (int i = 17; i > 0; --i)
            gallery.save(
                qPrintable(
                    QStringLiteral("%1 set & %2").arg(QLatin1Char(i % 2 ? 'a' : 'B')).arg(i, 2, 10, QLatin1Char('0'))),
                chainOf("CISepiaTone"));
        QCOMPARE(menu.actions().size(), 17);
        QCOMPARE(menu.actions().at(0)->text(), QStringLiteral("a set && 01"));
        QCOMPARE(menu.actions().at(9)->text(), QStringLiteral("B set && 02"));
        QCOMPARE(menu.actions().at(14)->shortcut(), QKeySequence(Qt::Key_F15));
        QVERIFY(menu.actions().at(15)->shortcut().isEmpty());
        QCOMPARE(gallery.keys(Command::FullScreen), QStringList{QStringLiteral("Ctrl+Shift+F")});
        for (int i = 0; i < 17; ++i)
            gallery.desk->trigger(Command::Undo);
        QVERIFY(menu.isEmpty());
        QCOMPARE(gallery.keys(Command::FullScreen), QStringList{QStringLiteral("F11; Ctrl+Shift+F")});
    }

    void aSetIsAppliedByItsKey()
    {
        Gallery gallery;
        gallery.save("one", chainOf("CISepiaTone"));
        gallery.save("two", chainOf("CIColorInvert"));
        LibraryWindow &window = gallery.desk->controller->window();
        window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        gallery.desk->controller->thumbnailView().setFocus();
        QTest::keyClick(&window, Qt::Key_F2);
        QCOMPARE(gallery.effects(), QStringLiteral("ColorInvert ColorInvert"));
        QTest::keyClick(&window, Qt::Key_F1);
        QCOMPARE(gallery.effects(), QStringLiteral("SepiaTone SepiaTone"));
        gallery.desk->trigger(Command::Undo);
        QCOMPARE(gallery.effects(), QStringLiteral("ColorInvert ColorInvert"));
        gallery.desk->trigger(Command::ClearEffects);
        QCOMPARE(gallery.effects(), QStringLiteral(" "));

        // In the navigator the key renames all the same.
        gallery.desk->outline().setFocus();
        QTest::keyClick(&gallery.desk->outline(), Qt::Key_F2);
        QVERIFY(gallery.desk->outline().findChild<QLineEdit *>());
        QCOMPARE(gallery.effects(), QStringLiteral(" "));

        gallery.desk->controller->selectIndexes({});
        QVERIFY(!gallery.desk->controller->effectSetsMenu().actions().first()->isEnabled());
    }

    void theCurrentPhotosEffectsBecomeASet()
    {
        Gallery gallery;
        FakeAlerts alerts;
        QVERIFY(!gallery.desk->controller->actions().action(Command::SaveEffectSet)->isEnabled());
        gallery.save("sepia", chainOf("CISepiaTone"));
        gallery.desk->controller->selectIndexes(IndexSet::single(0));
        gallery.desk->controller->effectSetsMenu().actions().first()->trigger();
        QVERIFY(gallery.desk->controller->actions().action(Command::SaveEffectSet)->isEnabled());
        gallery.desk->trigger(Command::ClearEffects);
        QVERIFY(!gallery.desk->controller->actions().action(Command::SaveEffectSet)->isEnabled());
        gallery.desk->trigger(Command::Undo);
        const auto saveAs = [&](const char *name) {
            QTimer::singleShot(0, [&] {
                auto *dialog = QApplication::activeModalWidget();
                dialog->findChild<QComboBox *>()->setEditText(QString::fromUtf8(name));
                for (auto *button : dialog->findChildren<QPushButton *>()) {
                    if (button->text().remove(u'&') == u"Save")
                        button->click();
                }
            });
            gallery.desk->trigger(Command::SaveEffectSet);
        };
        saveAs(" Old\tphoto ");
        QCOMPARE(gallery.desk->library.effectSets().keys(),
                 (QStringList{QStringLiteral("Old photo"), QStringLiteral("sepia")}));
        gallery.photos.first()->setFilterDicts(chainOf("CIColorInvert"));
        saveAs("Old photo"); // asks, and the answer is yes
        QCOMPARE(alerts.said, QStringList{QStringLiteral("Replace the effect set?")});
        QVERIFY(gallery.desk->library.effectSets().first() == chainOf("CIColorInvert"));
    }

    void setsAreRenamedAndDeletedInTheirDialog()
    {
        Gallery gallery;
        FakeAlerts alerts;
        for (const char *name : {"a", "b", "c"})
            gallery.save(name, chainOf("CISepiaTone"));
        const FilterCatalogue catalogue(filterBackEnd());
        EffectSetsDialog dialog(gallery.desk->controller->editor(), catalogue, nullptr);
        dialog.show();
        auto &list = *dialog.findChild<QListWidget *>();
        const auto names = [&] { return QStringList(gallery.desk->library.effectSets().keys()).join(u' '); };
        list.item(1)->setText(QStringLiteral("d"));
        QCOMPARE(names(), QStringLiteral("a c d"));
        QTRY_COMPARE(list.currentItem()->text(), QStringLiteral("d"));
        list.currentItem()->setText(QStringLiteral("c"));
        QCOMPARE(alerts.said.size(), 1);
        QTRY_COMPARE(list.currentItem()->text(), QStringLiteral("d"));
        for (auto *button : dialog.findChildren<QPushButton *>()) {
            if (button->text() == u"&Delete")
                button->click();
        }
        QCOMPARE(names(), QStringLiteral("a c"));
        gallery.desk->trigger(Command::Undo);
        QCOMPARE(names(), QStringLiteral("a c d"));
    }

    void movingTheSlidersOfTheDetailPaneIsOneStep()
    {
        Gallery gallery;
        PIPhoto &photo = *gallery.photos.first();
        photo.setFilterDicts(chainOf("CISepiaTone"));
        gallery.desk->controller->selectIndexes(IndexSet::single(0));
        const QWidget &pane = *gallery.desk->controller->detailController().view();
        QTRY_VERIFY(pane.findChild<QSlider *>());
        const auto move = [&](int value) { pane.findChild<QSlider *>()->setValue(value); };
        const auto intensity = [&] {
            const EffectValue *value = photo.filterDicts().first().value(QStringLiteral("inputIntensity"));
            return value ? std::get<double>(*value) : -1;
        };
        QVUndoManager &undo = gallery.desk->controller->undoManager();
        const auto before = undo.entries().size();
        for (const int value : {100, 200, 300})
            move(value);
        QCOMPARE(intensity(), 0.3);
        QCOMPARE(undo.entries().size(), before + 1);
        photo.setCaption(QStringLiteral("something else"));
        QVERIFY(undo.setUndoAction(UndoAction::Photo, UndoName::Caption,
                                   {.container = {}, .photo = gallery.photos.first()}));
        move(400);
        QCOMPARE(undo.entries().size(), before + 3);
        undo.undo();
        QCOMPARE(intensity(), 0.3);
        QTRY_COMPARE(pane.findChild<QSlider *>()->value(), 300);
        move(500);
        undo.undo();
        QCOMPARE(intensity(), 0.3);
        move(600);
        const auto onFirst = undo.entries().size();
        gallery.photos.last()->setFilterDicts(chainOf("CISepiaTone"));
        gallery.desk->controller->selectIndexes(IndexSet::single(1));
        move(700);
        QCOMPARE(undo.entries().size(), onFirst + 1);
        undo.undo();
        QVERIFY(gallery.photos.last()->filterDicts() == chainOf("CISepiaTone"));
        QCOMPARE(intensity(), 0.6);
    }

    void theDialogOpensOnTheCurrentPhoto()
    {
        Gallery gallery;
        gallery.desk->trigger(Command::EditEffects);
        auto *dialog = gallery.desk->controller->window().findChild<PIEffectDialog *>();
        QVERIFY(dialog && dialog->isVisible());
        dialog->reject();
        gallery.desk->controller->selectIndexes({});
        QVERIFY(!gallery.desk->controller->actions().action(Command::EditEffects)->isEnabled());
    }
};

REGISTER_TEST(TestEffects)
#include "TestEffects.moc"
