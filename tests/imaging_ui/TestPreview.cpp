#include "FakeAlerts.h"
#include "TestRunner.h"

#include "../editing/UndoHouse.h"

#include "Decoder.h"
#include "LibraryNotifications.h"
#include "PIEditControlView.h"
#include "PIImageView.h"
#include "PIPreview.h"
#include "PIPreviewController.h"

#include <QApplication>
#include <QLabel>
#include <QPointer>
#include <QTest>
#include <QToolButton>

namespace {

/// The preview of a folder of three photos, red, green and blue.
struct PreviewDesk : UndoHouse
{
    QTemporaryDir dir;
    QWidget window;
    PIGroup::PhotoList photos;
    QPointer<PIPreviewController> controller;

    explicit PreviewDesk(bool refuses = false)
    {
        Decoder::initialize();
        recorder.refuses = refuses;
        const std::pair<const char *, Qt::GlobalColor> pictures[] = {
            {"a.png", Qt::red}, {"b.png", Qt::green}, {"c.png", Qt::blue}};
        for (const auto &[name, color] : pictures) {
            QImage pixels(400, 300, QImage::Format_RGB32);
            pixels.fill(color);
            const QString path = dir.filePath(QString::fromLatin1(name));
            (void)pixels.save(path);
            photos << std::make_shared<PIPhoto>(library.fileRefs().fileRefForPath(path));
        }
        a->photos() = photos;
        library.setDirty(false);
        window.setGeometry(0, 0, 40, 40); // away from the pointer
        window.show();
        controller = PIPreviewController::preview(refuses ? editor : undoable, photos, QStringLiteral("A"), window);
        (void)QTest::qWaitForWindowActive(controller);
    }
    [[nodiscard]] PIPreview &view() const { return controller->view(); }
    [[nodiscard]] PIEditControlView &strip() const { return *view().findChild<PIEditControlView *>(); }
    [[nodiscard]] QColor centre() const { return view().grab().toImage().pixelColor(view().rect().center()); }
    void key(Qt::Key pressed) const { QTest::keyClick(&view(), pressed); }
    /// Not by the platform's pointer, which may be over what another test has left.
    void movePointer() const
    {
        for (const int x : {60, 100, 140})
            QTest::mouseMove(controller->windowHandle(), view().mapTo(controller.data(), QPoint(x, 100)));
    }
    void click(const QString &toolTip) const
    {
        for (auto *button : strip().findChildren<QToolButton *>()) {
            if (button->toolTip() == toolTip)
                return QTest::mouseClick(button, Qt::LeftButton);
        }
        QFAIL(qPrintable(toolTip));
    }
    [[nodiscard]] QStringList toolTips() const
    {
        QStringList texts;
        for (qsizetype i = 0; i < strip().numberOfControls(); ++i)
            texts << strip().toolTipForControlIndex(i);
        return texts;
    }
};

}

