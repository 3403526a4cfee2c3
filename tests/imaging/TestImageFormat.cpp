#include "ImageFormat.h"
#include "TestRunner.h"

#include <QTest>

class TestImageFormat : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tellsFormats_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<ImageFormat>("byName");
        QTest::addColumn<ImageFormat>("byBoth");
        const QByteArray tiff("II*\0", 4);
        const QByteArray jpeg("\xff\xd8\xff\xe0");
        using F = ImageFormat;
        const auto add = [](const char *name, const QByteArray &bytes, F byName, F byBoth) {
            QTest::addRow("%s", name) << QString::fromUtf8(name) << bytes << byName << byBoth;
        };
        add("a.JPG", jpeg, F::Jpeg, F::Jpeg);
        add("jpeg.png", jpeg, F::Png, F::Jpeg);
        add("raw looks like TIFF.nef", tiff, F::Raw, F::Raw);
        add("RAW.CR2", tiff, F::Raw, F::Raw);
        add("big.tif", QByteArray("MM\0+\0\x08", 6), F::Tiff, F::Tiff);
        add("text.jpg", QByteArray("Lorem ipsum"), F::Jpeg, F::Unknown);
        add("empty.jpg", QByteArray(), F::Jpeg, F::Unknown);
        add("folder.jpg/file", jpeg, F::Unknown, F::Jpeg);
        add(".jpg", jpeg, F::Unknown, F::Jpeg);
        add("dots.in.name.webp", QByteArray("RIFF\x10\0\0\0WEBPVP8 ", 16), F::WebP, F::WebP);
        add("sound.webp", QByteArray("RIFF\x10\0\0\0WAVEfmt ", 16), F::WebP, F::Unknown);
        add("phone.HEIC",
            QByteArray("\0\0\0\x18"
                       "ftypheic",
                       12),
            F::Heif, F::Heif);
        add("film.heic",
            QByteArray("\0\0\0\x18"
                       "ftypisom",
                       12),
            F::Heif, F::Unknown);
        add("stream.jxl", QByteArray("\xff\x0a\x10"), F::JpegXl, F::JpegXl);
    }

    void tellsFormats()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, bytes);
        QFETCH(ImageFormat, byName);
        QFETCH(ImageFormat, byBoth);
        QCOMPARE(imageFormatForFileName(name), byName);
        QCOMPARE(imageFormat(name, bytes), byBoth);
    }

    void listsExtensionsForDialogs()
    {
        for (const char *extension : {"jpg", "JPEG", "tif", "webp", "heic", "avif", "gif", "bmp", "jxl", "dng", "NEF"})
            QVERIFY2(isReadableImageExtension(QString::fromLatin1(extension)), extension);
        for (const char *extension : {"", "pdf", "svg", "txt", ".jpg"})
            QVERIFY2(!isReadableImageExtension(QString::fromLatin1(extension)), extension);
        const QStringList filters = readableImageNameFilters();
        QVERIFY(filters.contains(QStringLiteral("*.jpg")));
        QVERIFY(filters.contains(QStringLiteral("*.CR2")));
    }
};

REGISTER_TEST(TestImageFormat)
#include "TestImageFormat.moc"
