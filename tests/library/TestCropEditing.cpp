#include "TestRunner.h"

#include "CropEditing.h"

#include <QRandomGenerator>
#include <QTest>

namespace {

QSizeF shapeOf(int preset)
{
    const CropSize &size = kCropSizes.at(static_cast<size_t>(preset));
    return {size.width, size.height};
}

CropEditing editing(const QRectF &crop, QSizeF picture, int preset)
{
    CropEditing editing;
    editing.start(crop, picture, kCropSizes.at(static_cast<size_t>(preset)));
    return editing;
}

constexpr CropFrame kFrame{QPointF(20, 30), 0.5};

QPointF inView(QPointF pixel)
{
    return kFrame.origin + pixel * kFrame.scale;
}

/// In the band, five units from the edges that the zone stands for.
QPointF gripOf(const CropEditing &editing, int zone)
{
    const QRectF rect = kFrame.toView(editing.cropRect());
    QPointF grip = rect.center();
    if (zone == CropZone::kMove)
        return grip;
    if (zone & (CropZone::kLeft | CropZone::kRight))
        grip.setX(zone & CropZone::kLeft ? rect.left() - 5 : rect.right() + 5);
    if (zone & (CropZone::kTop | CropZone::kBottom))
        grip.setY(zone & CropZone::kTop ? rect.top() - 5 : rect.bottom() + 5);
    return grip;
}

}

