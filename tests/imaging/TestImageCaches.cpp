#include "ImageCache.h"
#include "PixelPool.h"
#include "TestRunner.h"

#include <QTest>

namespace {

Image someImage()
{
    return Image::fromPixels(QImage(2, 2, QImage::Format_RGB32));
}

QImage pixelsOf(int bytes)
{
    return QImage(bytes / 4, 1, QImage::Format_RGB32);
}

QString key(int number)
{
    return QString::number(number);
}

}

/// The table of image handles and the pool of pixels: what stays and what goes.
class TestImageCaches : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cacheDropsTheOldestStored()
    {
        double now = 0;
        ImageCache cache([&] { return now; });
        for (int i = 0; i < ImageCache::kCapacity; ++i, ++now)
            cache.storeImage(someImage(), key(i));
        QVERIFY(!cache.imageForGuid(key(0)).isNull()); // looking does not make it younger
        cache.storeImage(someImage(), key(500));
        QVERIFY(cache.imageForGuid(key(0)).isNull());
        QVERIFY(!cache.imageForGuid(key(1)).isNull());
        QVERIFY(!cache.imageForGuid(key(500)).isNull());
        cache.storeImage(Image(), key(1));
        QVERIFY(cache.imageForGuid(key(1)).isNull());
    }

    void cacheKeepsTheTimeOfTheSameImage()
    {
        double now = 0;
        ImageCache cache([&] { return now; });
        const Image first = someImage();
        cache.storeImage(first, key(0));
        for (int i = 1; i < ImageCache::kCapacity; ++i)
            cache.storeImage(someImage(), key(i + 0 * int(now += 1)));
        now += 1;
        cache.storeImage(first, key(0));
        QVERIFY(cache.imageForGuid(key(0)).isSameAs(first));
        cache.storeImage(someImage(), key(1)); // another image for the key: younger now
        now += 1;
        cache.storeImage(someImage(), key(500));
        QVERIFY(cache.imageForGuid(key(0)).isNull());
        now += 1;
        cache.storeImage(someImage(), key(501));
        QVERIFY(cache.imageForGuid(key(2)).isNull());
        QVERIFY(!cache.imageForGuid(key(1)).isNull());
    }

    void cacheKeepsWhatCameInTheSameInstant()
    {
        double now = 0;
        ImageCache cache([&] { return now; });
        for (int i = 0; i <= ImageCache::kCapacity; ++i)
            cache.storeImage(someImage(), key(i));
        for (int i = 0; i <= ImageCache::kCapacity; ++i)
            QVERIFY(!cache.imageForGuid(key(i)).isNull());
        now = 1; // a later one makes room for all
        cache.storeImage(someImage(), key(500));
        int left = 0;
        for (int i = 0; i <= ImageCache::kCapacity; ++i)
            left += !cache.imageForGuid(key(i)).isNull();
        QCOMPARE(left, ImageCache::kCapacity - 1);
    }

    void poolDropsTheLeastRecentlyUsed()
    {
        PixelPool pool(1000);
        pool.insert(key(1), pixelsOf(800));
        pool.insert(key(1), pixelsOf(400)); // in its place
        QCOMPARE(pool.bytesUsed(), 400);
        pool.insert(key(2), pixelsOf(400));
        QVERIFY(!pool.find(key(1)).isNull());
        pool.insert(key(3), pixelsOf(400));
        QVERIFY(pool.find(key(2)).isNull());
        QVERIFY(!pool.find(key(1)).isNull());
        QVERIFY(!pool.find(key(3)).isNull());
        QCOMPARE(pool.bytesUsed(), 800);
        pool.insert(key(4), pixelsOf(1000)); // takes everything
        QCOMPARE(pool.bytesUsed(), 1000);
        QVERIFY(pool.find(key(1)).isNull() && pool.find(key(3)).isNull());
        pool.clear();
        QCOMPARE(pool.bytesUsed(), 0);
        QVERIFY(pool.find(key(4)).isNull());
    }

    void poolRefusesWhatExceedsTheBudget()
    {
        PixelPool pool(1000);
        pool.insert(key(1), pixelsOf(400));
        pool.insert(key(2), pixelsOf(1004));
        QVERIFY(pool.find(key(2)).isNull());
        QVERIFY(!pool.find(key(1)).isNull());
        pool.insert(key(1), QImage());
        QVERIFY(pool.find(key(1)).isNull());
        QCOMPARE(pool.bytesUsed(), 0);
        QVERIFY(PixelPool::standardBudget() > 0);
        QVERIFY(PixelPool::standardBudget() <= qint64(1) << 30);
    }
};

REGISTER_TEST(TestImageCaches)
#include "TestImageCaches.moc"
