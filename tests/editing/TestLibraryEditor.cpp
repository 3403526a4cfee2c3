#include "TestRunner.h"

#include "House.h"

#include <QTest>

class TestLibraryEditor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void insertsBehindThePositionGiven_data()
    {
        QTest::addColumn<quint64>("index");
        QTest::addColumn<QString>("order");
        QTest::addColumn<QString>("selected");
        QTest::newRow("behind the first") << quint64(0) << QStringLiteral("1xy23") << QStringLiteral("1-2");
        QTest::newRow("behind the last") << quint64(2) << QStringLiteral("123xy") << QStringLiteral("3-4");
        QTest::newRow("beyond the end") << quint64(3) << QStringLiteral("123xy") << QStringLiteral("3-4");
        QTest::newRow("to the end") << kNotFound << QStringLiteral("123xy") << QStringLiteral("3-4");
    }
    void insertsBehindThePositionGiven()
    {
        QFETCH(quint64, index);
        House house;
        house.a->photos() = house.photos({QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3")});
        QVERIFY(house.editor.addPhotos(house.photos({QStringLiteral("x"), QStringLiteral("y")}), house.a, index,
                                       UndoName::AddPhoto));
        QTEST(House::captions(*house.a), "order");
        QTEST(house.view.selection.archive(), "selected");
        QCOMPARE(house.recorder.asked, QStringList(QStringLiteral("4/2/A")));
    }

    void choosesWhereNewPhotosGo_data()
    {
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("selected");
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("recorded");
        QTest::newRow("the folder on show") << QStringLiteral("A") << QStringLiteral("B") << QStringLiteral("A") << "";
        QTest::newRow("the folder selected") << "" << QStringLiteral("B") << QStringLiteral("B") << "";
        QTest::newRow("a group's last folder") << "" << QStringLiteral("G") << QStringLiteral("B") << "";
        QTest::newRow("nothing selected") << ""
                                          << "" << QStringLiteral("B") << "";
        QTest::newRow("an empty group") << "" << QStringLiteral("E") << QStringLiteral("New Folder")
                                        << QStringLiteral("2/2/E");
    }
    void choosesWhereNewPhotosGo()
    {
        QFETCH(QString, shown);
        QFETCH(QString, selected);
        House house;
        const auto empty = std::make_shared<PIGroup>(QStringLiteral("E"));
        house.library.groups().prepend(empty);
        house.view.folder = shown.isEmpty() ? nullptr : house.a;
        for (const std::shared_ptr<PIGroup> &item : {std::shared_ptr<PIGroup>(house.b), house.group, empty}) {
            if (item->name() == selected)
                house.view.item = item;
        }
        UndoName name = UndoName::AddPhoto;
        const auto target = house.editor.selectOrCreateFolder(name);
        QVERIFY(target);
        QTEST(target->folder->name(), "folder");
        QTEST(house.recorder.asked.join(u' '), "recorded");
        QCOMPARE(name == UndoName::AlreadyRecorded, target->created);
    }

    void makesAGroupWhenThereIsNone()
    {
        House house;
        house.library.groups().clear();
        QVERIFY(house.editor.addPhotos(house.photos({QStringLiteral("x")}), nullptr, kNotFound, UndoName::AddPhoto));
        QCOMPARE(house.library.groups().size(), 1);
        QCOMPARE(house.library.groups().first()->name(), QStringLiteral("New Group"));
        QCOMPARE(House::captions(*house.library.groups().first()->folders().first()), QStringLiteral("x"));
        QCOMPARE(house.recorder.asked.size(), 1);
    }

    void aRefusedRecordingChangesNothing()
    {
        House house;
        house.recorder.refuses = true;
        QVERIFY(!house.editor.addPhotos(house.photos({QStringLiteral("x")}), house.a, kNotFound, UndoName::AddPhoto));
        QVERIFY(!house.editor.newGroup());
        QVERIFY(!house.editor.newFolder());
        QVERIFY(!house.editor.rename(house.a, QStringLiteral("Z")));
        QCOMPARE(house.library.groups().size(), 1);
        QCOMPARE(house.group->folders().size(), 2);
        QVERIFY(house.a->photos().isEmpty());
        QCOMPARE(house.a->name(), QStringLiteral("A"));
    }

    void newFoldersOpenWhatHidesThem()
    {
        House house;
        house.group->setClosed(true);
        house.a->setClosed(true);
        house.view.item = house.a;
        const auto folder = house.editor.newFolder();
        QCOMPARE(folder->asFolder()->parent(), std::shared_ptr<PIGroup>(house.a));
        QVERIFY(!house.a->isClosed());
        QVERIFY(!house.group->isClosed());
        QCOMPARE(house.view.item, folder);
    }

    void foldersOfSpecialGroupsAreNumberedByDay()
    {
        const auto today = [] { return QDate::currentDate().toString(QStringLiteral("yyyy/MM/dd")); };
        House house;
        const QString before = today();
        QStringList names;
        for (const GroupType type : {GroupType::Search, GroupType::Search, GroupType::Undeleted})
            names << house.editor.makeSpecialGroupFolder(type)->name();
        if (today() != before)
            QSKIP("midnight");
        QCOMPARE(names, QStringList({before + QStringLiteral("-1"), before + QStringLiteral("-2"),
                                     before + QStringLiteral("-1")}));
        QCOMPARE(house.recorder.asked,
                 QStringList({QStringLiteral("3/3/"), QStringLiteral("2/3/Search Results"), QStringLiteral("3/3/")}));
        QCOMPARE(house.library.groups().size(), 3);
        QCOMPARE(house.library.groups()[1]->folders().size(), 2);
        QCOMPARE(house.library.groups()[2]->name(), QStringLiteral("Undeleted Files"));

        house.recorder.refuses = true;
        QVERIFY(!house.editor.makeSpecialGroupFolder(GroupType::Search));
        QCOMPARE(house.library.groups()[1]->folders().size(), 2);
    }

    void groupsOfTheProgramKeepTheirNames()
    {
        House house;
        house.group->setGroupType(GroupType::Search);
        QVERIFY(!house.editor.rename(house.group, QStringLiteral("Mine")));
        QVERIFY(house.editor.rename(house.a, QStringLiteral("Mine")));
        QVERIFY(!house.editor.rename(house.a, QStringLiteral("  ")));
        QCOMPARE(house.recorder.asked, QStringList(QStringLiteral("5/17/A")));
    }
};

REGISTER_TEST(TestLibraryEditor)
#include "TestLibraryEditor.moc"
