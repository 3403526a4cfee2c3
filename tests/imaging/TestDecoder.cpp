#include "TestPictures.h"
#include "TestRunner.h"

#include "OpenFile.h"

#include <QBuffer>
#include <QDir>
#include <QTest>
#include <QtEndian>

using namespace TestPictures;

namespace {

const QSize kSmall(160, 120);

DecodeRequest sized(int width, int height)
{
    DecodeRequest request;
    request.size = QSize(width, height);
    return request;
}

/// How a stored picture is shown, by Qt's operations.
QImage shown(const QImage &stored, int orientation)
{
    const QImage turned = orientation >= 5 ? stored.transformed(QTransform().rotate(90)).mirrored(true, false) : stored;
    const bool flipsX = orientation == 2 || orientation == 3 || orientation == 6 || orientation == 7;
    const bool flipsY = orientation == 3 || orientation == 4 || orientation == 7 || orientation == 8;
    return turned.mirrored(flipsX, flipsY);
}

}

/// The door: whatever is a picture comes out upright, in sRGB, at the size asked for.
class TestDecoder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void decodesEveryFormat_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<ImageFormat>("format");
        QTest::addColumn<double>("tolerance"); // mean difference
        const QImage picture = colorful(kSmall);
        const auto add = [](const char *name, const QByteArray &bytes, ImageFormat format, double tolerance) {
            QTest::newRow(name) << QString::fromLatin1(name) << bytes << format << tolerance;
        };
        add("a.jpg", jpegFile(picture), ImageFormat::Jpeg, 1.5);
        add("progressive.jpg", encoded(picture, {".jpg[Q=95,interlace]"}), ImageFormat::Jpeg, 2);
        add("a.png", encoded(picture, {".png"}), ImageFormat::Png, 0);
        add("interlaced.png", encoded(picture, {".png[interlace]"}), ImageFormat::Png, 0);
        add("a.tif", encoded(picture, {".tif"}), ImageFormat::Tiff, 0);
        add("tiles.tif", encoded(picture, {".tif[tile,compression=lzw]"}), ImageFormat::Tiff, 0);
        add("a.webp", encoded(picture, {".webp[lossless]"}), ImageFormat::WebP, 0);
        add("a.heic", encoded(picture, {".heic[Q=95,effort=0]"}), ImageFormat::Heif, 3);
        add("a.avif", encoded(picture, {".avif[Q=95,effort=0]"}), ImageFormat::Heif, 3);
        add("a.gif", encoded(picture, {".gif"}), ImageFormat::Gif, 8);
        add("a.jxl", encoded(picture, {".jxl[distance=0.5,effort=3]"}), ImageFormat::JpegXl, 3);
        QByteArray bitmap;
        QBuffer buffer(&bitmap);
        QVERIFY(picture.save(&buffer, "BMP"));
        add("a.bmp", bitmap, ImageFormat::Bmp, 0);
        add("png named.jpg", encoded(picture, {".png"}), ImageFormat::Png, 0);
        add("jpeg named.png", jpegFile(picture), ImageFormat::Jpeg, 1.5);
        add("options.jpg[shrink=4]", jpegFile(picture), ImageFormat::Jpeg, 1.5);
        add("options.png[n=-1]", encoded(picture, {".png"}), ImageFormat::Png, 0);
    }

    void decodesEveryFormat()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, bytes);
        QFETCH(ImageFormat, format);
        QFETCH(double, tolerance);
        QVERIFY(!bytes.isEmpty());
        const Folder folder;
        const QString path = folder.add(name, bytes);
        const auto head = header(path);
        QVERIFY(head);
        QCOMPARE(head->format, format);
        QCOMPARE(head->size, kSmall);

        const QImage picture = colorful(kSmall);
        const auto full = decode(path);
        QVERIFY(full && !full->damaged);
        QCOMPARE(full->fullSize, kSmall);
        QVERIFY2(meanDifference(full->pixels, picture) <= tolerance,
                 qPrintable(QString::number(meanDifference(full->pixels, picture))));
        const auto small = decode(path, sized(50, 40)); // another shape than the picture's
        QVERIFY(small);
        const QImage expected = picture.scaled(50, 40, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        QVERIFY2(meanDifference(small->pixels, expected) <= tolerance + 2,
                 qPrintable(QString::number(meanDifference(small->pixels, expected))));
    }

    void keepsAlpha_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        const QImage picture = colorful(kSmall, /*withAlpha=*/true);
        QTest::newRow("PNG") << encoded(picture, {".png"});
        QTest::newRow("TIFF") << encoded(picture, {".tif"});
        QTest::newRow("WebP") << encoded(picture, {".webp[lossless]"});
        QTest::newRow("PNG in wide colours") << encoded(picture, {".png", 0, "p3"});
    }

    void keepsAlpha()
    {
        QFETCH(QByteArray, bytes);
        const Folder folder;
        const QString path = folder.add(QStringLiteral("clear"), bytes);
        const auto full = decode(path);
        QVERIFY(full);
        QVERIFY(header(path)->hasAlpha);
        QCOMPARE(full->pixels.format(), QImage::Format_ARGB32_Premultiplied);
        const QImage picture = colorful(kSmall, /*withAlpha=*/true);
        QVERIFY2(largestDifference(full->pixels, picture) <= 4,
                 qPrintable(QString::number(largestDifference(full->pixels, picture))));
        const auto small = decode(path, sized(40, 30));
        QVERIFY(small);
        const QImage expected = picture.scaled(40, 30, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        QVERIFY(meanDifference(small->pixels, expected) < 2);
    }

    void turnsUpright_data()
    {
        QTest::addColumn<QString>("suffix");
        QTest::addColumn<int>("orientation");
        QTest::addColumn<bool>("isTurned");
        for (int orientation = 2; orientation <= 8; ++orientation) {
            for (const char *suffix : {".jpg[Q=95]", ".png", ".tif", ".webp[lossless]"})
                QTest::addRow("%s %d", suffix, orientation) << QString::fromLatin1(suffix) << orientation << true;
        }
        // These carry their turn elsewhere, and their libraries have already applied it.
        for (const char *suffix : {".heic[Q=95,effort=0]", ".avif[Q=95,effort=0]", ".jxl[effort=3]"})
            QTest::addRow("%s 6", suffix) << QString::fromLatin1(suffix) << 6 << false;
    }

    void turnsUpright()
    {
        QFETCH(QString, suffix);
        QFETCH(int, orientation);
        QFETCH(bool, isTurned);
        const QImage stored = colorful(QSize(100, 63));
        const QImage upright = isTurned ? shown(stored, orientation) : stored;
        const Folder folder;
        const QString path =
            folder.add(QStringLiteral("turned"), encoded(stored, {suffix.toLatin1().constData(), orientation}));
        QVERIFY(header(path));
        QCOMPARE(header(path)->size, upright.size());
        const auto full = decode(path);
        QVERIFY(full);
        QVERIFY(meanDifference(full->pixels, upright) < 3);
        DecodeRequest part;
        part.region = QRect(5, 40, 50, 20);
        part.size = QSize(25, 10);
        const QImage expected =
            upright.copy(part.region).scaled(part.size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        const auto cut = decode(path, part);
        QVERIFY(cut);
        QVERIFY2(meanDifference(cut->pixels, expected) < 4,
                 qPrintable(QString::number(meanDifference(cut->pixels, expected))));
    }

    void turnsTheCorpusUpright_data()
    {
        QTest::addColumn<QString>("name");
        for (const char *kind : {"Landscape", "Portrait"}) {
            for (int i = 1; i <= 8; ++i)
                QTest::addRow("%s_%d", kind, i) << QStringLiteral("%1_%2.jpg").arg(QLatin1String(kind)).arg(i);
        }
    }

    void turnsTheCorpusUpright()
    {
        if (corpusFolder().isEmpty())
            QSKIP("The folder of test pictures is absent");
        QFETCH(QString, name);
        const QString folder = corpusFolder() + QStringLiteral("/orientation/");
        const QString first = folder + name.section(QLatin1Char('_'), 0, 0) + QStringLiteral("_1.jpg");
        const auto expected = decode(first);
        const auto full = decode(folder + name);
        QVERIFY(expected && full);
        QCOMPARE(full->pixels.size(), expected->pixels.size());
        const auto reduced = [](const QImage &image) {
            return image.scaled(image.size() / 20, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        };
        QVERIFY(meanDifference(reduced(full->pixels), reduced(expected->pixels)) < 3);

        DecodeRequest thumbnail;
        thumbnail.size = CenterRectangle(expected->fullSize, QSize(240, 240));
        const auto smallExpected = decode(first, thumbnail);
        const auto small = decode(folder + name, thumbnail);
        QVERIFY(smallExpected && small);
        QCOMPARE(small->pixels.size(), thumbnail.size);
        QVERIFY(meanDifference(small->pixels, smallExpected->pixels) < 3);
    }

    void agreesWithAnotherReaderOnPngs()
    {
        if (corpusFolder().isEmpty())
            QSKIP("The folder of test pictures is absent");
        const QDir folder(corpusFolder() + QStringLiteral("/pngsuite"));
        const QStringList names = folder.entryList({QStringLiteral("*.png")});
        int compared = 0;
        for (const QString &name : names) {
            // The other reader does not know the one clear colour of such pictures.
            const bool isUnknownToOther =
                name.startsWith(QLatin1Char('t')) && name.endsWith(QLatin1String("n2c16.png"));
            if (name.startsWith(QLatin1Char('x')) || isUnknownToOther)
                continue;
            const auto decoded = decode(folder.filePath(name));
            QVERIFY2(decoded && !decoded->damaged, qPrintable(name));
            const QImage other(folder.filePath(name));
            QVERIFY2(largestDifference(decoded->pixels, other) <= 2, qPrintable(name));
            const auto half = decode(folder.filePath(name), sized(other.width() / 2, other.height() / 2));
            QVERIFY(half);
            const QImage otherHalf = other.convertToFormat(QImage::Format_ARGB32_Premultiplied)
                                         .scaled(half->pixels.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
            QVERIFY2(meanDifference(half->pixels, otherHalf) < 14,
                     qPrintable(name + QStringLiteral(": %1").arg(meanDifference(half->pixels, otherHalf))));
            ++compared;
        }
        QVERIFY(compared > 100);
    }

    void refusesBrokenPngs()
    {
        if (corpusFolder().isEmpty())
            QSKIP("The folder of test pictures is absent");
        const QDir folder(corpusFolder() + QStringLiteral("/pngsuite"));
        for (const QString &name : folder.entryList({QStringLiteral("x*.png")})) {
            const auto decoded = decode(folder.filePath(name));
            // The pixels of this one are there, with a wrong checksum.
            const bool isReadable = name == QLatin1String("xcsn0g01.png");
            QVERIFY2(isReadable ? decoded && decoded->damaged : !decoded, qPrintable(name));
        }
    }

    void convertsToSrgb_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        const QImage picture = colorful(kSmall);
        for (const char *suffix : {".jpg[Q=97]", ".png", ".tif", ".webp[lossless]", ".tif[bitdepth=8,compression=lzw]"})
            QTest::addRow("%s", suffix) << encoded(picture, {suffix, 0, "p3"});
    }

    void convertsToSrgb()
    {
        QFETCH(QByteArray, bytes);
        QVERIFY(!bytes.isEmpty());
        const QImage picture = colorful(kSmall);
        const Folder folder;
        const QString path = folder.add(QStringLiteral("wide"), bytes);
        const auto full = decode(path);
        QVERIFY(full);
        QVERIFY2(meanDifference(full->pixels, picture) < 2,
                 qPrintable(QString::number(meanDifference(full->pixels, picture))));
        const auto small = decode(path, sized(40, 30));
        QVERIFY(small);
        const QImage expected = picture.scaled(40, 30, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        QVERIFY(meanDifference(small->pixels, expected) < 3);
    }

    void decodesCmyk()
    {
        QImage picture(kSmall, QImage::Format_RGB32);
        picture.fill(qRgb(160, 140, 120)); // well inside what ink can show
        const Folder folder;
        const QString path = folder.add(QStringLiteral("ink.jpg"), encoded(picture, {".jpg[Q=95]", 6, "cmyk"}));
        const auto decoded = decode(path, sized(30, 40));
        QVERIFY(decoded);
        QCOMPARE(decoded->fullSize, kSmall.transposed());
        QImage expected(30, 40, QImage::Format_RGB32);
        expected.fill(qRgb(160, 140, 120));
        QVERIFY2(largestDifference(decoded->pixels, expected) <= 6,
                 qPrintable(QString::number(largestDifference(decoded->pixels, expected))));
    }

    void decodesAPart_data()
    {
        QTest::addColumn<QString>("suffix");
        QTest::addColumn<QRect>("part");
        QTest::addColumn<QSize>("size");
        for (const char *suffix : {".jpg[Q=97]", ".png", ".tif", ".webp[lossless]"}) {
            QTest::addRow("%s whole scale", suffix)
                << QString::fromLatin1(suffix) << QRect(31, 57, 400, 201) << QSize();
            QTest::addRow("%s reduced", suffix)
                << QString::fromLatin1(suffix) << QRect(200, 111, 600, 480) << QSize(60, 48);
            QTest::addRow("%s corner", suffix) << QString::fromLatin1(suffix) << QRect(0, 0, 300, 300) << QSize(25, 25);
            QTest::addRow("%s beyond the edge", suffix)
                << QString::fromLatin1(suffix) << QRect(700, 500, 900, 900) << QSize(20, 20);
        }
    }

    void decodesAPart()
    {
        QFETCH(QString, suffix);
        QFETCH(QRect, part);
        QFETCH(QSize, size);
        const QImage picture = colorful(QSize(801, 603));
        const Folder folder;
        const QString path = folder.add(QStringLiteral("part"), encoded(picture, {suffix.toLatin1().constData()}));
        DecodeRequest request;
        request.region = part;
        request.size = size;
        const auto decoded = decode(path, request);
        QVERIFY(decoded);
        QCOMPARE(decoded->fullSize, picture.size());
        const QImage cut = picture.copy(part & picture.rect());
        const QImage expected =
            size.isEmpty() ? cut : cut.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        QVERIFY2(meanDifference(decoded->pixels, expected) < 2,
                 qPrintable(QString::number(meanDifference(decoded->pixels, expected))));
    }

    void neverEnlarges()
    {
        const Folder folder;
        for (const char *suffix : {".jpg", ".png", ".webp", ".heic"}) {
            const QString path = folder.add(QStringLiteral("small"), encoded(colorful(QSize(40, 30)), {suffix}));
            const auto decoded = decode(path, sized(400, 20));
            QVERIFY(decoded);
            QCOMPARE(decoded->pixels.size(), QSize(40, 20));
            const auto tiny = decode(path, sized(1, 1));
            QVERIFY(tiny);
            QCOMPARE(tiny->pixels.size(), QSize(1, 1));
        }
    }

    void reducesWithoutAliasing_data()
    {
        QTest::addColumn<QString>("suffix");
        QTest::addColumn<int>("side");
        for (const char *suffix : {".jpg[Q=100]", ".png", ".bmp"}) {
            for (const int side : {30, 53, 97, 150, 230})
                QTest::newRow(QByteArray(suffix).append(' ').append(QByteArray::number(side)).constData())
                    << QString::fromLatin1(suffix) << side;
        }
    }

    /// Lines of one pixel, reduced below what can show them, become even grey: no beat between lines and pixels.
    void reducesWithoutAliasing()
    {
        QFETCH(QString, suffix);
        QFETCH(int, side);
        QImage lines(600, 600, QImage::Format_RGB32);
        for (int y = 0; y < lines.height(); ++y) {
            for (int x = 0; x < lines.width(); ++x)
                lines.setPixel(x, y, (x + y) % 2 ? 0xffffffff : 0xff000000);
        }
        QByteArray bytes;
        QBuffer buffer(&bytes);
        if (suffix == QLatin1String(".bmp"))
            QVERIFY(lines.save(&buffer, "BMP"));
        else
            bytes = encoded(lines, {suffix.toLatin1().constData()});
        const Folder folder;
        const auto decoded = decode(folder.add(QStringLiteral("lines"), bytes), sized(side, side));
        QVERIFY(decoded);
        QImage grey(side, side, QImage::Format_RGB32);
        grey.fill(qRgb(127, 127, 127));
        const QRect inside(3, 3, side - 6, side - 6); // edges see half a line
        QVERIFY2(largestDifference(decoded->pixels.copy(inside), grey.copy(inside)) <= 14,
                 qPrintable(QString::number(largestDifference(decoded->pixels.copy(inside), grey.copy(inside)))));
    }

    void showsThePreviewOfRaw_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("orientation");
        QTest::newRow("upright") << QStringLiteral("a.dng") << 1;
        QTest::newRow("turned right") << QStringLiteral("b.DNG") << 6;
        QTest::newRow("turned left") << QStringLiteral("c.dng") << 8;
        QTest::newRow("upside down") << QStringLiteral("d.dng") << 3;
    }

    void showsThePreviewOfRaw()
    {
        QFETCH(QString, name);
        QFETCH(int, orientation);
        const QImage stored = colorful(QSize(240, 180));
        const QImage upright = shown(stored, orientation);
        const Folder folder;
        const QString path = folder.add(name, rawFile(jpegFile(stored, exifBlock(5)), stored.size(), orientation));
        const auto head = header(path);
        QVERIFY(head);
        QCOMPARE(head->format, ImageFormat::Raw);
        QCOMPARE(head->size, upright.size());
        const auto full = decode(path);
        QVERIFY(full);
        QVERIFY(meanDifference(full->pixels, upright) < 3);
        const auto small = decode(path, sized(60, 60));
        QVERIFY(small);
        QCOMPARE(small->pixels.size(), QSize(60, 60));
    }

    void readsEmbeddedThumbnail()
    {
        const QImage picture = colorful(QSize(800, 600));
        const QImage stamp = colorful(QSize(160, 120));
        const QByteArray file = jpegFile(picture, exifBlock(8, jpegFile(stamp)));
        const Folder folder;
        const auto opened = openRegularFile(folder.add(QStringLiteral("camera.jpg"), file));
        const auto thumbnail = Decoder::embeddedThumbnail(opened->descriptor.number(), QStringLiteral("camera.jpg"));
        QVERIFY(thumbnail);
        QVERIFY(meanDifference(*thumbnail, shown(stamp, 8)) < 2);
    }

    void refusesUnfitEmbeddedThumbnail_data()
    {
        QTest::addColumn<QByteArray>("file");
        const QImage wide = colorful(QSize(900, 600));
        const QByteArray stamp = jpegFile(colorful(QSize(160, 120)));
        const QByteArray fitting = jpegFile(colorful(QSize(150, 100)));
        QTest::newRow("none") << jpegFile(wide);
        QTest::newRow("no thumbnail beside the orientation") << jpegFile(wide, exifBlock(1));
        QTest::newRow("black bars above and below") << jpegFile(wide, exifBlock(1, stamp));
        QTest::newRow("no JPEG") << jpegFile(wide, exifBlock(1, QByteArray(300, 'x')));
        QTest::newRow("cut short") << jpegFile(wide, exifBlock(1, fitting.left(fitting.size() / 2)));
        QTest::newRow("length beyond the block") << jpegFile(wide, exifBlock(1, fitting).chopped(fitting.size() / 2));
        QTest::newRow("another format") << encoded(wide, {".png"});
    }

    void refusesUnfitEmbeddedThumbnail()
    {
        QFETCH(QByteArray, file);
        const Folder folder;
        const auto opened = openRegularFile(folder.add(QStringLiteral("camera.jpg"), file));
        QVERIFY(!Decoder::embeddedThumbnail(opened->descriptor.number(), QStringLiteral("camera.jpg")));
    }

    void stopsWhenCancelled()
    {
        const Folder folder;
        const std::atomic<bool> cancelled = true;
        DecodeRequest request;
        request.cancelled = &cancelled;
        for (const char *suffix : {".jpg", ".jpg[interlace]", ".png", ".png[interlace]", ".webp", ".tif", ".heic"}) {
            const QString path = folder.add(QStringLiteral("picture"), encoded(colorful(kSmall), {suffix}));
            QVERIFY(decode(path));
            QVERIFY2(!decode(path, request), suffix);
        }
    }
};

REGISTER_TEST(TestDecoder)
#include "TestDecoder.moc"
