#include "StringUtilities.h"
#include "TestRunner.h"

#include <QTest>

class TestStringUtilities : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void looseComparison_data();
    void looseComparison();
    void stopListHoldsWholeWordsInAnyCase();
    void pieces_data();
    void pieces();
    void numbersKeepTheirWidth();
};

void TestStringUtilities::looseComparison_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("other");
    QTest::addColumn<bool>("equal");
    QTest::addColumn<bool>("prefix");
    QTest::addColumn<bool>("suffix");
    const QString absent;
    QTest::newRow("same") << QStringLiteral("Ünder") << QStringLiteral("üNDER") << true << true << true;
    QTest::newRow("begin") << QStringLiteral("Photograph") << QStringLiteral("PHOTO") << false << true << false;
    QTest::newRow("middle") << QStringLiteral("a photo b") << QStringLiteral("photo") << false << false << false;
    QTest::newRow("end") << QStringLiteral("a.JPG") << QStringLiteral(".jpg") << false << false << true;
    QTest::newRow("longer") << QStringLiteral("a") << QStringLiteral("ab") << false << false << false;
    QTest::newRow("absent") << QStringLiteral("a") << absent << false << false << false;
    QTest::newRow("both absent") << absent << absent << false << false << false;
    QTest::newRow("wildcards are text") << QStringLiteral("abc") << QStringLiteral("a.c") << false << false << false;
}

void TestStringUtilities::looseComparison()
{
    QFETCH(QString, text);
    QFETCH(QString, other);
    QTEST(QVString::isFuzzyEqualToString(text, other), "equal");
    QTEST(QVString::hasFuzzyPrefix(text, other), "prefix");
    QTEST(QVString::hasFuzzySuffix(text, other), "suffix");
}

void TestStringUtilities::stopListHoldsWholeWordsInAnyCase()
{
    const QString stop = QStringLiteral("a an and by for in of on or the to with The WITH");
    for (const QString &word : stop.split(QLatin1Char(' ')))
        QVERIFY2(QVString::isOnStopList(word), qPrintable(word));
    const QString other = QStringLiteral("these th ands zebra ab");
    for (const QString &word : other.split(QLatin1Char(' ')))
        QVERIFY2(!QVString::isOnStopList(word), qPrintable(word));
    QVERIFY(!QVString::isOnStopList(QString()));
}

void TestStringUtilities::pieces_data()
{
    QTest::addColumn<quint32>("from");
    QTest::addColumn<quint32>("to");
    QTest::addColumn<QString>("piece");
    QTest::addColumn<QString>("rest");
    const QString whole = QStringLiteral("abcde");
    QTest::newRow("middle") << 1U << 3U << QStringLiteral("bc") << QStringLiteral("ade");
    QTest::newRow("to the end") << 2U << 0xFFFFFFFFU << QStringLiteral("cde") << QStringLiteral("ab");
    QTest::newRow("beyond the end") << 2U << 9U << QStringLiteral("cde") << QStringLiteral("ab");
    QTest::newRow("nothing") << 3U << 3U << QString() << whole;
    QTest::newRow("backwards") << 3U << 1U << QString() << whole;
    QTest::newRow("start outside") << 5U << 0xFFFFFFFFU << QString() << whole;
    QTest::newRow("start far outside") << 0xFFFFFFFEU << 0xFFFFFFFFU << QString() << whole;
}

void TestStringUtilities::pieces()
{
    QFETCH(quint32, from);
    QFETCH(quint32, to);
    QString text = QStringLiteral("abcde");
    QTEST(QVString::substringFrom(text, from, to), "piece");
    QVString::deleteCharactersFrom(text, from, to);
    QTEST(text, "rest");
}

void TestStringUtilities::numbersKeepTheirWidth()
{
    QCOMPARE(QVString::numberString(-12), QStringLiteral("-12"));
    QCOMPARE(QVString::numberString(0x7fffffffffffffff), QStringLiteral("-1")); // "no index" as files show it
    QCOMPARE(QVString::numberString(0x80000000), QStringLiteral("-2147483648"));
    QCOMPARE(QVString::longNumberString(0x7fffffffffffffff), QStringLiteral("9223372036854775807"));
}

REGISTER_TEST(TestStringUtilities)
#include "TestStringUtilities.moc"
