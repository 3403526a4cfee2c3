#include "FileDates.h"
#include "LibraryNotifications.h"
#include "LibrarySupport.h"
#include "TestRunner.h"

#include <QPainter>

namespace {

/// A file's left half is red, its right half blue.
QString makePicture(const TestLibrary &test, QSize size, const QString &name = QStringLiteral("picture.png"))
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::blue);
    QPainter(&image).fillRect(0, 0, size.width() / 2, size.height(), Qt::red);
    const QString path = test.path(name);
    return image.save(path) ? path : QString();
}

bool isMostly(const QImage &image, QPoint at, const QColor &color)
{
    const QColor found = image.pixelColor(at);
    return std::abs(found.red() - color.red()) < 40 && std::abs(found.green() - color.green()) < 40 &&
           std::abs(found.blue() - color.blue()) < 40;
}

}

/// Thumbnails in memory, in the cache folder, and in the making.
class TestThumbnailMaker : public QObject
{
    Q_OBJECT

private:
    /// Runs until the job of the photo has ended, and returns what there is then.
    static QImage made(TestLibrary &test, PIPhoto &photo)
    {
        ThumbnailMaker &maker = test.library.thumbnails();
        (void)maker.thumbnail(photo);
        return QTest::qWaitFor([&] { return maker.pendingJobs() == 0; }) ? maker.availableThumbnail(photo) : QImage();
    }

private Q_SLOTS:
    void fitsIntoTheBox_data()
    {
        QTest::addColumn<QSize>("picture");
        QTest::addColumn<QSize>("thumbnail");
        QTest::newRow("small stays") << QSize(100, 50) << QSize(100, 50);
        QTest::newRow("landscape") << QSize(800, 600) << QSize(240, 180);
        QTest::newRow("portrait") << QSize(600, 800) << QSize(180, 240);
        QTest::newRow("rounded down") << QSize(1000, 333) << QSize(240, 79);
        QTest::newRow("a line") << QSize(1000, 1) << QSize(240, 1);
    }
    void fitsIntoTheBox()
    {
        QFETCH(QSize, picture);
        TestLibrary test;
        const auto photo = test.addPhoto(makePicture(test, picture));
        QTEST(made(test, *photo).size(), "thumbnail");
        QCOMPARE(photo->fileRef()->knownPhotoSize(), QSizeF(picture));
    }

    void askedTwiceMadeOnce()
    {
        TestLibrary test;
        ThumbnailMaker &maker = test.library.thumbnails();
        QImage placeholder(1, 1, QImage::Format_RGB32);
        maker.setPlaceholder(placeholder);
        const auto photo = test.addPhoto(makePicture(test, {400, 300}));
        QList<PIPhoto *> told;
        const auto observer = test.notifications.observe(
            kThumbnailNotification, [&](const NotificationObject &object) { told.append(object.as<PIPhoto>()); });
        QCOMPARE(maker.thumbnail(*photo).size(), QSize(1, 1));
        QCOMPARE(maker.thumbnail(*photo).size(), QSize(1, 1));
        QCOMPARE(maker.sequenceCount(), quint64(1));
        QTRY_COMPARE(told, QList<PIPhoto *>({photo.get()}));

        const QImage thumbnail = maker.thumbnail(*photo);
        QCOMPARE(thumbnail.size(), QSize(240, 180));
        QVERIFY(isMostly(thumbnail, {20, 90}, Qt::red) && isMostly(thumbnail, {220, 90}, Qt::blue));
        QCOMPARE(qint64(photo->thumbnailDate()), FileDates::dateOf(maker.thumbnailPath(*photo)).value_or(0));
        QVERIFY(!photo->isWaitingForThumbnail());
        QCOMPARE(maker.sequenceCount(), quint64(1));
        QVERIFY(!test.library.imageCache().imageForGuid(photo->fileRef()->guid()).isNull());
        QVERIFY(!test.library.imageCache().imageForGuid(photo->guid()).isNull());
    }

