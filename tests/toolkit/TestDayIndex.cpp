#include "QVDayIndexFormatter.h"
#include "TestRunner.h"

#include <QTest>
#include <QTimeZone>

namespace {

QDateTime inSpring2012()
{
    return {QDate(2012, 3, 14), QTime(12, 0)};
}

}

class TestDayIndex : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void textBecomesADay_data();
    void textBecomesADay();
    void faultsAreNamed_data();
    void faultsAreNamed();
    void dayBecomesText_data();
    void dayBecomesText();
    void momentFallsOnTheLocalDay();
};

void TestDayIndex::textBecomesADay_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<quint32>("day");
    const auto row = [](const char *text, quint32 day) { QTest::newRow(text) << QString::fromUtf8(text) << day; };
    row("2/29/2012", 20120229);
    row("2/29/2000", 20000229);
    row("03/04/2012", 20120304);
    row("3/4", 20120304);
    row("3/4/05", 20050304);
    row("3/4/99", 20990304);
    row("3/4/", 20000304);
    row("12/31/1900", 19001231);
    row("1/1/3000", 30000101);
    row("1/1/2012/whatever", 20120101);
    row("", 0);
    row("?", 0);
    row("<unKNOWN>", 0);
}

void TestDayIndex::textBecomesADay()
{
    QFETCH(QString, text);
    QFETCH(quint32, day);
    QCOMPARE(QVDayIndexFormatter(inSpring2012).getObjectValue(text), std::optional<DayIndex>(day));
}

void TestDayIndex::faultsAreNamed_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("fault");
    const auto row = [](const char *text, const char *fault) {
        QTest::newRow(text) << QString::fromUtf8(text) << QString::fromUtf8(fault);
    };
    row("2012", "not in month/day/year format");
    for (const char *text : {"13/1/2012", "0/1/2012", "/1/2012", " 3/1/2012", "-3/1/2012", "٣/1/2012", "99999999999/1"})
        row(text, "invalid month value");
    for (const char *text : {"2/30/2012", "4/31/2012", "1/0/2012", "1//2012", "1/2 /2012", "1/99999999999"})
        row(text, "invalid day value");
    for (const char *text : {"1/1/1850", "1/1/3001", "1/1/100", "1/1/x", "1/1/42949672961"})
        row(text, "invalid year value");
    for (const char *text : {"2/29/2011", "2/29/1900", "2/29/2100"})
        row(text, "day is beyond the end of that month");
}

void TestDayIndex::faultsAreNamed()
{
    QFETCH(QString, text);
    QFETCH(QString, fault);
    QString told;
    QVERIFY(!QVDayIndexFormatter(inSpring2012).getObjectValue(text, &told));
    QCOMPARE(told, QString(QStringLiteral("Invalid date: ") + fault));
}

void TestDayIndex::dayBecomesText_data()
{
    QTest::addColumn<quint32>("day");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("blank");
    const QString unknown = QStringLiteral("<Unknown>");
    QTest::newRow("a day") << 20120304U << QStringLiteral("3/4/2012") << QStringLiteral("3/4/2012");
    QTest::newRow("unknown") << 0U << unknown << QString();
    QTest::newRow("no year") << 1231U << unknown << unknown;
    QTest::newRow("least year") << 10101U << QStringLiteral("1/1/1") << QStringLiteral("1/1/1");
    QTest::newRow("small negative") << static_cast<quint32>(-9999) << unknown << unknown;
}

void TestDayIndex::dayBecomesText()
{
    QFETCH(quint32, day);
    QVDayIndexFormatter formatter(inSpring2012);
    QTEST(formatter.stringForObjectValue(day), "text");
    formatter.setBlankUnknown(true);
    QTEST(formatter.stringForObjectValue(day), "blank");
}

void TestDayIndex::momentFallsOnTheLocalDay()
{
    const QDateTime midnight(QDate(2012, 3, 14), QTime(0, 0));
    QCOMPARE(DayIndexForDate(midnight), 20120314U);
    QCOMPARE(DayIndexForDate(midnight.addMSecs(-1)), 20120313U);
    QCOMPARE(DayIndexForDate(midnight.toTimeZone(QTimeZone(14 * 3600))), 20120314U);
    QCOMPARE(DayIndexForDate(midnight.toTimeZone(QTimeZone(-12 * 3600))), 20120314U);
    QCOMPARE(DayIndexForDate(QDateTime()), 0U);
}

REGISTER_TEST(TestDayIndex)
#include "TestDayIndex.moc"
