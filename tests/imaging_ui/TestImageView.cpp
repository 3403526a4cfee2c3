#include "TestRunner.h"

#include "../editing/UndoHouse.h"

#include "CropSizes.h"
#include "Decoder.h"
#include "LibraryNotifications.h"
#include "PIEditControlView.h"
#include "PIImageView.h"

#include <QPainter>
#include <QScopedValueRollback>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>

namespace {

/// The view on the first of two photos of 400 x 300 pixels, red at the left and blue at the right.
struct CropDesk : UndoHouse
{
    QScopedValueRollback<int> chosenSize{g_cropSizeIndex, 0};
    QTemporaryDir dir;
    std::unique_ptr<PIImageView> image;
    std::shared_ptr<PIPhoto> photo = picture(QStringLiteral("a.png"));
    std::shared_ptr<PIPhoto> other = picture(QStringLiteral("b.png"));

    explicit CropDesk(bool refuses = false)
    {
        Decoder::initialize();
        recorder.refuses = refuses;
        a->photos() << photo << other;
        image = std::make_unique<PIImageView>(refuses ? editor : undoable);
        image->resize(500, 420);
        image->show();
        image->activateWindow();
        (void)QTest::qWaitForWindowActive(image.get());
    }
    std::shared_ptr<PIPhoto> photoAt(const QString &name)
    {
        return std::make_shared<PIPhoto>(library.fileRefs().fileRefForPath(dir.filePath(name)));
    }
    std::shared_ptr<PIPhoto> picture(const QString &name)
    {
        QImage pixels(400, 300, QImage::Format_RGB32);
        pixels.fill(Qt::red);
        QPainter(&pixels).fillRect(200, 0, 200, 300, Qt::blue);
        return pixels.save(dir.filePath(name)) ? photoAt(name) : nullptr;
    }
    /// Shows the photo and begins, to the point where the sharp whole picture stands there.
    void start(const std::shared_ptr<PIPhoto> &shown)
    {
        image->photoWasSelected(shown);
        image->startCrop();
        image->setFocus();
        QTRY_COMPARE(image->state(), PhotoView::State::Sharp);
        QCOMPARE(image->pictureRect().size(), QSizeF(400, 300)); // a pixel is a unit
    }
    [[nodiscard]] QPoint inView(QPoint pixel) const { return image->pictureRect().topLeft().toPoint() + pixel; }
    void drag(QPoint from, QPoint to) const
    {
        QTest::mousePress(image.get(), Qt::LeftButton, {}, inView(from));
        QTest::mouseMove(image.get(), inView((from + to) / 2));
        QTest::mouseMove(image.get(), inView(to));
        QTest::mouseRelease(image.get(), Qt::LeftButton, {}, inView(to));
    }
    void key(Qt::Key pressed) const { QTest::keyClick(image.get(), pressed); }
    [[nodiscard]] QColor pixel(QPoint at) const { return image->grab().toImage().pixelColor(inView(at)); }
    [[nodiscard]] PIEditControlView &strip() const { return *image->findChild<PIEditControlView *>(); }
    void click(const char *toolTip) const
    {
        for (auto *button : strip().findChildren<QToolButton *>()) {
            if (button->toolTip() == QLatin1String(toolTip))
                return QTest::mouseClick(button, Qt::LeftButton);
        }
        QFAIL(toolTip);
    }
};

const QRectF kWhole(0, 0, 400, 300);
const QRectF kSmall(100, 50, 200, 100);

}

