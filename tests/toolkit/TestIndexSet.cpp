#include "IndexSet.h"
#include "TestRunner.h"

#include <QRandomGenerator>
#include <QStringList>
#include <QTest>

#include <set>

namespace {

constexpr qint64 kLargest = 0x7fffffffffffffff;

}

class TestIndexSet : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void archiveText_data();
    void archiveText();
    void agreesWithAPlainSet();
    void largestPositionsDoNotOverflow();
    void manyRangesInAnyOrderStayReadable();
    void boundsHold();
};

void TestIndexSet::archiveText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("archive");
    const auto row = [](const char *text, const char *archive) {
        QTest::newRow(text) << QString::fromUtf8(text) << QString::fromUtf8(archive);
    };
    row("4 6-8", "4 6-8");
    row("", "");
    row("1 2 3 7", "1-3 7");
    row("7 1-3 2-5", "1-5 7");
    row("5 4", "4-5");
    row("0", "0");
    row("0-9223372036854775807", "0-9223372036854775807");
    row("99999999999999999999999", "9223372036854775807");
    row("5-99999999999999999999999 3", "3 5-9223372036854775807");
    row("8-3 2", "2");
    row(" 3  4 ", "3-4");
    row("1-2-4", "2-4");
    row("!!!! 6", "6");
    row("-", "");
}

void TestIndexSet::archiveText()
{
    QFETCH(QString, text);
    const IndexSet set = IndexSet::fromArchive(text);
    QTEST(set.archive(), "archive");
    QCOMPARE(IndexSet::fromArchive(set.archive()), set);
}

void TestIndexSet::agreesWithAPlainSet()
{
    QRandomGenerator random(20120314);
    IndexSet set;
    std::set<qint64> plain;
    for (int step = 0; step < 3000; ++step) {
        const qint64 first = random.bounded(60);
        if (random.bounded(3) == 0) {
            set.remove(first);
            plain.erase(first);
        } else {
            const qint64 last = first + random.bounded(4);
            set.add(first, last);
            for (qint64 i = first; i <= last; ++i)
                plain.insert(i);
        }
        if (step % 500 == 499) {
            set.clear();
            plain.clear();
        }
        const QList<qint64> expected(plain.begin(), plain.end());
        QCOMPARE(set.indexes(kLargest), expected);
        QCOMPARE(set.count(), expected.size());
        QCOMPARE(set.contains(first), plain.contains(first));
        QCOMPARE(IndexSet::fromArchive(set.archive()), set); // ranges are as long as they can be
    }
}

void TestIndexSet::largestPositionsDoNotOverflow()
{
    IndexSet set = IndexSet::range(0, kLargest);
    set.add(kLargest);
    QCOMPARE(set.archive(), QStringLiteral("0-9223372036854775807"));
    QCOMPARE(set.count(), kLargest);
    set.remove(kLargest);
    QCOMPARE(set.count(), kLargest);
    QCOMPARE(IndexSet::range(kLargest - 1, 100).count(), 2);
    set.add(-5);
    set.add(-5, 3);
    set.add(3, 2);
    QCOMPARE(set.ranges().size(), 1);
    QVERIFY(IndexSet::range(5, 0).isEmpty());
    QVERIFY(IndexSet::range(-1, 5).isEmpty());
}

void TestIndexSet::manyRangesInAnyOrderStayReadable()
{
    QStringList items;
    for (int i = 200'000; i > 0; --i)
        items.append(QString::number(i * 2));
    const IndexSet set = IndexSet::fromArchive(items.join(QLatin1Char(' ')));
    QCOMPARE(set.ranges().size(), 200'000);
    QCOMPARE(set.first(), 2);
    QCOMPARE(set.last(), 400'000);
}

void TestIndexSet::boundsHold()
{
    IndexSet set = IndexSet::fromArchive(QStringLiteral("2-4 7-9 20"));
    QCOMPARE(set.indexes(8), QList<qint64>({2, 3, 4, 7}));
    set.clampTo(8);
    QCOMPARE(set.archive(), QStringLiteral("2-4 7"));
    set.clampTo(7);
    QCOMPARE(set.archive(), QStringLiteral("2-4"));
    set.clampTo(0);
    QVERIFY(set.isEmpty() && !set.first() && !set.last());
    QVERIFY(!set.contains(0));
}

REGISTER_TEST(TestIndexSet)
#include "TestIndexSet.moc"
