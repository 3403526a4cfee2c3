#include "CameraFile.h"
#include "TestRunner.h"

#include "Decoder.h"
#include "FileFinder.h"
#include "PhotoLibrary.h"
#include "PhotoView.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>
#include <QWheelEvent>

namespace {

using State = PhotoView::State;

struct Desk
{
    QTemporaryDir dir;
    NotificationCenter notifications;
    PathFileFinder finder;
    PhotoLibrary library{dir.path(), finder, notifications};
    PixelPool pool{64 << 20};
    PhotoView view{library.thumbnails(), library.imageCache(), pool};

    Desk()
    {
        Decoder::initialize();
        view.resize(400, 400);
    }
    void show()
    {
        view.show();
        (void)QTest::qWaitForWindowExposed(&view);
    }
    void showSharp(const std::shared_ptr<PIPhoto> &photo)
    {
        show();
        view.setPhoto(photo);
        QTRY_COMPARE(view.state(), State::Sharp);
    }
    std::shared_ptr<PIPhoto> photo(const QString &name)
    {
        return std::make_shared<PIPhoto>(library.fileRefs().fileRefForPath(dir.filePath(name)));
    }
    std::shared_ptr<PIPhoto> file(const QString &name, const QByteArray &bytes)
    {
        QFile file(dir.filePath(name));
        return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() ? photo(name) : nullptr;
    }
    /// Stripes of one pixel, which only a rendering at full resolution shows as such: of two colours that mix to
    /// another.
    std::shared_ptr<PIPhoto> stripes(const QString &name, QSize size, QRgb one, QRgb other)
    {
        QImage image(size, QImage::Format_RGB32);
        for (int y = 0; y < size.height(); ++y) {
            for (int x = 0; x < size.width(); ++x)
                image.setPixel(x, y, x % 2 ? one : other);
        }
        return image.save(dir.filePath(name)) ? photo(name) : nullptr;
    }
    void makeThumbnail(PIPhoto &photo)
    {
        (void)library.thumbnails().thumbnail(photo);
        library.thumbnails().waitUntilIdle();
        QTRY_VERIFY(!photo.isWaitingForThumbnail());
    }
    int grey(int x) { return view.grab().toImage().pixelColor(x, 200).red(); }
    QColor centre() { return view.grab().toImage().pixelColor(200, 200); }
};

constexpr QRgb kBlack = 0xff000000;
constexpr QRgb kWhite = 0xffffffff;

}

