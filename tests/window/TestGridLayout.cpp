#include "TestRunner.h"

#include "GridLayout.h"

#include <QTest>

using Move = GridLayout::Move;
using Span = GridLayout::Span;

namespace {

/// 10 photos in 3 columns: rows 0-2, 3-5, 6-8 and 9 alone. Cells are 100 wide and 120 high.
GridLayout tenInThree()
{
    return {10, 3, 300 + 2 * GridLayout::kMargin, 20};
}

constexpr int kRow = 120;

}

class TestGridLayout : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cellsShareTheWidthWithoutGapOrOverlap_data()
    {
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("columns");
        QTest::addColumn<int>("columnsShown");
        QTest::newRow("even") << 308 << 3 << 3;
        QTest::newRow("a width that does not divide") << 1003 << 7 << 7;
        QTest::newRow("twenty") << 1920 << 20 << 20;
        QTest::newRow("too narrow for all") << 200 << 20 << 4;
        QTest::newRow("narrower than one cell") << 10 << 3 << 1;
        QTest::newRow("before the view has a size") << 0 << 5 << 1;
        QTest::newRow("asked for none") << 500 << 0 << 1;
        QTest::newRow("asked for too many") << 5000 << 50 << 20;
    }

    void cellsShareTheWidthWithoutGapOrOverlap()
    {
        QFETCH(int, width);
        QFETCH(int, columns);
        const GridLayout layout(1000, columns, width, 30);
        QTEST(layout.columns(), "columnsShown");
        QVERIFY(layout.pictureSide() > 0);
        for (int index = 0; index < 3 * layout.columns(); ++index) {
            const QRect cell = layout.cellRect(index);
            for (const QPoint corner : {cell.topLeft(), cell.topRight(), cell.bottomLeft(), cell.bottomRight()})
                QCOMPARE(layout.indexAt(corner), index);
            QVERIFY(cell.width() >= layout.pictureSide() + 2 * GridLayout::kPadding);
        }
        const QRect lastOfRow = layout.cellRect(layout.columns() - 1);
        QVERIFY(width < GridLayout::kMinCellWidth || lastOfRow.right() == width - GridLayout::kMargin - 1);
    }

    void outsideTheCellsIsNothing()
    {
        const GridLayout layout = tenInThree();
        QCOMPARE(layout.rows(), 4);
        QCOMPARE(layout.contentHeight(), 4 * kRow + 2 * GridLayout::kMargin);
        const QRect last = layout.cellRect(9);
        for (const QPoint point : {QPoint(0, 50), QPoint(50, 0), QPoint(307, 50), QPoint(-5, 50), QPoint(50, -1),
                                   QPoint(last.right() + 1, last.top()), QPoint(50, last.bottom() + 1)})
            QCOMPARE(layout.indexAt(point), -1);
        QVERIFY(layout.cellRect(-1).isNull());
        QVERIFY(layout.cellRect(10).isNull());
        QCOMPARE(GridLayout().indexAt({5, 5}), -1);
    }

    void visibleRows_data()
    {
        QTest::addColumn<int>("top");
        QTest::addColumn<int>("height");
        QTest::addColumn<int>("first");
        QTest::addColumn<int>("last");
        const int margin = GridLayout::kMargin;
        QTest::newRow("top") << 0 << kRow << 0 << 2;
        QTest::newRow("one pixel of the second row") << 0 << margin + kRow + 1 << 0 << 5;
        QTest::newRow("first row just gone") << margin + kRow << kRow << 3 << 5;
        QTest::newRow("one pixel of the first row left") << margin + kRow - 1 << kRow << 0 << 5;
        QTest::newRow("short last row") << margin + 3 * kRow << 1000 << 9 << 9;
        QTest::newRow("all") << 0 << 100000 << 0 << 9;
        QTest::newRow("nothing") << 0 << 0 << 0 << -1;
        QTest::newRow("beyond the end") << 100000 << 50 << 9 << 9;
    }

    void visibleRows()
    {
        QFETCH(int, top);
        QFETCH(int, height);
        const Span shown = tenInThree().visible(top, height);
        QTEST(shown.first, "first");
        QTEST(shown.last, "last");
    }

    void keys_data()
    {
        QTest::addColumn<int>("from");
        QTest::addColumn<Move>("move");
        QTest::addColumn<int>("to");
        QTest::newRow("left across rows") << 3 << Move::Left << 2;
        QTest::newRow("left at the start") << 0 << Move::Left << 0;
        QTest::newRow("right across rows") << 2 << Move::Right << 3;
        QTest::newRow("right at the end") << 9 << Move::Right << 9;
        QTest::newRow("up") << 5 << Move::Up << 2;
        QTest::newRow("up in the first row") << 1 << Move::Up << 1;
        QTest::newRow("down") << 1 << Move::Down << 4;
        QTest::newRow("down into the short row") << 8 << Move::Down << 9;
        QTest::newRow("down in the last row") << 9 << Move::Down << 9;
        QTest::newRow("page down keeps the column") << 0 << Move::PageDown << 6;
        QTest::newRow("page down to the end") << 5 << Move::PageDown << 9;
        QTest::newRow("page up") << 8 << Move::PageUp << 2;
        QTest::newRow("page up to the start") << 4 << Move::PageUp << 1;
        QTest::newRow("home") << 8 << Move::Home << 0;
        QTest::newRow("end") << 0 << Move::End << 9;
        QTest::newRow("from nowhere") << -1 << Move::Down << 0;
        QTest::newRow("from nowhere to the end") << -1 << Move::End << 9;
        QTest::newRow("from a photo that is gone") << 12 << Move::Left << 0;
    }

    void keys()
    {
        QFETCH(int, from);
        QFETCH(Move, move);
        QTEST(tenInThree().neighbour(from, move, /*viewHeight=*/2 * kRow + 10), "to");
    }

    void keysInAnEmptyGridAndALowView()
    {
        QCOMPARE(GridLayout(0, 3, 300, 0).neighbour(-1, Move::Home, 100), -1);
        QCOMPARE(tenInThree().neighbour(0, Move::PageDown, /*viewHeight=*/10), 3);
    }

    void rectanglesTouch_data()
    {
        QTest::addColumn<QRect>("rect");
        QTest::addColumn<QString>("indexes");
        const int margin = GridLayout::kMargin;
        QTest::newRow("inside one cell") << QRect(margin + 110, margin + 10, 5, 5) << QStringLiteral("1");
        QTest::newRow("two columns, two rows")
            << QRect(margin + 150, margin + 50, 100, kRow) << QStringLiteral("1-2 4-5");
        QTest::newRow("all columns are one range") << QRect(0, 10, 1000, kRow) << QStringLiteral("0-5");
        QTest::newRow("short last row") << QRect(margin + 50, margin + 3 * kRow + 5, 100, 10) << QStringLiteral("9");
        QTest::newRow("right of the last photo") << QRect(margin + 110, margin + 3 * kRow + 5, 50, 10) << QString();
        QTest::newRow("in the margin") << QRect(0, 0, margin, 1000) << QString();
        QTest::newRow("all") << QRect(-100, -100, 5000, 5000) << QStringLiteral("0-9");
        QTest::newRow("nothing") << QRect(50, 50, 0, 0) << QString();
    }

    void rectanglesTouch()
    {
        QFETCH(QRect, rect);
        QTEST(tenInThree().touchedBy(rect).archive(), "indexes");
    }

    void millionsOfPhotosDoNotOverflow()
    {
        const GridLayout layout(50'000'000, 1, 2000, 60);
        QVERIFY(layout.contentHeight() > 0);
        QCOMPARE(layout.visible(0, 1000).first, 0);
    }
};

REGISTER_TEST(TestGridLayout)
#include "TestGridLayout.moc"
