#include "PhotoStep.h"
#include "TestRunner.h"

#include <QTest>

class TestPhotoStep : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void leads_data();
    void leads();
    void isForeseen_data();
    void isForeseen();
};

void TestPhotoStep::leads_data()
{
    QTest::addColumn<int>("reference");
    QTest::addColumn<int>("count");
    QTest::addColumn<QString>("selected");
    QTest::addColumn<int>("next"); // -1: nowhere
    QTest::addColumn<int>("previous");
    QTest::addColumn<bool>("selects");

    QTest::newRow("one selected") << 3 << 6 << "3" << 4 << 2 << true;
    QTest::newRow("around both ends") << 0 << 2 << "0" << 1 << 1 << true;
    QTest::newRow("last photo") << 8 << 9 << "8" << 0 << 7 << true;
    QTest::newRow("only photo") << 0 << 1 << "0" << -1 << -1 << true;
    QTest::newRow("none selected") << 1 << 3 << "" << 2 << 0 << true;
    QTest::newRow("empty folder") << 0 << 0 << "" << -1 << -1 << true;
    QTest::newRow("within the selection") << 4 << 20 << "2-4 9 12" << 9 << 3 << false;
    QTest::newRow("from its last to its first") << 12 << 20 << "2-4 9 12" << 2 << 9 << false;
    QTest::newRow("from its first to its last") << 2 << 20 << "2-4 9 12" << 3 << 12 << false;
    QTest::newRow("from outside of it") << 6 << 20 << "2-4 9 12" << 9 << 4 << false;
}

void TestPhotoStep::leads()
{
    QFETCH(int, reference);
    QFETCH(int, count);
    QFETCH(QString, selected);
    QFETCH(int, next);
    QFETCH(int, previous);
    QFETCH(bool, selects);
    for (const auto &[direction, wanted] :
         {std::pair(StepDirection::Next, next), std::pair(StepDirection::Previous, previous)}) {
        const auto step = PhotoStep::from(reference, count, IndexSet::fromArchive(selected), direction);
        QCOMPARE(step ? step->index : -1, qint64(wanted));
        QCOMPARE(step && step->becomesSelection, wanted >= 0 && selects);
        if (step && next != previous)
            QCOMPARE(PhotoStep::between(reference, wanted, count, IndexSet::fromArchive(selected)), direction);
    }
}

void TestPhotoStep::isForeseen_data()
{
    QTest::addColumn<int>("reference");
    QTest::addColumn<int>("count");
    QTest::addColumn<QString>("selected");
    QTest::addColumn<QList<qint64>>("onward");
    QTest::addColumn<QList<qint64>>("back");

    using Indexes = QList<qint64>;
    QTest::newRow("in the middle") << 3 << 9 << "3" << Indexes{4, 2, 5} << Indexes{2, 4, 1};
    QTest::newRow("at the end") << 8 << 9 << "8" << Indexes{0, 7, 1} << Indexes{7, 0, 6};
    QTest::newRow("of three") << 0 << 3 << "0" << Indexes{1, 2} << Indexes{2, 1};
    QTest::newRow("of two") << 1 << 2 << "1" << Indexes{0} << Indexes{0};
    QTest::newRow("of one") << 0 << 1 << "0" << Indexes{} << Indexes{};
    QTest::newRow("within the selection") << 4 << 20 << "2-4 9 12" << Indexes{9, 3, 12} << Indexes{3, 9, 2};
}

void TestPhotoStep::isForeseen()
{
    QFETCH(int, reference);
    QFETCH(int, count);
    QFETCH(QString, selected);
    const IndexSet indexes = IndexSet::fromArchive(selected);
    QTEST(PhotoStep::likely(reference, count, indexes, StepDirection::Next), "onward");
    QTEST(PhotoStep::likely(reference, count, indexes, StepDirection::Previous), "back");
}

REGISTER_TEST(TestPhotoStep)
#include "TestPhotoStep.moc"
