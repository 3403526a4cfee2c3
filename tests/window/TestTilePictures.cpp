#include "TestRunner.h"

#include "TilePictures.h"

#include <QTest>

namespace {

using Kind = TilePictures::Kind;

QImage picture(QSize size)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::red);
    return image;
}

}

class TestTilePictures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sizes_data()
    {
        QTest::addColumn<QSize>("source");
        QTest::addColumn<Kind>("kind");
        QTest::addColumn<double>("ratio");
        QTest::addColumn<QSize>("shown");
        QTest::newRow("landscape") << QSize(240, 180) << Kind::Thumbnail << 1.0 << QSize(120, 90);
        QTest::newRow("portrait") << QSize(180, 240) << Kind::Thumbnail << 1.0 << QSize(90, 120);
        QTest::newRow("small photo") << QSize(40, 20) << Kind::Thumbnail << 1.0 << QSize(40, 20);
        QTest::newRow("small photo, fine screen") << QSize(40, 20) << Kind::Thumbnail << 2.0 << QSize(80, 40);
        QTest::newRow("embedded") << QSize(40, 30) << Kind::Embedded << 1.0 << QSize(120, 90);
        QTest::newRow("thin line") << QSize(240, 1) << Kind::Thumbnail << 1.0 << QSize(120, 1);
    }

    void sizes()
    {
        QFETCH(QSize, source);
        QFETCH(Kind, kind);
        QFETCH(double, ratio);
        TilePictures pictures(1 << 20);
        pictures.setSide(120, ratio);
        pictures.insert(QStringLiteral("photo"), picture(source), kind);
        QTEST(pictures.find(QStringLiteral("photo"))->pixmap.size(), "shown");
    }

    void theBudgetHolds()
    {
        TilePictures pictures(5 * 100 * 100 * 4);
        pictures.setSide(100, 1);
        for (int number = 0; number < 20; ++number)
            pictures.insert(QString::number(number), picture({240, 240}), Kind::Thumbnail);
        QVERIFY(!pictures.find(QStringLiteral("14")));
        QVERIFY(pictures.find(QStringLiteral("19")));

        pictures.makeRoomFor(10);
        for (int number = 0; number < 10; ++number)
            pictures.insert(QString::number(number), picture({240, 240}), Kind::Thumbnail);
        QVERIFY(pictures.find(QStringLiteral("0")));
        pictures.makeRoomFor(1);
        QVERIFY(!pictures.find(QStringLiteral("4")));
        QVERIFY(pictures.find(QStringLiteral("9")));
    }
};

REGISTER_TEST(TestTilePictures)
#include "TestTilePictures.moc"
