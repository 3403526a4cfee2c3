#include "LibrarySupport.h"
#include "PreviewList.h"
#include "TestRunner.h"

namespace {

PIGroup::PhotoList photosNamed(TestLibrary &test, const QStringList &names)
{
    PIGroup::PhotoList photos;
    test.addFolder();
    for (const QString &name : names)
        photos << test.addPhoto(test.path(name));
    return photos;
}

}

class TestPreviewList : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void stepsLeadAroundTheEnds_data()
    {
        QTest::addColumn<int>("from");
        QTest::addColumn<int>("left");
        QTest::addColumn<int>("right");
        QTest::addColumn<QList<int>>("aheadOfLeft");
        QTest::addColumn<QList<int>>("aheadOfRight");
        using Indexes = QList<int>;
        QTest::newRow("first") << 0 << 4 << 1 << Indexes{3, 0, 2} << Indexes{2, 0, 3};
        QTest::newRow("middle") << 2 << 1 << 3 << Indexes{0, 2, 4} << Indexes{4, 2, 0};
        QTest::newRow("last") << 4 << 3 << 0 << Indexes{2, 4, 1} << Indexes{1, 4, 2};
    }
    void stepsLeadAroundTheEnds()
    {
        QFETCH(int, from);
        TestLibrary test;
        const auto photos =
            photosNamed(test, {QStringLiteral("a.jpg"), QStringLiteral("b.jpg"), QStringLiteral("c.jpg"),
                               QStringLiteral("d.jpg"), QStringLiteral("e.jpg")});
        const auto indexes = [&](const PIGroup::PhotoList &of) {
            QList<int> found;
            for (const auto &photo : of)
                found << int(photos.indexOf(photo));
            return found;
        };
        PreviewList list(photos, QStringLiteral("Folder"));
        list.showPhoto(from);
        QVERIFY(list.moveLeft());
        QTEST(int(list.currentIndex()), "left");
        QTEST(indexes(list.ahead()), "aheadOfLeft");
        list.showPhoto(from);
        QVERIFY(list.moveRight());
        QTEST(int(list.currentIndex()), "right");
        QTEST(indexes(list.ahead()), "aheadOfRight");
        QVERIFY(list.moveToBeginning());
        QCOMPARE(list.photo(), photos.first());
        QVERIFY(list.moveToEnd());
        QCOMPARE(list.photo(), photos.last());
        list.showPhoto(5);
        QCOMPARE(list.currentIndex(), 4);
    }

    void theTitleNamesThePhotoAndItsPlace()
    {
        TestLibrary test;
        auto photos = photosNamed(test, {QStringLiteral("Shore %1 at 9.30.jpg"), QStringLiteral("b.png")});
        photos << photos.first();
        PreviewList list(photos, QStringLiteral("Trip %2"));
        QCOMPARE(list.title(), QStringLiteral("Trip %2  —  Shore %1 at 9.30  —  1 of 3"));
        photos.last()->setMarked(true);
        QVERIFY(list.moveToEnd()); // the same photo as the first
        QCOMPARE(list.title(), QStringLiteral("Trip %2  —  ✽ Shore %1 at 9.30 ✽  —  1 of 3"));
        QVERIFY(list.moveLeft());
        QCOMPARE(list.title(), QStringLiteral("Trip %2  —  b  —  2 of 3"));
    }

    void withoutPhotosNothingMoves()
    {
        PreviewList list;
        QVERIFY(!list.moveLeft() && !list.moveRight() && !list.moveToBeginning() && !list.moveToEnd());
        QVERIFY(!list.photo() && list.ahead().isEmpty());
        TestLibrary test;
        PreviewList one(photosNamed(test, {QStringLiteral("a.jpg")}), {});
        QVERIFY(one.moveRight() && one.moveLeft());
        QVERIFY(one.ahead().isEmpty());
    }
};

REGISTER_TEST(TestPreviewList)
#include "TestPreviewList.moc"
