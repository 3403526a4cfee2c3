#include "FittedRect.h"
#include "LibrarySupport.h"
#include "PhotosAhead.h"
#include "TestRunner.h"

namespace {

const PictureRoom kRoom{{100, 100}, 2};

/// Photos of 400 x 300 pixels, and what prepares them.
struct Ahead
{
    TestLibrary test;
    PixelPool pool{64 << 20};
    QStringList finished; ///< guids
    PhotosAhead ahead{test.library.imageCache(), pool, [this](const PIPhoto &photo) { finished << photo.guid(); }};
    PhotosAhead::PhotoList photos;

    explicit Ahead(int count)
    {
        test.addFolder();
        for (int i = 0; i < count; ++i) {
            QImage image(400, 300, QImage::Format_RGB32);
            image.fill(Qt::red);
            const QString path = test.path(QStringLiteral("%1.png").arg(i));
            photos << (image.save(path) ? test.addPhoto(path) : nullptr);
        }
    }
    /// Whether the photo, opened now, has the pixels ready.
    [[nodiscard]] bool isReady(int index, QSize size = {200, 150})
    {
        const Image image = photos.at(index)->knownImage(test.library.imageCache());
        return !image.isNull() && pool.find(PixelRequest{image, size}.key()).size() == size;
    }
    [[nodiscard]] qsizetype readyCount()
    {
        qsizetype count = 0;
        for (int i = 0; i < photos.size(); ++i)
            count += isReady(i);
        return count;
    }
};

}

class TestPhotosAhead : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void picturesAreThereBeforeAnybodyAsks()
    {
        Ahead desk(3);
        desk.photos.at(1)->setCropRect({0, 0, 80, 60});
        desk.ahead.prepare(desk.photos, {});
        QCOMPARE(desk.ahead.count(), 0); // no room to show them in
        desk.ahead.prepare(desk.photos, kRoom);
        QCOMPARE(desk.ahead.count(), 3);
        QTRY_COMPARE(desk.finished.size(), 3);
        QVERIFY(desk.isReady(0) && desk.isReady(1, {80, 60}) && desk.isReady(2));
        QVERIFY(!desk.ahead.isUnderWay(*desk.photos.at(2)));
        desk.ahead.prepare(desk.photos, kRoom);
        QCOMPARE(desk.ahead.count(), 0); // nothing to do
        desk.ahead.prepare(desk.photos, {{50, 50}, 2});
        QCOMPARE(desk.ahead.count(), 2); // the cropped one has no more pixels
        QTRY_VERIFY(desk.isReady(0, {100, 75}) && desk.isReady(2, {100, 75}));
    }

    void onlyTheLastWishCounts()
    {
        Ahead desk(12);
        desk.ahead.prepare(desk.photos, kRoom);
        QCOMPARE(desk.ahead.count(), PhotosAhead::kMost);
        desk.ahead.prepare({desk.photos.at(1), desk.photos.at(9)}, kRoom);
        desk.ahead.prepare({desk.photos.at(9)}, kRoom);
        QTRY_COMPARE(desk.finished, QStringList{desk.photos.at(9)->guid()});
        QCOMPARE(desk.readyCount(), 1);
        desk.ahead.prepare(desk.photos, kRoom);
        desk.ahead.cancel();
        QCOMPARE(desk.ahead.count(), 0);
    }

    void anEditLeavesNothingBehind()
    {
        Ahead desk(2);
        desk.ahead.prepare(desk.photos, kRoom);
        desk.photos.at(0)->setCropRect({0, 0, 300, 225});
        QVERIFY(!desk.ahead.isUnderWay(*desk.photos.at(0))); // not of the photo as it is now
        QTRY_COMPARE(desk.finished.size(), 2);
        QVERIFY(!desk.isReady(0) && desk.isReady(1));

        desk.photos.at(1)->setCropRect({0, 0, 300, 225});
        desk.test.library.pictureChanged(*desk.photos.at(1));
        QVERIFY(!desk.isReady(1));
        desk.ahead.prepare({desk.photos.at(1)}, kRoom);
        QTRY_VERIFY(desk.isReady(1));
    }

    void lostAndDamagedFilesHoldNothingUp()
    {
        Ahead desk(3);
        desk.test.finder.lost << desk.photos.at(0)->fileRef()->path();
        QVERIFY(!desk.photos.at(0)->fileRef()->verify());
        QFile file(desk.photos.at(1)->fileRef()->path());
        QVERIFY(file.open(QFile::WriteOnly) && file.write("this is no picture") > 0);
        file.close();
        desk.ahead.prepare(desk.photos, kRoom);
        QTRY_COMPARE(desk.finished.size(), 2);
        QCOMPARE(desk.readyCount(), 1);
    }

    void nothingComesAfterTheEnd()
    {
        auto desk = std::make_unique<Ahead>(4);
        QStringList finished;
        {
            PhotosAhead ahead(desk->test.library.imageCache(), desk->pool,
                              [&](const PIPhoto &photo) { finished << photo.guid(); });
            ahead.prepare(desk->photos, kRoom);
        }
        desk.reset();
        QCoreApplication::processEvents();
        QVERIFY(finished.isEmpty());
    }
};

REGISTER_TEST(TestPhotosAhead)
#include "TestPhotosAhead.moc"
