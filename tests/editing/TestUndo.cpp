#include "TestRunner.h"

#include "LibraryNotifications.h"
#include "UndoHouse.h"

#include <QTest>

class TestUndo : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nothingIsRecordedWhileAnEntryIsExchanged()
    {
        UndoHouse house;
        house.view.resetList(house.a);
        QVERIFY(house.undoable.rename(house.a, QStringLiteral("A2")));
        bool refused = false;
        house.view.selected = [&](const IndexSet &) { // as a view that takes what is being typed
            refused = !house.undoable.rename(house.b, QStringLiteral("B2"));
        };
        house.manager.undo();
        QVERIFY(refused);
        QCOMPARE(house.a->name(), QStringLiteral("A"));
        house.view.selected = {};
        house.manager.redo();
        QCOMPARE(house.a->name(), QStringLiteral("A2"));
    }

    void changesOfOneThingInARowAreOneStep_data()
    {
        QTest::addColumn<int>("action");
        QTest::addColumn<int>("name");
        QTest::addColumn<bool>("sameThing");
        QTest::addColumn<QString>("between");
        QTest::addColumn<int>("steps");
        const auto row = [](const char *tag, UndoAction action, UndoName name, bool same, const char *between,
                            int steps) {
            QTest::newRow(tag) << int(action) << int(name) << same << QString::fromLatin1(between) << steps;
        };
        row("one caption", UndoAction::Photo, UndoName::Caption, true, "", 1);
        row("one crop", UndoAction::Photo, UndoName::Crop, true, "", 1);
        row("one photo's keywords", UndoAction::Photo, UndoName::Keywords, true, "", 1);
        row("captions of two photos", UndoAction::Photo, UndoName::Caption, false, "", 2);
        row("effects", UndoAction::Photo, UndoName::Effects, true, "", 2);
        row("marks", UndoAction::Photo, UndoName::Mark, true, "", 2);
        row("names of a folder", UndoAction::SingleContainer, UndoName::RenameFolder, true, "", 1);
        row("names of two folders", UndoAction::SingleContainer, UndoName::RenameFolder, false, "", 2);
        row("keywords of a folder's photos", UndoAction::PhotoList, UndoName::Keywords, true, "", 2);
        row("a new step asked for", UndoAction::Photo, UndoName::Caption, true, "suppress", 2);
        row("undone and redone between", UndoAction::Photo, UndoName::Caption, true, "redo", 2);
        row("saved between", UndoAction::Photo, UndoName::Caption, true, "save", 1);
        row("something withdrawn between", UndoAction::Photo, UndoName::Caption, true, "withdraw", 1);
    }
    void changesOfOneThingInARowAreOneStep()
    {
        QFETCH(int, action);
        QFETCH(int, name);
        QFETCH(bool, sameThing);
        QFETCH(QString, between);
        UndoHouse house;
        house.a->photos() = house.photos({QStringLiteral("1"), QStringLiteral("2")});
        house.view.resetList(house.a);
        const auto record = [&](bool first) {
            const auto &container = first ? house.a : house.b;
            const auto &photo = house.a->photos().at(first ? 0 : 1);
            return house.record(UndoAction(action), UndoName(name), container, photo);
        };
        QVERIFY(record(true));
        if (between == QLatin1String("suppress"))
            house.manager.suppressCoalescing();
        if (between == QLatin1String("redo")) {
            house.manager.undo();
            house.manager.redo();
        }
        if (between == QLatin1String("save"))
            house.manager.clearUndo();
        if (between == QLatin1String("withdraw")) {
            QVERIFY(house.record(UndoAction::GroupList, UndoName::Crop));
            house.manager.popUndo();
        }
        QVERIFY(record(sameThing));
        QTEST(int(house.manager.entries().size()), "steps");
    }

    void theRingKeepsFiftySteps()
    {
        UndoHouse house;
        for (int i = 0; i < 51; ++i) {
            house.manager.suppressCoalescing();
            QVERIFY(house.undoable.rename(house.a, QString::number(i)));
        }
        int steps = 0;
        for (; house.manager.isUndoAvailable(); ++steps)
            house.manager.undo();
        QCOMPARE(steps, 50);
        QCOMPARE(house.a->name(), QStringLiteral("0"));
        house.manager.undo();
        QCOMPARE(house.beeps, 1);
    }

    void menusTellWhatWouldBeUndone()
    {
        UndoHouse house;
        house.a->photos() = house.photos({QStringLiteral("1")});
        house.view.resetList(house.a);
        house.view.selection = IndexSet::single(0);
        const auto titles = [&] {
            const auto undo = house.manager.validateState(UndoDirection::Undo);
            const auto redo = house.manager.validateState(UndoDirection::Redo);
            return QStringList{undo.title + (undo.enabled ? u'+' : u'-'), redo.title + (redo.enabled ? u'+' : u'-')};
        };
        QCOMPARE(titles(), QStringList({QStringLiteral("Undo-"), QStringLiteral("Redo-")}));
        QVERIFY(house.photoEdits.toggleMark()); // deliberately under this name
        QCOMPARE(titles(), QStringList({QStringLiteral("Undo Sort Folder+"), QStringLiteral("Redo-")}));
        QVERIFY(house.undoable.rename(house.a, QStringLiteral("Z")));
        house.manager.undo();
        QCOMPARE(titles(), QStringList({QStringLiteral("Undo Sort Folder+"), QStringLiteral("Redo Rename Folder+")}));
        QVERIFY(house.undoable.newGroup());
        QCOMPARE(titles(), QStringList({QStringLiteral("Undo Add Group+"), QStringLiteral("Redo-")}));
    }

    void undoShowsWhatWasShownThen()
    {
        UndoHouse house;
        house.a->photos() = house.photos({QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3")});
        house.view.resetList(house.a);
        house.view.selection = IndexSet::range(1, 2);
        std::shared_ptr<PIPhoto> announced;
        const auto observer = house.notifications.observe(kSelectNotification, [&](const NotificationObject &object) {
            announced = object.as<PIPhoto>() ? object.as<PIPhoto>()->shared_from_this() : nullptr;
        });
        QVERIFY(house.tree.moveFolder(house.b, house.a, -1));
        house.view.resetList(house.b);
        house.view.selection.clear();
        house.manager.undo();
        QCOMPARE(house.view.folder, house.a);
        QCOMPARE(house.view.selection.archive(), QStringLiteral("1-2"));
        QCOMPARE(announced, house.a->photos().at(1));

        const auto photo = house.a->photos().first();
        QVERIFY(house.record(UndoAction::Photo, UndoName::Caption, nullptr, photo));
        photo->setCaption(QStringLiteral("new"));
        house.view.resetList(house.b);
        house.manager.undo();
        QCOMPARE(photo->caption(), QStringLiteral("1"));
        QCOMPARE(house.view.folder, house.a);
        QCOMPARE(house.view.selection.archive(), QStringLiteral("0"));
    }

    void onlyPicturesThatChangeBackAreMadeAgain()
    {
        UndoHouse house;
        house.a->photos() = house.photos({QStringLiteral("1"), QStringLiteral("2")});
        const auto &photos = house.a->photos();
        for (const auto &photo : photos)
            photo->setThumbnailDate(7);
        QVERIFY(house.record(UndoAction::PhotoList, UndoName::Effects, house.a));
        photos.at(0)->setFilterDicts({EffectEntry(QStringLiteral("Sepia"))});
        photos.at(1)->setMarked(true);
        house.manager.undo();
        QVERIFY(photos.at(0)->filterDicts().isEmpty());
        QCOMPARE(photos.at(0)->thumbnailDate(), quint64(0));
        QCOMPARE(photos.at(1)->thumbnailDate(), quint64(7));
    }

    void whatCannotBeExchangedEndsTheHistory()
    {
        UndoHouse house;
        QVERIFY(house.undoable.newGroup());
        QVERIFY(house.undoable.rename(house.a, QStringLiteral("Z")));
        house.group->folders().removeOne(house.a); // behind the manager's back
        house.manager.undo();
        QVERIFY(!house.manager.isUndoAvailable());
        QVERIFY(!house.manager.isRedoAvailable());

        QVERIFY(house.undoable.newGroup());
        QVERIFY(!house.record(UndoAction::PhotoList, UndoName::Paste)); // of no folder
        QVERIFY(!house.manager.isUndoAvailable());
        house.manager.setDelegate(nullptr);
        QVERIFY(!house.undoable.newGroup());
    }

    void whatUndoDoesNotTakeBackIsStillToBeSaved()
    {
        UndoHouse house;
        QVERIFY(house.undoable.newGroup());
        QVERIFY(house.library.isDirty());
        house.manager.undo();
        QVERIFY(!house.library.isDirty());
        house.manager.redo();
        house.library.setDirtyForGood(); // as when a file is renamed
        house.manager.undo();
        QVERIFY(house.library.isDirty());
    }

    void aRunOfChangesIsRecordedOnce()
    {
        UndoHouse house;
        const auto run = house.manager.newUndoID();
        QVERIFY(house.manager.setUndoID(run, UndoAction::GroupList, UndoName::Crop));
        QVERIFY(house.manager.setUndoID(run, UndoAction::GroupList, UndoName::Crop));
        QVERIFY(house.manager.isUndoIDActive(run));
        QVERIFY(house.manager.setNewUndoAction(UndoAction::GroupList, UndoName::Crop));
        QVERIFY(!house.manager.isUndoIDActive(run));
        QCOMPARE(int(house.manager.entries().size()), 2);
        QVERIFY(house.manager.dataForCurrentUndoAction() && house.manager.dataForPreviousUndoAction());
        house.manager.updateCurrentDescriptor(UndoName::Paste);
        QCOMPARE(house.manager.validateState(UndoDirection::Undo).title, QStringLiteral("Undo Paste"));
    }
};

REGISTER_TEST(TestUndo)
#include "TestUndo.moc"
