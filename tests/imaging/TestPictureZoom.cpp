#include "TestRunner.h"

#include "PictureZoom.h"

#include <QTest>

#include <cmath>

namespace {

constexpr QSize kPhoto(6000, 4000);
constexpr QRect kArea(0, 0, 600, 600);
constexpr qint64 kPlenty = 100'000'000;

PictureZoom zoomOn(QSize picture = kPhoto, const QRect &area = kArea, double ratio = 1)
{
    PictureZoom zoom;
    zoom.setPicture(picture);
    zoom.setArea(area, ratio);
    return zoom;
}

/// The picture's point that stands at a point of the screen.
QPointF pointAt(const PictureZoom &zoom, QPointF at)
{
    return (at - zoom.place().topLeft()) / zoom.scale();
}

}

class TestPictureZoom : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void scalesAreHeldWithinBounds_data()
    {
        QTest::addColumn<QSize>("picture");
        QTest::addColumn<double>("ratio");
        QTest::addColumn<double>("asked");
        QTest::addColumn<double>("scale");
        QTest::addColumn<bool>("fitted");
        QTest::addColumn<QRect>("place");
        QTest::newRow("fitted") << kPhoto << 1.0 << 0.1 << 0.1 << true << QRect(0, 100, 600, 400);
        QTest::newRow("not smaller") << kPhoto << 1.0 << 0.02 << 0.1 << true << QRect(0, 100, 600, 400);
        QTest::newRow("100 %") << kPhoto << 1.0 << 1.0 << 1.0 << false << QRect(-2700, -1700, 6000, 4000);
        QTest::newRow("at most") << kPhoto << 1.0 << 50.0 << 8.0 << false << QRect(-23700, -15700, 48000, 32000);
        QTest::newRow("fine screen") << kPhoto << 2.0 << 1.0 << 1.0 << false << QRect(-2400, -1400, 6000, 4000);
        QTest::newRow("higher than the view")
            << QSize(300, 900) << 1.0 << 1.0 << 1.0 << false << QRect(150, -150, 300, 900);
        QTest::newRow("small, on a fine screen")
            << QSize(100, 50) << 2.0 << 1.0 << 1.0 << false << QRect(550, 575, 100, 50);
        QTest::newRow("small, fitted at 100 %")
            << QSize(100, 50) << 1.0 << 1.0 << 1.0 << true << QRect(250, 275, 100, 50);
        QTest::newRow("no picture") << QSize() << 1.0 << 1.0 << 0.0 << true << QRect();
    }
    void scalesAreHeldWithinBounds()
    {
        QFETCH(QSize, picture);
        QFETCH(double, ratio);
        QFETCH(double, asked);
        PictureZoom zoom = zoomOn(picture, kArea, ratio);
        zoom.zoomTo(asked, zoom.middle());
        QTEST(zoom.scale(), "scale");
        QTEST(zoom.isFitted(), "fitted");
        QTEST(zoom.place(), "place");
    }

    void thePointUnderThePointerStays()
    {
        PictureZoom zoom = zoomOn();
        zoom.zoomTo(0.3, zoom.middle());
        const QPointF pointer(400, 350);
        const QPointF before = pointAt(zoom, pointer);
        for (const double factor : {1.25, 2.0, 1.1, 0.9, 3.0}) {
            zoom.zoomBy(factor, pointer);
            const QPointF now = pointAt(zoom, pointer);
            QVERIFY(QLineF(now, before).length() <= 2 / zoom.scale());
        }
        zoom.zoomTo(1, {0, 0}); // where there is no picture, its edge is what stays in sight
        QVERIFY(zoom.place().contains(kArea));
    }

    /// From fitted to 100 % and back, by notches that do not meet either, and on to where it ends.
    void stepsStopWhereTheyShould()
    {
        PictureZoom zoom = zoomOn();
        int notches = 0;
        QList<double> scales;
        for (; zoom.scale() < 8 && notches < 100; ++notches) {
            zoom.zoomBy(1.25, {10, 300});
            scales << zoom.scale();
        }
        QVERIFY(scales.contains(1.0) && notches < 25);
        for (notches = 0; !zoom.isFitted() && notches < 100; ++notches) {
            zoom.zoomBy(0.8, {590, 20});
            scales << zoom.scale();
        }
        QCOMPARE(scales.count(1.0), 2);
        QVERIFY(notches < 25);
        zoom.zoomBy(0.8, {590, 20});
        QCOMPARE(zoom.place(), QRect(0, 100, 600, 400));
    }

    void edgesDoNotComeInside()
    {
        PictureZoom zoom = zoomOn();
        QVERIFY(!zoom.canPan());
        zoom.panBy({50, 50});
        QVERIFY(zoom.isFitted());
        zoom.zoomTo(1, zoom.middle());
        QVERIFY(zoom.canPan());
        zoom.panBy({100, -50});
        QCOMPARE(zoom.place().topLeft(), QPoint(-2600, -1750));
        zoom.panBy({1e6, 1e6});
        QCOMPARE(zoom.place().topLeft(), QPoint(0, 0));
        zoom.panBy({-1e6, -1e6});
        QCOMPARE(zoom.place().bottomRight(), QPoint(599, 599));
        zoom.zoomTo(0.12, zoom.middle()); // 720 x 480: nothing to pan downward
        zoom.panBy({-1e6, 70});
        QCOMPARE(zoom.place(), QRect(-120, 60, 720, 480));
    }

    void theMiddleStaysWhenTheViewChanges()
    {
        PictureZoom zoom = zoomOn();
        zoom.zoomTo(1, zoom.middle());
        zoom.panBy({500, 300});
        const QPointF before = pointAt(zoom, zoom.middle());
        zoom.setArea({20, 10, 901, 333}, 1);
        QVERIFY(QLineF(pointAt(zoom, zoom.middle()), before).length() <= 1);
        zoom.setArea({0, 0, 6000, 6000}, 1); // room for all of it
        QVERIFY(zoom.isFitted());
        zoom.zoomTo(2, zoom.middle());
        zoom.setPicture({3000, 4000});
        QVERIFY(zoom.isFitted());
    }

    void noMoreIsMadeThanIsShown_data()
    {
        using Make = PictureZoom::Make;
        QTest::addColumn<double>("scale");
        QTest::addColumn<qint64>("most");
        QTest::addColumn<Make>("make");
        QTest::addColumn<QRect>("part");
        QTest::addColumn<QSize>("size");
        const QRect whole(QPoint(), kPhoto);
        QTest::newRow("little more than fitted") << 0.12 << kPlenty << Make::Parts << whole << QSize(750, 500);
        QTest::newRow("a quarter") << 0.25 << kPlenty << Make::Parts << whole << QSize(1500, 1000);
        QTest::newRow("above a quarter") << 0.26 << kPlenty << Make::Parts << whole << QSize(3000, 2000);
        QTest::newRow("100 %") << 1.0 << kPlenty << Make::Parts << whole << kPhoto;
        QTest::newRow("enlarged") << 4.0 << kPlenty << Make::Parts << whole << kPhoto;
        QTest::newRow("a part with something around it")
            << 0.3 << qint64(5'000'000) << Make::Parts << QRect(768, 0, 4352, 4000) << QSize(2176, 2000);
        QTest::newRow("only what is in sight")
            << 1.0 << qint64(400'000) << Make::Parts << QRect(2700, 1700, 600, 600) << QSize(600, 600);
        QTest::newRow("as a whole, so not all detail")
            << 1.0 << qint64(7'000'000) << Make::Whole << whole << QSize(3000, 2000);
    }
    void noMoreIsMadeThanIsShown()
    {
        QFETCH(double, scale);
        QFETCH(qint64, most);
        QFETCH(PictureZoom::Make, make);
        PictureZoom zoom = zoomOn();
        zoom.zoomTo(scale, zoom.middle());
        const PictureZoom::Pixels wanted = zoom.wanted(most, make);
        QTEST(wanted.part, "part");
        QTEST(wanted.size, "size");
        QCOMPARE(zoom.isCoarse(wanted), make == PictureZoom::Make::Whole);
        QVERIFY(qint64(wanted.size.width()) * wanted.size.height() <= most);
        QVERIFY(zoom.isServedBy(wanted, wanted));
    }

    void aPartServesUntilItsEdgeComesIntoSight()
    {
        constexpr qint64 most = 2'000'000;
        PictureZoom zoom = zoomOn();
        zoom.zoomTo(0.5, zoom.middle());
        const auto made = zoom.wanted(most, PictureZoom::Make::Parts);
        const auto isServed = [&] { return zoom.isServedBy(made, zoom.wanted(most, PictureZoom::Make::Parts)); };
        zoom.panBy({100, 100});
        QVERIFY(isServed());
        zoom.panBy({300, 0});
        QVERIFY(!isServed());
        zoom.panBy({-300, 0});
        zoom.zoomBy(1.2, zoom.middle()); // shows more detail
        QVERIFY(!isServed());
    }

    /// Far in, where only a few pixels are in sight.
    void panningFarInDoesNotAlwaysNeedAnotherPart()
    {
        constexpr qint64 most = 2'000'000;
        PictureZoom zoom = zoomOn();
        zoom.zoomTo(8, zoom.middle());
        auto made = zoom.wanted(most, PictureZoom::Make::Parts);
        int parts = 1;
        for (int step = 0; step < 300; ++step) { // 300 pixels of the picture
            zoom.panBy({-8, 8});
            const auto wanted = zoom.wanted(most, PictureZoom::Make::Parts);
            if (zoom.isServedBy(made, wanted))
                continue;
            made = wanted;
            ++parts;
        }
        QVERIFY(parts > 1 && parts < 10);
    }

    void partsStandWhereTheWholeHasThem()
    {
        PictureZoom zoom = zoomOn();
        zoom.zoomTo(1, zoom.middle());
        QCOMPARE(zoom.placeOf({2700, 1700, 10, 20}), QRectF(0, 0, 10, 20)); // pixel on pixel
        QCOMPARE(zoom.placeOf({QPoint(), kPhoto}), QRectF(zoom.place()));
    }
};

REGISTER_TEST(TestPictureZoom)
#include "TestPictureZoom.moc"
