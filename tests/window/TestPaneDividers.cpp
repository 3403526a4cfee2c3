#include "TestRunner.h"

#include "PaneSplitter.h"
#include "UserDefaults.h"
#include "WindowPreferences.h"

#include <QTemporaryDir>
#include <QTest>

namespace {

/// Three panes in a window, and what is remembered of them.
struct Panes
{
    QTemporaryDir dir;
    UserDefaults defaults{dir.filePath(QStringLiteral("preferences.ini"))};
    std::unique_ptr<PaneSplitter> splitter;

    /// As after a start of the program.
    void open(int width)
    {
        splitter = std::make_unique<PaneSplitter>(defaults, QList{new QWidget, new QWidget, new QWidget});
        splitter->resize(width, 300);
        splitter->show();
        splitter->setInitialSplit();
        QCoreApplication::processEvents();
    }
    void resize(int width) const
    {
        splitter->resize(width, 300);
        QCoreApplication::processEvents();
    }
    void drag(int handle, int by) const
    {
        QWidget *grip = splitter->handle(handle);
        const QPoint from = grip->rect().center();
        QTest::mousePress(grip, Qt::LeftButton, {}, from);
        const QPoint to = from + QPoint(by, 0);
        QMouseEvent move(QEvent::MouseMove, to, grip->mapToGlobal(to), Qt::NoButton, Qt::LeftButton, {});
        QCoreApplication::sendEvent(grip, &move);
        QTest::mouseRelease(grip, Qt::LeftButton, {}, grip->rect().center());
    }
};

}

class TestPaneDividers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void panesKeepTheirLeastAndGreatestWidths_data()
    {
        QTest::addColumn<int>("width");
        QTest::addColumn<PaneDividers>("wanted");
        QTest::addColumn<QList<int>>("sizes");
        const auto row = [](const char *name, int width, PaneDividers wanted, const QList<int> &sizes) {
            QTest::newRow(name) << width << wanted << sizes;
        };
        row("as wanted", 1000, {200, 533}, {200, 332, 466});
        row("navigator too narrow", 1000, {90, 533}, {200, 332, 466});
        row("navigator too wide", 1000, {700, 800}, {320, 479, 199});
        row("thumbnails too narrow", 1000, {250, 251}, {250, 153, 595});
        row("thumbnails too wide", 2000, {200, 1900}, {200, 1000, 798});
        row("detail too narrow", 1000, {200, 1400}, {200, 679, 119});
        row("narrow window", 700, {320, 900}, {320, 259, 119});
    }
    void panesKeepTheirLeastAndGreatestWidths()
    {
        QFETCH(int, width);
        QFETCH(PaneDividers, wanted);
        QTEST(wanted.fitted(width, 1).sizes(width, 1), "sizes");
    }

    void theDividersComeBackWithTheDetailPane()
    {
        Panes panes;
        panes.open(1200);
        QCOMPARE(panes.splitter->sizes(), QList({200, 332, 666}));
        panes.splitter->setDetailShown(false);
        QCOMPARE(panes.splitter->sizes(), QList({200, 999, 0}));
        panes.drag(1, 400);
        QCOMPARE(panes.splitter->sizes(), QList({320, 879, 0}));

        panes.open(1200);
        QCOMPARE(panes.splitter->sizes(), QList({320, 879, 0}));
        panes.splitter->setDetailShown(true);
        QCOMPARE(panes.splitter->sizes(), QList({320, 212, 666}));
    }

    void theDetailPaneTakesWhatTheWindowGains()
    {
        Panes panes;
        panes.open(1000);
        panes.drag(2, 100);
        const QList<int> dragged = panes.splitter->sizes();
        QVERIFY(dragged[1] > 332);
        panes.resize(1300);
        QCOMPARE(panes.splitter->sizes(), QList({200, dragged[1], dragged[2] + 300}));
        panes.resize(700);
        QCOMPARE(panes.splitter->sizes(), QList({200, 378, 120}));
        panes.resize(1000);
        QCOMPARE(panes.splitter->sizes(), dragged);
        QCOMPARE(panes.defaults.value(WindowPreferences::kSplit1), 201 + dragged[1]);
    }
};

REGISTER_TEST(TestPaneDividers)
#include "TestPaneDividers.moc"
