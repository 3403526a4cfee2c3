#include "TestRunner.h"

#include "DateFormatter.h"

#include <QTest>

class TestDateFormatter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void showsNeitherWeekdayNorTime_data()
    {
        QTest::addColumn<QString>("expected");
        QTest::newRow("C") << QStringLiteral("21 Nov 2026");
        QTest::newRow("en_US") << QStringLiteral("Nov 21, 2026");
        QTest::newRow("de_DE") << QStringLiteral("21. Nov. 2026");
        QTest::newRow("es_ES") << QStringLiteral("21 de nov de 2026");
        QTest::newRow("hu_HU") << QStringLiteral("2026. nov. 21.");
        QTest::newRow("ja_JP") << QStringLiteral("2026年11月21日");
    }
    void showsNeitherWeekdayNorTime()
    {
        const DateFormatter formatter{QLocale(QLatin1String(QTest::currentDataTag()))};
        QTEST(formatter.string(QDate(2026, 11, 21)), "expected");
        QVERIFY(formatter.string(QDate()).isEmpty());
    }
};

REGISTER_TEST(TestDateFormatter)
#include "TestDateFormatter.moc"