class TestCropEditing : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void itStarts_data()
    {
        QTest::addColumn<QRectF>("stored");
        QTest::addColumn<QSizeF>("picture");
        QTest::addColumn<int>("preset");
        QTest::addColumn<QRectF>("crop");
        QTest::addColumn<bool>("portrait");
        QTest::addColumn<QRectF>("turned");
        using R = QRectF;
        const R none;
        const R stored(10, 20, 30, 40.5);
        QTest::newRow("free") << none << QSizeF(400, 300) << 0 << R(0, 0, 400, 300) << false << R(0, 0, 400, 300);
        QTest::newRow("wide") << none << QSizeF(4000, 3000) << 1 << R(0, 357, 4000, 2285) << false
                              << R(1142, 0, 1714, 3000);
        QTest::newRow("tall") << none << QSizeF(3000, 4000) << 3 << R(166, 0, 2666, 4000) << true
                              << R(0, 1000, 3000, 2000);
        QTest::newRow("square lies") << none << QSizeF(600, 600) << 3 << R(0, 100, 600, 400) << false
                                     << R(100, 0, 400, 600);
        QTest::newRow("stored") << stored << QSizeF(400, 300) << 3 << stored << true << R(0, 16, 400, 266);
        QTest::newRow("stored square") << R(0, 0, 9, 9) << QSizeF(300, 400) << 3 << R(0, 0, 9, 9) << false
                                       << R(16, 0, 266, 400);
        QTest::newRow("stored, partly outside")
            << R(-5, 290, 20, 20) << QSizeF(400, 300) << 0 << R(0, 290, 15, 10) << false << R(0, 290, 15, 10);
        QTest::newRow("stored outside") << R(500, 0, 9, 9) << QSizeF(400, 300) << 0 << R(0, 0, 400, 300) << false
                                        << R(0, 0, 400, 300);
        QTest::newRow("one pixel") << none << QSizeF(1, 1) << 1 << R(0, 0, 1, 1) << false << R(0, 0, 1, 1);
    }
    void itStarts()
    {
        QFETCH(QRectF, stored);
        QFETCH(QSizeF, picture);
        QFETCH(int, preset);
        QFETCH(bool, portrait);
        CropEditing crop = editing(stored, picture, preset);
        QTEST(crop.cropRect(), "crop");
        QCOMPARE(crop.isPortrait(), portrait);
        QCOMPARE(crop.rotateCrop(), preset != 0);
        QTEST(crop.cropRect(), "turned");
        QCOMPARE(crop.isPortrait(), portrait != (preset != 0));
    }

    void zones_data()
    {
        QTest::addColumn<QPointF>("point"); // the crop lies at 120, 80 and is 200 x 200; the band begins at 111, 71
        QTest::addColumn<int>("zone");
        const auto row = [](double x, double y, int zone) { QTest::addRow("%g %g", x, y) << QPointF(x, y) << zone; };
        row(110.9, 100, 0);
        row(111, 98, 1 + 16);
        row(111, 98.1, 1 + 32);
        row(119.9, 150, 1 + 32);
        row(120, 150, 34);
        row(138, 79.9, 1 + 16);
        row(138.1, 79.9, 2 + 16);
        row(301.9, 71, 2 + 16);
        row(302, 71, 4 + 16);
        row(220, 70.9, 0);
        row(319.9, 279.9, 34);
        row(320, 261.9, 4 + 32);
        row(320, 262, 4 + 64);
        row(328.9, 150, 4 + 32);
        row(329, 150, 0);
        row(220, 280, 2 + 64);
        row(220, 288.9, 2 + 64);
        row(220, 289, 0);
        row(115, 285, 1 + 64);
    }
    void zones()
    {
        QFETCH(QPointF, point);
        QFETCH(int, zone);
        CropEditing crop = editing({200, 100, 400, 400}, {1000, 800}, 0);
        QCOMPARE(crop.zoneAt(point, kFrame), zone);
        crop.mouseDown(point, kFrame);
        QVERIFY(!crop.mouseDragged(point, kFrame)); // nothing jumps
        QCOMPARE(crop.mouseUp(), zone != 0);
        QCOMPARE(crop.cropRect(), QRectF(200, 100, 400, 400));
    }

    void theWholePictureCannotBeMoved()
    {
        const CropEditing crop = editing({}, {1000, 800}, 0);
        QCOMPARE(crop.zoneAt({270, 230}, kFrame), 0);
        QCOMPARE(crop.zoneAt({270, 431}, kFrame), CropZone::kMiddleX + CropZone::kBottom);
    }

    void drags_data()
    {
        QTest::addColumn<int>("preset");
        QTest::addColumn<int>("zone");
        QTest::addColumn<QPointF>("by"); // view units, half a pixel each
        QTest::addColumn<QRectF>("result");
        using R = QRectF;
        const auto row = [](const char *name, int preset, int zone, QPointF by, const R &result) {
            QTest::newRow(name) << preset << zone << by << result;
        };
        // The crop begins at 200, 100 and is 300 x 200 in a picture of 1000 x 800.
        row("move", 0, 34, {10.2, -5.3}, R(220, 89, 300, 200));
        row("move against the sides", 3, 34, {900, 900}, R(700, 600, 300, 200));
        row("left", 0, 33, {10, 99}, R(220, 100, 280, 200));
        row("left beyond right", 0, 33, {200, 0}, R(499, 100, 1, 200));
        row("left beyond right, held", 3, 33, {200, 0}, R(200, 100, 300, 200));
        row("left out of the picture", 0, 33, {-200, 0}, R(0, 100, 500, 200));
        row("top beyond bottom", 0, 18, {0, 200}, R(200, 299, 300, 1));
        row("right beyond left", 0, 36, {-200, 0}, R(200, 100, 1, 200));
        row("bottom right, to the sides", 0, 68, {999, 999}, R(200, 100, 800, 700));
        row("top left", 0, 17, {-20, 20}, R(160, 140, 340, 160));
        row("right, held", 3, 36, {30, 0}, R(200, 100, 360, 240));
        row("left, held, against the bottom", 3, 33, {-90, 0}, R(20, 100, 480, 320));
        row("right, held, grown to the side", 3, 36, {999, 0}, R(200, 100, 800, 1600.0 / 3));
        row("bottom, held", 3, 66, {0, 30}, R(200, 100, 390, 260));
        row("bottom, held, against the right", 3, 66, {0, 999}, R(200, 100, 800, 1600.0 / 3));
        row("top, held", 3, 18, {0, -30}, R(200, 40, 390, 260));
        row("top left, held", 3, 17, {-30, 0}, R(140, 60, 360, 240));
        row("top right, held, against the top", 3, 20, {150, 0}, R(200, 0, 600, 400));
        row("bottom left, held", 3, 65, {-30, 500}, R(140, 100, 360, 240));
    }
    void drags()
    {
        QFETCH(int, preset);
        QFETCH(int, zone);
        QFETCH(QPointF, by);
        QFETCH(QRectF, result);
        const QRectF before(200, 100, 300, 200);
        CropEditing crop = editing(before, {1000, 800}, preset);
        const QPointF grip = gripOf(crop, zone);
        crop.mouseDown(grip, kFrame);
        QCOMPARE(crop.trackZone(), zone);
        QCOMPARE(crop.mouseDragged(grip + by, kFrame), result != before);
        QCOMPARE(crop.cropRect(), result);
    }

    void heldAgainstTheBottom()
    {
        CropEditing crop = editing({100, 500, 300, 200}, {1000, 800}, 3);
        crop.mouseDown(gripOf(crop, 36), kFrame);
        QVERIFY(crop.mouseDragged(inView({900, 600}), kFrame));
        QCOMPARE(crop.cropRect(), QRectF(100, 500, 450, 300));
        (void)crop.mouseUp();
        crop.mouseDown(gripOf(crop, 33), kFrame);
        QVERIFY(!crop.mouseDragged(inView({0, 600}), kFrame)); // as large as it can be, the right edge stays
    }

    /// Whatever is dragged wherever: the crop stays in the picture, has the preset's shape and at least a pixel (held
    /// to a shape, along its longer side), and the edges that are not dragged stay.
    void dragsAtRandom_data()
    {
        QTest::addColumn<int>("preset");
        for (int preset = 0; preset < int(kCropSizes.size()); ++preset)
            QTest::addRow("preset %d", preset) << preset;
    }
    void dragsAtRandom()
    {
        QFETCH(int, preset);
        QRandomGenerator random(4711 + quint32(preset));
        constexpr int kZones[] = {17, 18, 20, 33, 34, 36, 65, 66, 68};
        const QList<QSizeF> pictures{{1000, 800}, {600, 900}, {333, 333}, {1500, 40}, {7, 5}};
        for (int run = 0; run < 500; ++run) {
            const QSizeF picture = pictures.at(run % pictures.size());
            CropEditing crop = editing({}, picture, preset);
            for (int step = 0; step < 20; ++step) {
                if (random.bounded(10) == 0)
                    QCOMPARE(crop.rotateCrop(), preset != 0);
                crop.mouseDown(gripOf(crop, kZones[random.bounded(9)]), kFrame);
                const int zone = crop.trackZone();
                const QRectF before = crop.cropRect();
                const QPointF to(random.bounded(picture.width() * 1.4) - picture.width() * 0.2,
                                 random.bounded(picture.height() * 1.4) - picture.height() * 0.2);
                const bool changed = crop.mouseDragged(inView(to), kFrame);
                const QRectF after = crop.cropRect();
                const QByteArray what = QStringLiteral("%1: %2 %3 %4 %5 -> %6 %7 %8 %9")
                                            .arg(zone)
                                            .arg(before.x())
                                            .arg(before.y())
                                            .arg(before.width())
                                            .arg(before.height())
                                            .arg(after.x())
                                            .arg(after.y())
                                            .arg(after.width())
                                            .arg(after.height())
                                            .toUtf8();
                QVERIFY2(staysInside(after, picture), what);
                QVERIFY2(std::min(after.width(), after.height()) >= 1, what);
                QVERIFY2(otherEdgesStay(before, after, zone, preset != 0), what);
                if (preset && changed && zone != CropZone::kMove)
                    QVERIFY2(hasShape(after.size(), preset, crop.isPortrait()), what);
                QCOMPARE(crop.mouseUp(), zone != 0);
            }
        }
    }

