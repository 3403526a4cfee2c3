#include "TestRunner.h"

#include "GridSelection.h"

#include <QRandomGenerator>
#include <QTest>

using Mode = GridSelection::Mode;

namespace {

IndexSet bruteForce(const IndexSet &one, const IndexSet &other, bool both)
{
    IndexSet result;
    for (int index = 0; index < 64; ++index) {
        const bool inOne = one.contains(index);
        const bool inOther = other.contains(index);
        if (inOne != inOther || (both && inOne))
            result.add(index);
    }
    return result;
}

IndexSet anySet(QRandomGenerator &random)
{
    IndexSet set;
    for (int range = random.bounded(8); range > 0; --range) {
        const int first = random.bounded(60);
        set.add(first, first + random.bounded(4));
    }
    return set;
}

}

class TestGridSelection : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// Gestures are written as in "3 s8 c5": choose 3, then 8 with Shift, then 5 with Control; "a" is both.
    void gestures_data()
    {
        QTest::addColumn<QString>("gestures");
        QTest::addColumn<QString>("selected");
        const auto row = [](const char *name, const char *gestures, const char *selected) {
            QTest::newRow(name) << QString::fromLatin1(gestures) << QString::fromLatin1(selected);
        };
        row("one", "3", "3");
        row("another instead", "3 7", "7");
        row("range downward", "3 s7", "3-7");
        row("range upward", "7 s3", "3-7");
        row("a second range starts at the same anchor", "5 s9 s2", "2-5");
        row("toggle adds", "3 c7 c5", "3 5 7");
        row("toggle takes out of a range", "3 s7 c5", "3-4 6-7");
        row("toggle the only one", "4 c4", "");
        row("a range starts where was toggled last", "1 c10 s12", "10-12");
        row("both keys join a range to the rest", "1 c10 a12", "1 10-12");
        row("range without an anchor", "s4", "4");
    }

    void gestures()
    {
        QFETCH(QString, gestures);
        GridSelection selection;
        IndexSet selected;
        for (const QString &gesture : gestures.split(QLatin1Char(' '))) {
            const QChar key = gesture.front();
            Mode mode = Mode::Replace;
            if (key == QLatin1Char('s'))
                mode = Mode::Extend;
            else if (key == QLatin1Char('c'))
                mode = Mode::Toggle;
            else if (key == QLatin1Char('a'))
                mode = Mode::Add;
            const int index = QStringView(gesture).mid(mode == Mode::Replace ? 0 : 1).toInt();
            selected = selection.choose(selected, index, mode);
        }
        QTEST(selected.archive(), "selected");
    }

    void bandsAreMeasuredAgainstTheSelectionAtTheirStart_data()
    {
        QTest::addColumn<Mode>("mode");
        QTest::addColumn<QString>("selected");
        QTest::newRow("replace") << Mode::Replace << QStringLiteral("4-5");
        QTest::newRow("join") << Mode::Extend << QStringLiteral("1 4-6");
        QTest::newRow("toggle") << Mode::Toggle << QStringLiteral("1 4 6");
    }

    void bandsAreMeasuredAgainstTheSelectionAtTheirStart()
    {
        QFETCH(Mode, mode);
        GridSelection selection;
        IndexSet before = IndexSet::range(5, 2);
        before.add(1);
        selection.beginBand(before, mode);
        QCOMPARE(selection.band(IndexSet::range(0, 30)).contains(20), true);
        QTEST(selection.band(IndexSet::range(4, 2)).archive(), "selected"); // what it left is as it was
    }

    void setsCombineAsTheirMembersDo()
    {
        QRandomGenerator random(7);
        for (int round = 0; round < 500; ++round) {
            const IndexSet one = anySet(random);
            const IndexSet other = anySet(random);
            QCOMPARE(united(one, other).archive(), bruteForce(one, other, true).archive());
            QCOMPARE(difference(one, other).archive(), bruteForce(one, other, false).archive());
        }
    }
};

REGISTER_TEST(TestGridSelection)
#include "TestGridSelection.moc"
