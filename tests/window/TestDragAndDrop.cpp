#include "TestRunner.h"

#include "DragData.h"
#include "FileFinder.h"
#include "GridLayout.h"
#include "PhotoLibrary.h"

#include <QDropEvent>
#include <QMimeData>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

/// What a drag carries, and where in the grid it may end.
class TestDragAndDrop : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    NotificationCenter m_notifications;
    PathFileFinder m_finder;
    PhotoLibrary m_library{m_dir.path(), m_finder, m_notifications};

    static QDropEvent eventFor(const QMimeData &data, Qt::DropActions actions = Qt::CopyAction,
                               Qt::KeyboardModifiers modifiers = {})
    {
        return {QPointF(5, 5), actions, &data, Qt::LeftButton, modifiers};
    }

private Q_SLOTS:
    void initTestCase() { m_library.makeDefaultLibrary(); }

    void itemsAreKnownByTheirIdentity()
    {
        const auto group = m_library.groups().first();
        const auto folder = group->folders().first()->makeNewFolder();
        const auto data = DragData::forItem(folder);
        QCOMPARE(DragData::kind(eventFor(*data, Qt::MoveAction)), NavigatorDrop::Kind::Folder);
        QCOMPARE(DragData::item(*data, m_library), std::static_pointer_cast<PIGroup>(folder));
        QCOMPARE(DragData::kind(eventFor(*DragData::forItem(group))), NavigatorDrop::Kind::Group);
        group->folders().first()->folders().clear();
        QVERIFY(!DragData::item(*data, m_library));
    }

    void photosAreFilesForOthers()
    {
        const auto folder = m_library.groups().first()->folders().first();
        QFile file(m_dir.filePath(QStringLiteral("a b#1.jpg")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        for (const QString &path : {file.fileName(), m_dir.filePath(QStringLiteral("missing.jpg"))})
            folder->photos().append(std::make_shared<PIPhoto>(m_library.fileRefs().fileRefForPath(path)));
        const auto data = DragData::forPhotos(folder->photos(), DragData::Transfer::Move);
        QCOMPARE(DragData::kind(eventFor(*data)), NavigatorDrop::Kind::Photos);
        QCOMPARE(DragData::photos(*data, *folder), folder->photos());
        QCOMPARE(data->urls(), QList<QUrl>{QUrl::fromLocalFile(file.fileName())});

        QCOMPARE(DragData::transfer(eventFor(*data)), DragData::Transfer::Move);
        QCOMPARE(DragData::transfer(eventFor(*data, Qt::CopyAction, Qt::ControlModifier)), DragData::Transfer::Copy);
        const auto copies = DragData::forPhotos(folder->photos(), DragData::Transfer::Copy);
        QCOMPARE(DragData::transfer(eventFor(*copies)), DragData::Transfer::Copy);

        // The same types from another process name objects that are not here.
        QMimeData foreign;
        for (const QString &format : data->formats()) {
            if (format != QLatin1String("hmphoto.run"))
                foreign.setData(format, data->data(format));
        }
        QCOMPARE(DragData::kind(eventFor(foreign)), NavigatorDrop::Kind::Files);
        QVERIFY(!DragData::kind(eventFor(foreign, Qt::MoveAction)));
        foreign.setData(QStringLiteral("hmphoto.dragPhoto"), "<plist><array><string>x");
        QVERIFY(DragData::photos(foreign, *folder).isEmpty());
        foreign.setUrls({QUrl(QStringLiteral("https://example.org/a.jpg"))});
        QVERIFY(!DragData::kind(eventFor(foreign)));
    }

    void gapsOfTheGrid_data()
    {
        QTest::addColumn<QPoint>("point"); // in cells and their parts, in percent
        QTest::addColumn<int>("before");
        QTest::newRow("left half") << QPoint(120, 50) << 1;
        QTest::newRow("right half") << QPoint(180, 50) << 2;
        QTest::newRow("end of a row") << QPoint(290, 50) << 3;
        QTest::newRow("second row") << QPoint(10, 150) << 3;
        QTest::newRow("left of the grid") << QPoint(-50, 50) << 0;
        QTest::newRow("above it") << QPoint(10, -30) << 0;
        QTest::newRow("behind the last photo") << QPoint(250, 350) << 10;
        QTest::newRow("below it") << QPoint(10, 900) << 10;
    }
    void gapsOfTheGrid()
    {
        const GridLayout layout(10, 3, 300 + 2 * GridLayout::kMargin, 20);
        QFETCH(QPoint, point);
        const QPoint at(GridLayout::kMargin + point.x(), GridLayout::kMargin + point.y() * layout.rowHeight() / 100);
        const auto gap = layout.gapAt(at);
        QTEST(gap.before, "before");
        QVERIFY(gap.mark.width() > 0 && gap.mark.height() > 0);
        QVERIFY(gap.mark.center().x() >= 0 && gap.mark.center().x() <= 300 + 2 * GridLayout::kMargin);
        QCOMPARE(GridLayout(0, 3, 300, 20).gapAt(at).before, 0);
    }
};

REGISTER_TEST(TestDragAndDrop)
#include "TestDragAndDrop.moc"
