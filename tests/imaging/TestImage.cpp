#include "FakeFilterBackEnd.h"
#include "Image.h"
#include "SaveImage.h"
#include "SystemLog.h"
#include "TestPictures.h"
#include "TestRunner.h"

#include <QTest>

#include <atomic>
#include <cmath>
#include <thread>
#include <vector>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

using namespace TestPictures;

namespace {

/// "Invert" does; "Scale" paints the scale it is told into every pixel.
class SomeFilters final : public FilterBackEnd
{
public:
    SomeFilters() { installFilterBackEnd(this); }
    ~SomeFilters() override { installFilterBackEnd(nullptr); }
    QStringList filterNames(const QString &) const override { return {}; }
    QString localizedCategoryName(const QString &category) const override { return category; }
    const FilterAttributes *attributes(const QString &filterName) const override
    {
        return filterName == QLatin1String("Unknown") ? nullptr : &m_attributes;
    }
    std::unique_ptr<FilterRun> start(const QImage &image, const FilterContext &context) const override
    {
        return std::make_unique<FakeFilterRun>(image, [context](const EffectEntry &inputs, const QImage &before) {
            if (inputs.filterName() == QLatin1String("Broken"))
                return QImage();
            QImage result = before.convertToFormat(QImage::Format_ARGB32_Premultiplied);
            if (inputs.filterName() == QLatin1String("Scale"))
                result.fill(qRgb(int(std::lround(context.scale * 200)), 0, 0));
            else
                result.invertPixels();
            return result;
        });
    }

private:
    FilterAttributes m_attributes;
};

EffectChain chainOf(std::initializer_list<const char *> names)
{
    EffectChain chain;
    for (const char *name : names)
        chain.append(EffectEntry(QString::fromLatin1(name)));
    return chain;
}

QImage scaled(const QImage &image, QSize size)
{
    return image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

void makeSocket(const QString &path)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const QByteArray native = path.toUtf8();
    QVERIFY(size_t(native.size()) < sizeof(address.sun_path));
    std::copy(native.begin(), native.end(), address.sun_path);
    const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
    QVERIFY(::bind(socket, reinterpret_cast<sockaddr *>(&address), sizeof(address)) == 0);
    ::close(socket);
}

}