class TestPreview : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void itFillsTheScreenWithTheFirstPhotoOnBlack()
    {
        PreviewDesk desk;
        QVERIFY(desk.controller->isFullScreen());
        QCOMPARE(desk.controller->windowModality(), Qt::ApplicationModal);
        QCOMPARE(desk.controller->screen(), desk.window.screen());
        QCOMPARE(desk.controller->windowTitle(), QStringLiteral("A  —  a  —  1 of 3"));
        QTRY_COMPARE(desk.view().state(), PhotoView::State::Sharp);
        QCOMPARE(desk.centre(), QColor(Qt::red));
        QCOMPARE(desk.view().grab().toImage().pixelColor(3, 3), QColor(Qt::black));
        QVERIFY(!desk.strip().isVisible());
        QCOMPARE(desk.view().cursor().shape(), Qt::BlankCursor);
    }

    void keysStep_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<int>("fromFirst");
        QTest::addColumn<int>("fromLast");
        QTest::newRow("left") << int(Qt::Key_Left) << 2 << 1;
        QTest::newRow("right") << int(Qt::Key_Right) << 1 << 0;
        QTest::newRow("up") << int(Qt::Key_Up) << 0 << 0;
        QTest::newRow("down") << int(Qt::Key_Down) << 2 << 2;
        QTest::newRow("home") << int(Qt::Key_Home) << 0 << 0;
        QTest::newRow("end") << int(Qt::Key_End) << 2 << 2;
        QTest::newRow("another") << int(Qt::Key_X) << 0 << 2;
    }
    void keysStep()
    {
        QFETCH(int, key);
        PreviewDesk desk;
        desk.key(Qt::Key(key));
        QTEST(int(desk.view().photos().currentIndex()), "fromFirst");
        desk.view().showPhoto(2);
        desk.key(Qt::Key(key));
        QTEST(int(desk.view().photos().currentIndex()), "fromLast");
        QCOMPARE(desk.view().photo(), desk.photos.at(desk.view().photos().currentIndex()));
    }

    void theStripComesWithThePointerAndGoesWithTheKeys()
    {
        PreviewDesk desk;
        QCOMPARE(desk.toolTips(), (QStringList{QStringLiteral("Jump to first photo; or type home"),
                                               QStringLiteral("Jump to previous photo; or type ←"),
                                               QStringLiteral("Close preview window; or type ESC"),
                                               QStringLiteral("Toggle mark; or type spacebar"),
                                               QStringLiteral("Jump to next photo; or type →"),
                                               QStringLiteral("Jump to last photo; or type end")}));
        QTest::mouseMove(&desk.view(), {100, 100}); // came up under the pointer
        QVERIFY(!desk.strip().isVisible());
        desk.movePointer();
        QVERIFY(desk.strip().isVisible());
        QVERIFY(desk.view().cursor().shape() != Qt::BlankCursor);
        const QStringList toolTips = desk.toolTips();
        const QList<int> shown{2, 0, 1, 0}; // after last, next, next, first
        int at = 0;
        for (const int control : {5, 4, 4, 0}) {
            desk.click(toolTips.at(control));
            QCOMPARE(int(desk.view().photos().currentIndex()), shown.at(at++));
            QVERIFY(desk.strip().isVisible());
        }
        desk.key(Qt::Key_Right);
        QVERIFY(!desk.strip().isVisible());
        QCOMPARE(desk.view().cursor().shape(), Qt::BlankCursor);
        desk.movePointer();
        QTRY_VERIFY(!desk.strip().isVisible()); // it rests
    }

    void theMarkIsToggled()
    {
        PreviewDesk desk;
        QList<bool> redrawn;
        const auto observer = desk.notifications.observe(kThumbnailNotification, [&](const NotificationObject &object) {
            redrawn << object.isSameAs(desk.photos.first());
        });
        QVERIFY(desk.undoable.newGroup());
        desk.key(Qt::Key_Space);
        QVERIFY(desk.photos.first()->isMarked());
        desk.manager.undo(); // of what was done before
        QVERIFY(!desk.manager.isUndoAvailable());
        QVERIFY(desk.photos.first()->isMarked() && desk.library.isDirty());
        QCOMPARE(desk.controller->windowTitle(), QStringLiteral("A  —  ✽ a ✽  —  1 of 3"));
        desk.click(QStringLiteral("Toggle mark; or type spacebar"));
        QVERIFY(!desk.photos.first()->isMarked());
        QCOMPARE(desk.manager.validateState(UndoDirection::Undo).title, QStringLiteral("Undo Mark"));
        QCOMPARE(desk.controller->windowTitle(), QStringLiteral("A  —  a  —  1 of 3"));
        QCOMPARE(redrawn, (QList<bool>{true, true}));

        PreviewDesk refusing(/*refuses=*/true);
        refusing.view().controlClicked(6);
        QVERIFY(!refusing.photos.first()->isMarked());
        for (const int unknown : {0, 4, 7, 9})
            refusing.view().controlClicked(unknown);
        QCOMPARE(int(refusing.view().photos().currentIndex()), 0);
    }

    void itIsClosed_data()
    {
        QTest::addColumn<bool>("byKey");
        QTest::newRow("Escape, though the strip is shown") << true;
        QTest::newRow("the control") << false;
    }
    void itIsClosed()
    {
        QFETCH(bool, byKey);
        PreviewDesk desk;
        desk.movePointer();
        if (byKey)
            desk.key(Qt::Key_Escape);
        else
            desk.view().controlClicked(5);
        QTRY_VERIFY(!desk.controller);
        QVERIFY(!QApplication::activeModalWidget());
    }

    void nothingOpensForNothing()
    {
        PreviewDesk desk;
        QVERIFY(!PIPreviewController::preview(desk.undoable, {}, QStringLiteral("A"), desk.window));
        const FakeAlerts alerts;
        PIPreview empty(desk.undoable);
        for (const Qt::Key key : {Qt::Key_Left, Qt::Key_Right, Qt::Key_Home, Qt::Key_End})
            QTest::keyClick(&empty, key);
        QCOMPARE(alerts.beeps, 4);
        QTest::keyClick(&empty, Qt::Key_Space);
        empty.controlClicked(6);
        QVERIFY(!empty.photo());
    }

    void aLongTitleKeepsBothEnds()
    {
        PreviewDesk desk;
        PIPreview narrow(desk.undoable);
        narrow.resize(300, 200);
        narrow.setPhotos(desk.photos, QString(100, u'W'));
        const auto *title = narrow.findChild<QLabel *>(QStringLiteral("PreviewTitle"));
        QVERIFY(title->text().startsWith(u'W') && title->text().endsWith(QLatin1String("1 of 3")));
        QVERIFY(narrow.rect().contains(title->geometry()) && title->width() >= title->sizeHint().width());
        narrow.resize(3000, 200);
        narrow.showPhoto(1);
        QVERIFY(title->text().startsWith(QString(100, u'W')));
    }

    void aMissingPhotoIsToldOfAndLeftBehind()
    {
        PreviewDesk desk;
        QVERIFY(QFile::remove(desk.photos.at(1)->fileRef()->path()));
        desk.key(Qt::Key_Right);
        QTRY_COMPARE(desk.view().state(), PhotoView::State::Missing);
        desk.key(Qt::Key_Right);
        QTRY_COMPARE(desk.view().state(), PhotoView::State::Sharp);
        QCOMPARE(desk.centre(), QColor(Qt::blue));
    }

    void aCropInProgressIsAcceptedFirst()
    {
        PreviewDesk desk;
        desk.controller->close();
        PIImageView image(desk.undoable);
        image.resize(500, 420);
        image.show();
        image.photoWasSelected(desk.photos.first());
        image.startCrop();
        QTRY_VERIFY(!image.cropRect().isEmpty());
        QPointer<PIPreviewController> preview =
            PIPreviewController::preview(desk.undoable, desk.photos, QStringLiteral("A"), desk.window);
        QVERIFY(!image.isCropping());
        QCOMPARE(desk.photos.first()->cropRect(), QRectF(0, 0, 400, 300));
        preview->close();
    }
};

REGISTER_TEST(TestPreview)
#include "TestPreview.moc"