    void cachedFilesAreBelievedByTheirDate_data()
    {
        QTest::addColumn<int>("secondsLater");
        QTest::addColumn<QByteArray>("content"); // in place of the thumbnail
        QTest::addColumn<bool>("believed");
        QTest::newRow("same date") << 0 << QByteArray() << true;
        QTest::newRow("another date") << 1 << QByteArray() << false;
        QTest::newRow("no picture") << 0 << QByteArray("hello") << false;
        QTest::newRow("no bytes") << 0 << QByteArray("") << false;
        QTest::newRow("too large") << 0 << QByteArray("241") << false;
    }
    void cachedFilesAreBelievedByTheirDate()
    {
        QFETCH(int, secondsLater);
        QFETCH(QByteArray, content);
        QFETCH(bool, believed);
        TestLibrary test;
        const auto photo = test.addPhoto(makePicture(test, {400, 300}));
        QVERIFY(!made(test, *photo).isNull());
        const QString path = test.library.thumbnails().thumbnailPath(*photo);
        if (content == "241") {
            QVERIFY(QImage(241, 100, QImage::Format_RGB32).save(path, "JPG"));
        } else if (!content.isNull()) {
            QFile file(path);
            QVERIFY(file.open(QFile::WriteOnly) && file.write(content) == content.size());
        }
        QVERIFY(FileDates::setDate(path, qint64(photo->thumbnailDate()) + secondsLater));

        ThumbnailMaker restarted(test.folder.path(), test.library.imageCache(), test.notifications);
        QCOMPARE(!restarted.availableThumbnail(*photo).isNull(), believed);
        QCOMPARE(!restarted.thumbnail(*photo).isNull(), believed);
        QCOMPARE(restarted.sequenceCount(), quint64(believed ? 0 : 1));
        QTRY_COMPARE(restarted.pendingJobs(), 0);
        QCOMPARE(restarted.thumbnail(*photo).size(), QSize(240, 180));
    }

    void changedCropRemakesWhateverTheDate()
    {
        TestLibrary test;
        const auto photo = test.addPhoto(makePicture(test, {400, 300}));
        QVERIFY(!made(test, *photo).isNull());
        photo->setCropRect({220, 0, 100, 100});
        test.library.thumbnails().updateForFilters(*photo);
        QVERIFY(test.library.thumbnails().availableThumbnail(*photo).isNull());
        const QImage thumbnail = made(test, *photo);
        QCOMPARE(thumbnail.size(), QSize(100, 100));
        QVERIFY(isMostly(thumbnail, {10, 50}, Qt::blue));
    }

    void cropChangedMeanwhileIsNotOverlooked()
    {
        TestLibrary test;
        ThumbnailMaker &maker = test.library.thumbnails();
        const auto photo = test.addPhoto(makePicture(test, {400, 300}));
        (void)maker.thumbnail(*photo);
        photo->setCropRect({0, 0, 50, 50});
        maker.updateForFilters(*photo);
        int told = 0;
        const auto observer =
            test.notifications.observe(kThumbnailNotification, [&](const NotificationObject &) { ++told; });
        QTRY_COMPARE(told, 1); // so that whoever shows the photo asks again
        QVERIFY(maker.availableThumbnail(*photo).isNull());
        QCOMPARE(made(test, *photo).size(), QSize(50, 50));
    }

    void aRestoredCopyWaitsItsTurn()
    {
        TestLibrary test;
        ThumbnailMaker &maker = test.library.thumbnails();
        const auto photo = test.addPhoto(makePicture(test, {400, 300}));
        const auto copy = photo->copy();
        copy->setCropRect({0, 0, 50, 50});
        (void)maker.thumbnail(*photo);
        (void)maker.thumbnail(*copy);
        QCOMPARE(maker.sequenceCount(), quint64(1));
        QTRY_COMPARE(maker.pendingJobs(), 0);
        QCOMPARE(maker.availableThumbnail(*copy).size(), QSize(50, 50));
        QVERIFY(maker.availableThumbnail(*photo).isNull());
    }