class TestPhotoView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theThumbnailComesAtOnceAndTheSharpPictureAfter()
    {
        Desk desk;
        const auto photo = desk.stripes(QStringLiteral("a.png"), {400, 300}, kBlack, kWhite);
        desk.makeThumbnail(*photo);
        desk.show();
        desk.view.setPhoto(photo);
        QCOMPARE(desk.view.state(), State::Preview);
        QCOMPARE(desk.view.pictureRect(), QRectF(0, 50, 400, 300));
        const int blurred = desk.centre().red();
        QVERIFY2(blurred > 60 && blurred < 200, qPrintable(QString::number(blurred)));
        QTRY_COMPARE(desk.view.state(), State::Sharp);
        QCOMPARE(desk.view.pictureRect(), QRectF(0, 50, 400, 300)); // nothing jumps
        const int sharp = desk.centre().red();
        QVERIFY2(sharp < 5 || sharp > 250, qPrintable(QString::number(sharp)));
    }

    void theFilesOwnSmallPictureStandsInForTheThumbnail()
    {
        Desk desk;
        const auto photo =
            desk.file(QStringLiteral("a.jpg"), CameraFile::twoColors(QColor(Qt::red), QColor(Qt::green)));
        desk.show();
        QList<QColor> shown;
        QList<QRectF> places;
        connect(&desk.view, &PhotoView::stateChanged, &desk.view, [&] {
            shown << desk.centre();
            places << desk.view.pictureRect();
        });
        desk.view.setPhoto(photo);
        QVERIFY(desk.view.pictureRect().isEmpty()); // the file is not read by the main thread
        QTRY_COMPARE(desk.view.state(), State::Sharp);
        QCOMPARE(shown.size(), 3);
        QVERIFY(shown.at(1).green() > 90 && shown.at(1).red() < 20);
        QVERIFY(shown.at(2).red() > 240 && shown.at(2).green() < 20);
        QCOMPARE(places.at(1), places.at(2));

        photo->setCropRect({0, 0, 400, 300}); // of which the small picture knows nothing
        desk.library.thumbnails().updateForFilters(*photo);
        shown.clear();
        desk.view.setPhoto(nullptr);
        desk.view.setPhoto(photo);
        QTRY_COMPARE(desk.view.state(), State::Sharp);
        QVERIFY(std::none_of(shown.begin(), shown.end(), [](const QColor &color) { return color.red() < 20; }));
    }

    void theNewestPhotoWins()
    {
        Desk desk;
        const auto broken = desk.file(QStringLiteral("text.jpg"), "this is no picture");
        const auto first = desk.stripes(QStringLiteral("a.png"), {1200, 900}, 0xffff0000, 0xffff0000);
        const auto second = desk.stripes(QStringLiteral("b.png"), {1200, 900}, 0xff0000ff, 0xff0000ff);
        desk.show();
        QList<QColor> sharp;
        connect(&desk.view, &PhotoView::stateChanged, &desk.view, [&] {
            QVERIFY(desk.view.state() != State::Unreadable);
            if (desk.view.state() == State::Sharp)
                sharp << desk.centre();
        });
        for (int turn = 0; turn < 10; ++turn) {
            desk.view.setPhoto(first);
            desk.view.setPhoto(broken);
            desk.view.setPhoto(second);
        }
        QTRY_COMPARE(sharp.size(), 1);
        QCOMPARE(sharp.first(), QColor(Qt::blue));
        desk.view.setPhoto(nullptr);
        QCOMPARE(desk.view.state(), State::Empty);
        desk.view.setPhoto(second); // still in the pool: no waiting
        QCOMPARE(desk.view.state(), State::Sharp);
    }

    void sharpAgainAfterAResize()
    {
        Desk desk;
        const auto photo = desk.stripes(QStringLiteral("a.png"), {300, 300}, kBlack, kWhite);
        desk.showSharp(photo);
        desk.view.resize(200, 260);
        QCOMPARE(desk.view.pictureRect(), QRectF(0, 30, 200, 200));
        desk.view.resize(600, 400);
        QCOMPARE(desk.view.pictureRect(), QRectF(150, 50, 300, 300));
        const auto left = [&] { return desk.view.grab().toImage().pixelColor(200, 200).red(); };
        QTRY_VERIFY(left() < 5 || left() > 250);
    }

    void aChangedCropIsTakenUp()
    {
        Desk desk;
        const auto photo = desk.stripes(QStringLiteral("a.png"), {400, 300}, 0xffff0000, 0xffff0000);
        desk.showSharp(photo);
        photo->setCropRect({0, 0, 100, 300});
        desk.library.thumbnails().updateForFilters(*photo);
        desk.view.reload();
        QCOMPARE(desk.view.state(), State::Preview);
        QCOMPARE(desk.view.pictureRect(), QRectF(150, 50, 100, 300));
        QTRY_COMPARE(desk.view.state(), State::Sharp);
        QSignalSpy changed(&desk.view, &PhotoView::stateChanged);
        desk.view.reload();
        desk.view.setPhoto(photo);
        QCOMPARE(changed.count(), 0); // nothing has changed since
    }

    void whatCannotBeShownIsSaid_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<State>("state");
        QTest::newRow("missing") << QStringLiteral("nowhere.jpg") << State::Missing;
        QTest::newRow("no picture") << QStringLiteral("text.jpg") << State::Unreadable;
    }

    void whatCannotBeShownIsSaid()
    {
        QFETCH(QString, name);
        Desk desk;
        QVERIFY(desk.file(QStringLiteral("text.jpg"), "this is no picture"));
        desk.show();
        const QImage empty = desk.view.grab().toImage();
        desk.view.setPhoto(desk.photo(name));
        QFETCH(State, state);
        QTRY_COMPARE(desk.view.state(), state);
        QVERIFY(desk.view.accessibleDescription().contains(name));
        QVERIFY(desk.view.grab().toImage() != empty);
    }

    void aFileThatWasCutShortShowsWhatItHas()
    {
        Desk desk;
        const QByteArray whole = CameraFile::jpeg(QColor(Qt::red), {800, 600});
        desk.showSharp(desk.file(QStringLiteral("whole.jpg"), whole));
        const QImage sound = desk.view.grab().toImage();
        desk.view.setPhoto(desk.file(QStringLiteral("cut.jpg"), whole.left(whole.size() * 3 / 4)));
        QTRY_COMPARE(desk.view.state(), State::Sharp);
        const QImage cut = desk.view.grab().toImage();
        QCOMPARE(cut.pixelColor(200, 60), sound.pixelColor(200, 60));      // the part
        QVERIFY(cut.copy(0, 360, 400, 40) != sound.copy(0, 360, 400, 40)); // the note
        desk.view.setPhoto(desk.file(QStringLiteral("empty.jpg"), {}));
        QTRY_COMPARE(desk.view.state(), State::Unreadable);
    }

    void theWheelZoomsToTheFullResolutionAndBack()
    {
        Desk desk;
        const auto photo = desk.stripes(QStringLiteral("a.png"), {1600, 1200}, kBlack, kWhite);
        desk.showSharp(photo);
        QVERIFY(desk.view.isFitted() && std::abs(desk.grey(200) - 188) < 70);
        const auto turn = [&](int angle) {
            QWheelEvent event({250, 200}, desk.view.mapToGlobal(QPointF(250, 200)), {}, {0, angle}, Qt::NoButton,
                              Qt::NoModifier, Qt::NoScrollPhase, false);
            QCoreApplication::sendEvent(&desk.view, &event);
        };
        for (int notch = 0; notch < 30 && desk.view.scale() < 1; ++notch)
            turn(120);
        QCOMPARE(desk.view.scale(), 1.0);
        QVERIFY(std::abs(desk.view.pictureRect().x() - (250 - 1000)) < 8); // the point at the pointer stays
        QTRY_VERIFY(desk.view.isSharp());
        QVERIFY(desk.grey(200) < 5 || desk.grey(200) > 250);
        QCOMPARE(desk.grey(202), desk.grey(200));
        QVERIFY(std::abs(desk.grey(201) - desk.grey(200)) > 245); // pixel on pixel
        for (int notch = 0; notch < 30 && !desk.view.isFitted(); ++notch)
            turn(-120);
        QVERIFY(desk.view.isFitted() && desk.view.isSharp());
        QCOMPARE(desk.view.pictureRect(), QRectF(0, 50, 400, 300));
    }

    void keysAndTheMousePan()
    {
        Desk desk;
        const auto photo = desk.stripes(QStringLiteral("a.png"), {1600, 1200}, kBlack, kWhite);
        desk.showSharp(photo);
        const QPointF fitted = desk.view.pictureRect().topLeft();
        const auto key = [&](Qt::Key pressed) { QTest::keyClick(&desk.view, pressed); };
        key(Qt::Key_Right); // nothing to pan
        QCOMPARE(desk.view.pictureRect().topLeft(), fitted);
        key(Qt::Key_1);
        QCOMPARE(desk.view.scale(), 1.0);
        const QPointF before = desk.view.pictureRect().topLeft();
        key(Qt::Key_Right);
        key(Qt::Key_Up);
        QCOMPARE(desk.view.pictureRect().topLeft(), before + QPointF(-50, 50));
        QTest::mousePress(&desk.view, Qt::LeftButton, {}, {200, 200});
        QTest::mouseMove(&desk.view, {230, 190});
        QTest::mouseRelease(&desk.view, Qt::LeftButton, {}, {230, 190});
        QCOMPARE(desk.view.pictureRect().topLeft(), before + QPointF(-20, 40));
        key(Qt::Key_Minus);
        QCOMPARE(desk.view.scale(), 0.8);
        key(Qt::Key_Plus);
        QCOMPARE(desk.view.scale(), 1.0);
        key(Qt::Key_0);
        QVERIFY(desk.view.isFitted());
        QTest::mouseDClick(&desk.view, Qt::LeftButton, {}, {200, 200});
        QCOMPARE(desk.view.scale(), 1.0);
        desk.view.setPhoto(desk.stripes(QStringLiteral("b.png"), {1600, 1200}, kBlack, kWhite));
        QVERIFY(desk.view.isFitted()); // another photo is seen whole
    }

    void whatComesNextIsSharpAtOnce()
    {
        Desk desk;
        QList<std::shared_ptr<PIPhoto>> photos;
        for (const char *name : {"a.png", "b.png", "c.png"})
            photos << desk.stripes(QString::fromLatin1(name), {1200, 900}, 0xffff0000, 0xffff0000);
        photos.at(1)->setCropRect({0, 0, 600, 450});
        desk.show();
        desk.view.setPhoto(photos.at(0), {photos.at(1)});
        const auto isPrepared = [&](int index) {
            const Image image = photos.at(index)->knownImage(desk.library.imageCache());
            return !image.isNull() && !desk.pool.find(PixelRequest{image, {400, 300}}.key()).isNull();
        };
        QTRY_VERIFY(isPrepared(1));
        QCOMPARE(desk.view.state(), State::Sharp); // before anything was prepared
        const Image another = Image::fromPixels(desk.view.grab().toImage());
        for (int i = 0; i < ImageCache::kCapacity; ++i) // of photos seen since
            desk.library.imageCache().storeImage(another, QString::number(i));
        QVERIFY(photos.at(1)->knownImage(desk.library.imageCache()).isNull());
        desk.view.setPhoto(photos.at(1), {photos.at(2)});
        QCOMPARE(desk.view.state(), State::Sharp);
        QSignalSpy changed(&desk.view, &PhotoView::stateChanged);
        desk.view.reload(); // as when it is marked
        QCOMPARE(changed.count(), 0);

        desk.view.setPhoto(photos.at(2)); // whose picture is being made: it is taken when it is there
        QTRY_COMPARE(desk.view.state(), State::Sharp);
        photos.at(1)->setCropRect({0, 0, 300, 450});
        desk.library.thumbnails().updateForFilters(*photos.at(1));
        desk.view.setPhoto(photos.at(1)); // as it is edited now
        QCOMPARE(desk.view.state(), State::Preview);
        QTRY_COMPARE(desk.view.state(), State::Sharp);
        QCOMPARE(desk.view.pictureRect().size(), QSizeF(267, 400));
    }

    void whatIsBeingPreparedGoesOnAfterAStep()
    {
        Desk desk;
        QList<std::shared_ptr<PIPhoto>> photos;
        for (const char *name : {"a.png", "b.png", "c.png"})
            photos << desk.stripes(QString::fromLatin1(name), {1200, 900}, 0xffff0000, 0xffff0000);
        PhotoPicture picture(desk.library.thumbnails(), desk.library.imageCache(), desk.pool, [] {
            return PictureRoom{{400, 400}, 1};
        });
        picture.setPhoto(photos.at(1));
        QTRY_COMPARE(picture.state(), State::Sharp);
        picture.setPhoto(photos.at(0));
        QTRY_COMPARE(picture.state(), State::Sharp);
        picture.setPhoto(photos.at(0), {photos.at(1), photos.at(2)});
        const QDeadlineTimer patience(20'000);
        while (!picture.isPreparing(*photos.at(2)) && !patience.hasExpired()) // no event ends it meanwhile
            QThread::yieldCurrentThread();
        QVERIFY(picture.isPreparing(*photos.at(2)));
        picture.setPhoto(photos.at(1), {photos.at(2), photos.at(0)});
        QCOMPARE(picture.state(), State::Sharp);
        QVERIFY(picture.isPreparing(*photos.at(2)));
    }

    void aScreenWithFinerPixelsShowsMore()
    {
        struct MovingView final : PhotoView
        {
            using PhotoView::PhotoView;
            using PhotoView::picture;
            int ratio = 1;
            int metric(PaintDeviceMetric which) const override
            {
                return which == PdmDevicePixelRatioScaled ? int(ratio * devicePixelRatioFScale())
                                                          : PhotoView::metric(which);
            }
        };
        Desk desk;
        const auto photo = desk.stripes(QStringLiteral("a.png"), {1200, 900}, kBlack, kWhite);
        MovingView view(desk.library.thumbnails(), desk.library.imageCache(), desk.pool);
        view.resize(400, 400);
        view.setPhoto(photo);
        view.show();
        QTRY_COMPARE(view.picture().size(), QSize(400, 300));
        QTRY_VERIFY(view.isSharp());
        view.ratio = 2;
        view.update();
        QTRY_COMPARE(view.picture().size(), QSize(800, 600));
    }

    void aFileThatIsWrittenAnewMeanwhile()
    {
        Desk desk;
        const auto photo = desk.stripes(QStringLiteral("a.png"), {400, 300}, 0xffff0000, 0xffff0000);
        QVERIFY(!photo->renderedImage(desk.library.imageCache()).isNull());
        desk.view.setPhoto(photo); // by the handle from before; out of sight, so nothing is made of it
        QVERIFY(desk.stripes(QStringLiteral("a.png"), {500, 300}, 0xff0000ff, 0xff0000ff));
        connect(&desk.view, &PhotoView::stateChanged, &desk.view,
                [&] { QVERIFY(desk.view.state() != State::Unreadable); });
        desk.show();
        QTRY_COMPARE(desk.view.state(), State::Sharp);
        QCOMPARE(desk.centre(), QColor(Qt::blue));
        QCOMPARE(desk.view.pictureRect().size(), QSizeF(400, 240));
    }

    void aFileThatGoesBeforeItIsRead()
    {
        Desk desk;
        const auto photo = desk.stripes(QStringLiteral("a.png"), {400, 300}, 0xffff0000, 0xffff0000);
        desk.view.setPhoto(photo); // not shown yet, so nothing is opened
        QCOMPARE(desk.view.state(), State::Preview);
        QVERIFY(QFile::remove(desk.dir.filePath(QStringLiteral("a.png"))));
        desk.show();
        QTRY_COMPARE(desk.view.state(), State::Missing);
    }
};

REGISTER_TEST(TestPhotoView)
#include "TestPhotoView.moc"
