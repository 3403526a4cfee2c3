#include "TestRunner.h"

#include "FittedRect.h"

#include <QTest>

class TestFittedRect : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void picturesAreFittedAndCentred_data()
    {
        QTest::addColumn<QSize>("picture");
        QTest::addColumn<QSize>("view");
        QTest::addColumn<double>("ratio");
        QTest::addColumn<QRect>("fitted");
        QTest::newRow("wide") << QSize(4000, 2000) << QSize(400, 400) << 1.0 << QRect(0, 100, 400, 200);
        QTest::newRow("high") << QSize(2000, 4000) << QSize(400, 400) << 1.0 << QRect(100, 0, 200, 400);
        QTest::newRow("exact") << QSize(400, 300) << QSize(400, 300) << 1.0 << QRect(0, 0, 400, 300);
        QTest::newRow("small ones stay small") << QSize(100, 50) << QSize(400, 300) << 1.0 << QRect(150, 125, 100, 50);
        QTest::newRow("fine screen") << QSize(4000, 2000) << QSize(400, 400) << 2.0 << QRect(0, 200, 800, 400);
        QTest::newRow("small on a fine screen")
            << QSize(100, 50) << QSize(400, 300) << 2.0 << QRect(300, 250, 200, 100);
        QTest::newRow("fractional") << QSize(3000, 3000) << QSize(333, 333) << 1.5 << QRect(0, 0, 499, 499);
        QTest::newRow("a thread of a picture") << QSize(30000, 1) << QSize(300, 300) << 1.0 << QRect(0, 149, 300, 1);
        QTest::newRow("no picture") << QSize() << QSize(300, 300) << 1.0 << QRect();
        QTest::newRow("no room") << QSize(100, 100) << QSize(0, 300) << 1.0 << QRect();
    }

    void picturesAreFittedAndCentred()
    {
        QFETCH(QSize, picture);
        QFETCH(QSize, view);
        QFETCH(double, ratio);
        QTEST(fittedDeviceRect(picture, view, ratio), "fitted");
    }
};

REGISTER_TEST(TestFittedRect)
#include "TestFittedRect.moc"