/// Handles on pictures: what they tell without decoding, and what they make when asked.
class TestImage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void fitsIntoABox_data()
    {
        QTest::addColumn<QSize>("image");
        QTest::addColumn<QSize>("box");
        QTest::addColumn<QSize>("fitted");
        const QSize thumbnail(240, 240);
        QTest::newRow("fits") << QSize(100, 50) << thumbnail << QSize(100, 50);
        QTest::newRow("exactly") << QSize(240, 240) << thumbnail << QSize(240, 240);
        QTest::newRow("landscape") << QSize(4000, 3000) << thumbnail << QSize(240, 180);
        QTest::newRow("portrait") << QSize(3000, 4000) << thumbnail << QSize(180, 240);
        QTest::newRow("rounded down") << QSize(1000, 333) << thumbnail << QSize(240, 79);
        QTest::newRow("only too high") << QSize(10, 1000) << thumbnail << QSize(2, 240);
        QTest::newRow("a line") << QSize(5000, 1) << thumbnail << QSize(240, 1);
        QTest::newRow("wide box") << QSize(60000, 40000) << QSize(3000, 1000) << QSize(1500, 1000);
    }

    void fitsIntoABox()
    {
        QFETCH(QSize, image);
        QFETCH(QSize, box);
        QFETCH(QSize, fitted);
        QCOMPARE(CenterRectangle(image, box), fitted);
    }

    void opensFilesByHeader()
    {
        const Folder folder;
        const QImage picture = colorful(QSize(300, 200));
        const QString path = folder.add(QStringLiteral("ä b.jpg[page=2]"), jpegFile(picture, exifBlock(6)));
        const Image image = Image::fromFile(path);
        QVERIFY(!image.isNull());
        QCOMPARE(image.size(), QSize(200, 300));
        QCOMPARE(image.path(), path);
        QVERIFY(!image.hasAlpha());
        QVERIFY(image.isSameAs(Image(image)));
        QVERIFY(!image.isSameAs(Image::fromFile(path)));
        QCOMPARE(image.pixels(QSize(50, 75))->size(), QSize(50, 75));
        QCOMPARE(image.pixels(QSize(5000, 75))->size(), QSize(200, 75));
        QCOMPARE(image.pixels()->size(), QSize(200, 300));
        QVERIFY(!Image().pixels());
        QVERIFY(Image::fromPixels(QImage()).isNull());
    }

    void refusesWhatIsNoPictureFile_data()
    {
        QTest::addColumn<QString>("kind");
        for (const char *kind : {"missing", "folder", "pipe", "socket", "device", "endless device", "empty", "text"})
            QTest::newRow(kind) << QString::fromLatin1(kind);
    }

    void refusesWhatIsNoPictureFile()
    {
        QFETCH(QString, kind);
        const Folder folder;
        const QString path = folder.path(QStringLiteral("x.jpg"));
        if (kind == QLatin1String("folder"))
            QVERIFY(QDir().mkdir(path));
        else if (kind == QLatin1String("pipe"))
            QCOMPARE(::mkfifo(path.toUtf8().constData(), 0600), 0);
        else if (kind == QLatin1String("socket"))
            makeSocket(path);
        else if (kind == QLatin1String("device"))
            QVERIFY(QFile::link(QStringLiteral("/dev/null"), path));
        else if (kind == QLatin1String("endless device"))
            QVERIFY(QFile::link(QStringLiteral("/dev/zero"), path));
        else if (kind == QLatin1String("empty"))
            QVERIFY(folder.add(QStringLiteral("x.jpg"), {}) == path);
        else if (kind == QLatin1String("text"))
            QVERIFY(folder.add(QStringLiteral("x.jpg"), "Not a picture") == path);
        QString reason;
        QVERIFY(Image::fromFile(path, &reason).isNull());
        QVERIFY(!reason.isEmpty());
    }

    void givesNothingOnceTheFileChanged()
    {
        const Folder folder;
        const QString path = folder.add(QStringLiteral("a.jpg"), jpegFile(colorful(QSize(64, 64))));
        const Image image = Image::fromFile(path);
        QVERIFY(image.pixels());
        QVERIFY(folder.add(QStringLiteral("a.jpg"), jpegFile(colorful(QSize(640, 64)))) == path);
        QVERIFY(!image.pixels());
        QVERIFY(Image::fromFile(path).pixels());
        QVERIFY(QFile::remove(path));
        QVERIFY(!image.pixels());
    }

    void crops_data()
    {
        QTest::addColumn<QRectF>("rect");
        QTest::addColumn<QRect>("part"); // empty: nothing is left
        QTest::newRow("inside") << QRectF(10, 20, 100, 50) << QRect(10, 20, 100, 50);
        QTest::newRow("beyond the corner") << QRectF(-50, -50, 100, 100) << QRect(0, 0, 50, 50);
        QTest::newRow("larger than the picture") << QRectF(-9, -9, 1e9, 1e9) << QRect(0, 0, 200, 150);
        QTest::newRow("edges between pixels") << QRectF(9.6, 20.4, 100.2, 50) << QRect(10, 20, 100, 50);
        QTest::newRow("from right to left") << QRectF(110, 20, -100, 50) << QRect(10, 20, 100, 50);
        QTest::newRow("outside") << QRectF(200, 0, 10, 10) << QRect();
        QTest::newRow("empty") << QRectF(10, 10, 0, 10) << QRect();
        QTest::newRow("not a number") << QRectF(std::nan(""), 0, 10, 10) << QRect();
        QTest::newRow("endless") << QRectF(0, 0, INFINITY, 10) << QRect();
    }

    void crops()
    {
        QFETCH(QRectF, rect);
        QFETCH(QRect, part);
        const QImage picture = colorful(QSize(200, 150));
        const Image cropped = Image::fromPixels(picture).cropped(rect);
        QCOMPARE(cropped.isNull(), part.isEmpty());
        if (!part.isEmpty()) {
            QCOMPARE(cropped.size(), part.size());
            QCOMPARE(*cropped.pixels(), picture.copy(part));
        }
    }

    void cropsOfCropsAreOneCrop()
    {
        const Folder folder;
        const QImage stored = colorful(QSize(800, 600));
        const Image image = Image::fromFile(folder.add(QStringLiteral("a.jpg"), jpegFile(stored, exifBlock(3))));
        const QImage shown = stored.mirrored(true, true);
        const Image cropped = image.cropped(QRectF(100, 50, 600, 500)).cropped(QRectF(50, 150, 300, 200));
        QCOMPARE(cropped.size(), QSize(300, 200));
        const QImage expected = shown.copy(150, 200, 300, 200);
        QVERIFY(meanDifference(*cropped.pixels(), expected) < 2);
        QVERIFY(meanDifference(*cropped.pixels(QSize(60, 40)), scaled(expected, QSize(60, 40))) < 2);
    }

    void appliesEffectsAtTheRenderedScale()
    {
        const SomeFilters filters;
        const Image image = Image::fromPixels(colorful(QSize(400, 200))).withEffects(chainOf({"Scale"}));
        QCOMPARE(image.size(), QSize(400, 200));
        QCOMPARE(image.pixels()->pixel(7, 7), qRgb(200, 0, 0));
        QCOMPARE(image.pixels(QSize(100, 50))->pixel(7, 7), qRgb(50, 0, 0));
        // A part is filtered at the scale at which it is wanted.
        const Image part = image.cropped(QRectF(100, 0, 100, 100));
        QCOMPARE(part.pixels(QSize(25, 25))->size(), QSize(25, 25));
        QCOMPARE(part.pixels(QSize(25, 25))->pixel(7, 7), qRgb(50, 0, 0));
        QCOMPARE(image.pixels()->format(), QImage::Format_RGB32); // the filter gave alpha that hides nothing
    }

    void cropsAndEffectsKeepTheirOrder()
    {
        const SomeFilters filters;
        const QImage picture = colorful(QSize(400, 200));
        QImage inverted = picture;
        inverted.invertPixels();
        const QRectF rect(40, 30, 120, 100);
        const Image image = Image::fromPixels(picture);
        const EffectChain chain = chainOf({"Unknown", "Invert"});
        QVERIFY(image.withEffects({}).isSameAs(image));
        const Image before = image.cropped(rect).withEffects(chain);
        const Image after = image.withEffects(chain).cropped(rect);
        QCOMPARE(*before.pixels(), inverted.copy(rect.toRect()));
        QCOMPARE(*after.pixels(), inverted.copy(rect.toRect()));
        const QSize small(30, 25);
        QVERIFY(meanDifference(*after.pixels(small), scaled(inverted.copy(rect.toRect()), small)) < 3);
        QCOMPARE(*image.withEffects(chain).withEffects(chain).pixels(), picture);
        for (const bool isBroken : {false, true}) {
            const Image shown = image.withEffects(isBroken ? chainOf({"Broken"}) : chain).cropped(rect);
            QVERIFY(shown.pixels() && !shown.isDamaged());
            QCOMPARE(shown.lacksEffects(), isBroken);
        }
        const QRect part(30, 20, 60, 40);
        const QImage ofBoth = inverted.copy(rect.toRect()).copy(part);
        QCOMPARE(*before.pixelsOf(part, part.size()), ofBoth);
        QCOMPARE(*after.pixelsOf(part, part.size() * 2), ofBoth); // never enlarged
        QVERIFY(meanDifference(*after.pixelsOf(part, small), scaled(ofBoth, small)) < 3);
        QVERIFY(!after.pixelsOf({200, 0, 10, 10}, small));
    }

    void tellsOfDamageOnce()
    {
        const Folder folder;
        const QImage picture = colorful(QSize(320, 240));
        const QByteArray file = jpegFile(picture);
        const QString path = folder.add(QStringLiteral("cut.jpg"), file.left(file.size() * 2 / 3));
        int told = 0;
        SystemLog::setSink([&](const QString &line) { told += line.contains(path); });
        const Image image = Image::fromFile(path);
        const Image edited = image.cropped({10, 10, 300, 200}).withEffects(chainOf({"Invert"}));
        QVERIFY(!image.isDamaged()); // as far as the header tells
        for (int i = 0; i < 3; ++i) {
            const auto pixels = image.pixels();
            QVERIFY(pixels);
            QVERIFY(meanDifference(pixels->copy(0, 0, 320, 120), picture.copy(0, 0, 320, 120)) < 2);
            QVERIFY(Image::fromFile(path).pixels(QSize(32, 24)));
        }
        QCOMPARE(told, 1);
        QVERIFY(image.isDamaged() && edited.isDamaged());
        const Image sound = Image::fromFile(folder.add(QStringLiteral("sound.jpg"), file));
        QVERIFY(sound.pixels() && !sound.isDamaged());
        QVERIFY(folder.add(QStringLiteral("cut.jpg"), file.left(file.size() / 2)) == path); // another state of the file
        QVERIFY(Image::fromFile(path).pixels());
        SystemLog::setSink({});
        QCOMPARE(told, 2);
    }

    void stopsWhenCancelled()
    {
        const std::atomic<bool> cancelled = true;
        const SomeFilters filters;
        const Image image = Image::fromPixels(colorful(QSize(40, 20)));
        QVERIFY(!image.pixels(QSize(), &cancelled));
        QVERIFY(!image.withEffects(chainOf({"Invert"})).pixels(QSize(), &cancelled));
        SaveRequest request;
        request.cancelled = &cancelled;
        QVERIFY(!SaveImageCore(0, 0, image, request));
    }

    /// One handle, many threads, all formats at once: as thumbnail jobs use them.
    void servesManyThreads()
    {
        const Folder folder;
        const QImage picture = colorful(QSize(200, 150));
        std::vector<Image> images;
        for (const char *suffix : {".jpg", ".jpg[profile=p3]", ".png", ".tif", ".webp", ".heic", ".gif"})
            images.push_back(Image::fromFile(folder.add(QString::fromLatin1(suffix), encoded(picture, {suffix}))));
        const QSize size(60, 45);
        std::vector<QImage> alone;
        for (const Image &image : images)
            alone.push_back(image.pixels(size).value_or(QImage()));
        std::atomic<int> equal = 0;
        const auto work = [&] {
            for (size_t i = 0; i < images.size(); ++i)
                equal += !alone[i].isNull() && images[i].pixels(size) == alone[i];
        };
        constexpr int threadCount = 4;
        std::vector<std::thread> threads;
        for (int i = 0; i < threadCount; ++i)
            threads.emplace_back(work);
        for (std::thread &thread : threads)
            thread.join();
        QCOMPARE(equal.load(), threadCount * int(images.size()));
    }
};

REGISTER_TEST(TestImage)
#include "TestImage.moc"