    void deletedPhotosLeaveNothingBehind()
    {
        TestLibrary test;
        ThumbnailMaker &maker = test.library.thumbnails();
        auto photo = std::make_shared<PIPhoto>(test.library.fileRefs().fileRefForPath(makePicture(test, {400, 300})));
        const QString path = maker.thumbnailPath(*photo);
        (void)maker.thumbnail(*photo);
        photo.reset();
        maker.waitUntilIdle();
        QTRY_COMPARE(maker.pendingJobs(), 0);
        QVERIFY(!QFile::exists(path));
    }

    void mayEndWhileJobsRun()
    {
        TestLibrary test;
        PIGroup::PhotoList photos;
        for (int i = 0; i < 25; ++i)
            photos.append(test.addPhoto(makePicture(test, {800, 600}, QStringLiteral("%1.png").arg(i))));
        auto maker =
            std::make_unique<ThumbnailMaker>(test.folder.path(), test.library.imageCache(), test.notifications);
        for (const auto &photo : std::as_const(photos))
            (void)maker->thumbnail(*photo);
        int told = 0;
        const auto observer =
            test.notifications.observe(kThumbnailNotification, [&](const NotificationObject &) { ++told; });
        maker.reset();
        QCoreApplication::processEvents();
        QCOMPARE(told, 0);
    }

    void lostFilesAreNotTriedAgainUntilFound()
    {
        TestLibrary test;
        ThumbnailMaker &maker = test.library.thumbnails();
        const QString path = makePicture(test, {400, 300});
        test.finder.lost.insert(path);
        const auto photo = test.addPhoto(path);
        QVERIFY(maker.thumbnail(*photo).isNull());
        QVERIFY(photo->isWaitingForThumbnail());
        test.finder.lost.clear();
        QVERIFY(photo->fileRef()->verify());
        (void)maker.thumbnail(*photo);
        QCOMPARE(maker.sequenceCount(), quint64(0));
        maker.updateForFilters(*photo);
        QVERIFY(maker.thumbnail(*photo).isNull());
        QTRY_COMPARE(maker.availableThumbnail(*photo).size(), QSize(240, 180));
    }

    void aRenamedFileIsNotShownFromItsFormerPlace()
    {
        TestLibrary test;
        const auto photo = test.addPhoto(makePicture(test, {400, 300}));
        QCOMPARE(photo->renderedImage(test.library.imageCache()).size(), QSize(400, 300));
        const QString target = test.path(QStringLiteral("renamed.png"));
        QVERIFY(QFile::rename(photo->fileRef()->path(), target));
        photo->fileRef()->setPath(target);
        QVERIFY(photo->renderedImage(test.library.imageCache()).pixels({40, 30}).has_value());
        photo->setCropRect({900, 900, 10, 10}); // of a larger picture that the file once held
        test.library.thumbnails().updateForFilters(*photo);
        QCOMPARE(photo->renderedImage(test.library.imageCache()).size(), QSize(400, 300));
    }

    void unreadableFilesKeepThePlaceholder()
    {
        TestLibrary test;
        const auto photo = test.addPhoto(dataFile(QStringLiteral("whole.xml")));
        QVERIFY(made(test, *photo).isNull());
        QVERIFY(photo->isWaitingForThumbnail());
        QVERIFY(!QFile::exists(test.library.thumbnails().thumbnailPath(*photo)));
    }

    void changedFilesAreMadeAnewWhereShown()
    {
        TestLibrary test;
        ThumbnailMaker &maker = test.library.thumbnails();
        const auto photo = test.addPhoto(makePicture(test, {400, 300}));
        QVERIFY(!made(test, *photo).isNull());
        QVERIFY(!makePicture(test, {300, 400}).isNull());
        maker.fileChanged(*photo);
        QCOMPARE(maker.sequenceCount(), quint64(2));
        QTRY_COMPARE(maker.availableThumbnail(*photo).size(), QSize(180, 240));
        QCOMPARE(photo->fileRef()->knownPhotoSize(), QSizeF(300, 400));
    }
};

REGISTER_TEST(TestThumbnailMaker)
#include "TestThumbnailMaker.moc"