private:
    static bool staysInside(const QRectF &crop, QSizeF picture)
    {
        constexpr double kRounding = 1e-9;
        return crop.x() >= 0 && crop.y() >= 0 && crop.right() <= picture.width() + kRounding &&
               crop.bottom() <= picture.height() + kRounding;
    }
    static bool hasShape(QSizeF crop, int preset, bool portrait)
    {
        const QSizeF shape = portrait ? shapeOf(preset).transposed() : shapeOf(preset);
        return qFuzzyCompare(crop.width() * shape.height(), crop.height() * shape.width());
    }
    static bool otherEdgesStay(const QRectF &before, const QRectF &after, int zone, bool isHeld)
    {
        const auto same = [](double a, double b) { return std::abs(a - b) < 1e-9; };
        if (zone == CropZone::kMove || zone == 0)
            return before.size() == after.size();
        const bool left = same(before.left(), after.left()) || zone & CropZone::kLeft;
        const bool right = same(before.right(), after.right()) || !(zone & CropZone::kLeft);
        const bool top = same(before.top(), after.top()) || zone & CropZone::kTop;
        // Held to a shape, what is grown by its width and meets the top grows at the bottom instead.
        const bool meetsTop = isHeld && !(zone & CropZone::kMiddleX) && after.top() == 0;
        const bool bottom = same(before.bottom(), after.bottom()) || !(zone & CropZone::kTop) || meetsTop;
        return left && right && top && bottom;
    }
};

REGISTER_TEST(TestCropEditing)
#include "TestCropEditing.moc"
