#include "CameraFile.h"
#include "TestRunner.h"

#include "Decoder.h"
#include "FileFinder.h"
#include "PhotoLibrary.h"
#include "PhotoView.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

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
        desk.show();
        desk.view.setPhoto(photo);
        QTRY_COMPARE(desk.view.state(), State::Sharp);
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
        desk.show();
        desk.view.setPhoto(photo);
        QTRY_COMPARE(desk.view.state(), State::Sharp);
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
