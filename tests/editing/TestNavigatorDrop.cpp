#include "House.h"
#include "NavigatorDrop.h"
#include "TestRunner.h"

#include <QTest>

class TestNavigatorDrop : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void groupsStayAtTheTopLevel_data();
    void groupsStayAtTheTopLevel();
    void othersGoWhereTheyAreDropped();
};

void TestNavigatorDrop::groupsStayAtTheTopLevel_data()
{
    QTest::addColumn<QString>("item"); // empty: the top level
    QTest::addColumn<int>("childIndex");
    QTest::addColumn<int>("lands"); // -1: refused

    QTest::newRow("on the whole list") << "" << -1 << -1;
    QTest::newRow("before the first") << "" << 0 << 1;
    QTest::newRow("between two") << "" << 1 << 2;
    QTest::newRow("at the end") << "" << 2 << 2;
    QTest::newRow("onto a group") << "G" << -1 << 0;
    QTest::newRow("among a group's folders") << "G" << 1 << 1;
    QTest::newRow("onto a folder") << "A" << -1 << 1;
    QTest::newRow("onto the last group") << "H" << -1 << 1;
    QTest::newRow("into the last group") << "H" << 0 << 2;
}

void TestNavigatorDrop::groupsStayAtTheTopLevel()
{
    House house;
    house.library.groups() << std::make_shared<PIGroup>(QStringLiteral("H"));
    const QHash<QString, std::shared_ptr<PIGroup>> items{{QStringLiteral("G"), house.group},
                                                         {QStringLiteral("A"), house.a},
                                                         {QStringLiteral("H"), house.library.groups().last()}};
    QFETCH(QString, item);
    QFETCH(int, childIndex);
    QFETCH(int, lands);
    const auto drop = NavigatorDrop::validate(house.library, NavigatorDrop::Kind::Group, items.value(item), childIndex);
    QCOMPARE(drop.effect, lands < 0 ? NavigatorDrop::Effect::Refused : NavigatorDrop::Effect::Move);
    QVERIFY(!drop.item);
    if (lands >= 0)
        QCOMPARE(drop.childIndex, lands);
}

void TestNavigatorDrop::othersGoWhereTheyAreDropped()
{
    House house;
    const auto folder = NavigatorDrop::validate(house.library, NavigatorDrop::Kind::Folder, house.group, 1);
    QCOMPARE(folder.item, house.group);
    QCOMPARE(folder.childIndex, 1);
    QCOMPARE(folder.effect, NavigatorDrop::Effect::Move);
    for (const auto kind : {NavigatorDrop::Kind::Photos, NavigatorDrop::Kind::Files}) {
        const auto drop = NavigatorDrop::validate(house.library, kind, house.a, 3);
        QCOMPARE(drop.item, std::static_pointer_cast<PIGroup>(house.a));
        QCOMPARE(drop.childIndex, NavigatorDrop::kOntoItem);
        QCOMPARE(drop.effect, NavigatorDrop::Effect::Copy);
    }
}

REGISTER_TEST(TestNavigatorDrop)
#include "TestNavigatorDrop.moc"