class TestImageView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aCornerIsDraggedAndAccepted()
    {
        CropDesk desk;
        desk.start(desk.photo);
        QCOMPARE(desk.image->cropRect(), kWhole);
        QCOMPARE(desk.pixel({395, 150}), QColor(Qt::blue));
        QSignalSpy changed(desk.image.get(), &PIImageView::cropChanged);
        desk.drag({403, 303}, {253, 203});
        QVERIFY(changed.count() >= 2);
        QCOMPARE(desk.image->cropRect(), QRectF(0, 0, 250, 200));
        QVERIFY(desk.photo->cropRect().isEmpty()); // until it is accepted
        QVERIFY(desk.pixel({395, 100}).blue() < 150);
        QCOMPARE(desk.pixel({240, 100}), QColor(Qt::blue));

        desk.key(Qt::Key_Return);
        QVERIFY(!desk.image->isCropping());
        QCOMPARE(desk.photo->cropRect(), QRectF(0, 0, 250, 200));
        QCOMPARE(desk.manager.validateState(UndoDirection::Undo).title, QStringLiteral("Undo Crop"));
        QTRY_COMPARE(desk.image->pictureRect().size(), QSizeF(250, 200));
        QTRY_COMPARE(desk.image->state(), PhotoView::State::Sharp);
        desk.manager.undo();
        QVERIFY(desk.photo->cropRect().isEmpty());
    }

    void keysAndControls_data()
    {
        QTest::addColumn<int>("key"); // or 0 and a tool tip
        QTest::addColumn<QString>("toolTip");
        QTest::addColumn<QRectF>("stored");
        QTest::addColumn<bool>("goesOn");
        const QRectF moved(110, 45, 200, 100);
        const auto row = [](const char *name, Qt::Key key, const QRectF &stored, bool goesOn) {
            QTest::newRow(name) << int(key) << QString::fromLatin1(name) << stored << goesOn;
        };
        constexpr auto kNoKey = Qt::Key(0);
        row("Return", Qt::Key_Return, moved, false);
        row("Enter", Qt::Key_Enter, moved, false);
        row("Escape", Qt::Key_Escape, kSmall, false);
        row("x", Qt::Key_X, kSmall, true);
        row("Accept the crop", kNoKey, moved, false);
        row("Remove cropping", kNoKey, QRectF(), false);
        row("Flip tall to wide or back", kNoKey, kSmall, true);
        row("Cancel cropping", kNoKey, kSmall, false);
    }
    void keysAndControls()
    {
        QFETCH(int, key);
        QFETCH(QString, toolTip);
        QFETCH(bool, goesOn);
        CropDesk desk;
        desk.photo->setCropRect(kSmall);
        desk.start(desk.photo);
        QCOMPARE(desk.image->cropRect(), kSmall);
        QVERIFY(desk.strip().isVisible());
        desk.drag({200, 100}, {210, 95});
        if (key)
            desk.key(Qt::Key(key));
        else
            desk.click(qPrintable(toolTip));
        QTEST(desk.photo->cropRect(), "stored");
        QCOMPARE(desk.image->isCropping(), goesOn);
        QCOMPARE(desk.strip().isVisible(), goesOn);
    }

    void theStripHasItsControlsInOrder()
    {
        CropDesk desk;
        QStringList toolTips;
        for (const auto *button : desk.strip().findChildren<QToolButton *>())
            toolTips << button->toolTip();
        QCOMPARE(toolTips,
                 (QStringList{QStringLiteral("Accept the crop"), QStringLiteral("Remove cropping"),
                              QStringLiteral("Flip tall to wide or back"), QStringLiteral("Cancel cropping")}));
        QVERIFY(!desk.strip().isVisible());
        desk.image->startCrop(); // of no photo
        QVERIFY(!desk.image->isCropping());
    }

    void keysAreTakenOnlyWithTheFocus()
    {
        CropDesk desk;
        desk.start(desk.photo);
        desk.image->clearFocus();
        desk.key(Qt::Key_Escape);
        QVERIFY(desk.image->isCropping());
    }

    void aChosenSizeHoldsTheCrop()
    {
        CropDesk desk;
        g_cropSizeIndex = 3;
        desk.start(desk.photo);
        QCOMPARE(desk.image->cropRect(), QRectF(0, 16, 400, 266));
        desk.click("Flip tall to wide or back");
        QCOMPARE(desk.image->cropRect(), QRectF(100, 0, 200, 300));
        desk.drag({303, 150}, {283, 150});
        QCOMPARE(desk.image->cropRect(), QRectF(100, 0, 180, 270));
    }

    void theNextPhotoIsCroppedToo()
    {
        CropDesk desk;
        desk.start(desk.photo);
        desk.drag({403, 150}, {303, 150});
        desk.image->photoWasSelected(desk.other);
        QCOMPARE(desk.photo->cropRect(), QRectF(0, 0, 300, 300));
        QVERIFY(desk.image->isCropping());
        QTRY_COMPARE(desk.image->cropRect(), kWhole);
        desk.image->photoWasSelected(desk.photoAt(QStringLiteral("nowhere.png")));
        QCOMPARE(desk.other->cropRect(), kWhole);
        QTRY_VERIFY(!desk.image->isCropping());
    }

    /// The cropped picture stays in its place until the whole one is there, and the other way round.
    void nothingFlickers()
    {
        CropDesk desk;
        desk.photo->setCropRect({100, 50, 200, 150}); // of the shape of the whole
        desk.image->photoWasSelected(desk.photo);
        QTRY_COMPARE(desk.image->state(), PhotoView::State::Sharp);
        desk.image->startCrop();
        QCOMPARE(desk.image->state(), PhotoView::State::Preview);
        QCOMPARE(desk.pixel({150, 120}), QColor(Qt::red));
        QCOMPARE(desk.pixel({250, 120}), QColor(Qt::blue));
        QVERIFY(desk.pixel({50, 120}).red() < 50); // not known yet
        QTRY_COMPARE(desk.image->state(), PhotoView::State::Sharp);
        QVERIFY(desk.pixel({50, 120}).red() > 50); // in the shade
        desk.drag({97, 100}, {147, 100});
        desk.image->setFocus();
        desk.key(Qt::Key_Enter);
        QCOMPARE(desk.image->state(), PhotoView::State::Preview);
        QCOMPARE(desk.pixel({20, 50}), QColor(Qt::red));
        QCOMPARE(desk.pixel({140, 50}), QColor(Qt::blue));
    }

    void othersAcceptTheCrop()
    {
        CropDesk desk;
        desk.notifications.post(kNormalizeNotification); // nothing in progress
        desk.start(desk.photo);
        QVERIFY(desk.photo->cropRect().isEmpty());
        desk.notifications.post(kNormalizeNotification);
        QVERIFY(!desk.image->isCropping());
        QCOMPARE(desk.photo->cropRect(), kWhole);
    }

    void whatIsRefusedGoesOn()
    {
        CropDesk desk(/*refuses=*/true);
        desk.start(desk.photo);
        desk.key(Qt::Key_Return);
        QVERIFY(desk.image->isCropping());
        QVERIFY(desk.photo->cropRect().isEmpty());
    }

    void aPhotoThatLeftTheLibraryKeepsTheHistory()
    {
        CropDesk desk;
        desk.start(desk.photo);
        QVERIFY(desk.record(UndoAction::PhotoList, UndoName::DeletePhoto, desk.a));
        desk.a->photos().removeFirst();
        desk.image->photoWasSelected(desk.other);
        QVERIFY(desk.manager.isUndoAvailable());
        QVERIFY(desk.photo->cropRect().isEmpty());
    }

    void aDamagedFileCannotBeCropped()
    {
        CropDesk desk;
        QFile file(desk.dir.filePath(QStringLiteral("text.png")));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("this is no picture") > 0);
        file.close();
        desk.image->photoWasSelected(desk.photoAt(QStringLiteral("text.png")));
        desk.image->startCrop();
        QTRY_VERIFY(!desk.image->isCropping());
        QCOMPARE(desk.image->state(), PhotoView::State::Unreadable);
        QVERIFY(!desk.image->canCrop());
    }

    void theCursorTellsWhatIsTakenHoldOf_data()
    {
        QTest::addColumn<QPoint>("pixel");
        QTest::addColumn<Qt::CursorShape>("shape");
        QTest::newRow("inside") << QPoint(200, 100) << Qt::SizeAllCursor;
        QTest::newRow("left") << QPoint(96, 100) << Qt::SizeHorCursor;
        QTest::newRow("bottom") << QPoint(200, 154) << Qt::SizeVerCursor;
        QTest::newRow("top left") << QPoint(96, 46) << Qt::SizeFDiagCursor;
        QTest::newRow("top right") << QPoint(304, 46) << Qt::SizeBDiagCursor;
        QTest::newRow("outside") << QPoint(350, 250) << Qt::ArrowCursor;
    }
    void theCursorTellsWhatIsTakenHoldOf()
    {
        QFETCH(QPoint, pixel);
        CropDesk desk;
        desk.photo->setCropRect(kSmall);
        desk.start(desk.photo);
        QTest::mouseMove(desk.image.get(), desk.inView({390, 290}));
        QTest::mouseMove(desk.image.get(), desk.inView(pixel));
        QTEST(desk.image->cursor().shape(), "shape");
    }
};

REGISTER_TEST(TestImageView)
#include "TestImageView.moc"
