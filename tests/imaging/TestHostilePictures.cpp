#include "TestPictures.h"
#include "TestRunner.h"

#include "OpenFile.h"

#include <QBuffer>
#include <QTest>
#include <QtEndian>

#include <random>

#include <sys/resource.h>
#include <unistd.h>

using namespace TestPictures;

namespace {

template<typename Number>
QByteArray big(Number number)
{
    number = qToBigEndian(number);
    return QByteArray(reinterpret_cast<const char *>(&number), sizeof(number));
}

template<typename Number>
QByteArray little(Number number)
{
    number = qToLittleEndian(number);
    return QByteArray(reinterpret_cast<const char *>(&number), sizeof(number));
}

/// A well-formed file whose header was made to promise another size.
QByteArray pngOf(quint32 width, quint32 height, char interlaced = 0)
{
    const QByteArray chunk = "IHDR" + big(width) + big(height) + QByteArray("\x08\x02\0\0", 4) + interlaced;
    return QByteArray("\x89PNG\r\n\x1a\n") + big(quint32(13)) + chunk + big(pngChecksum(chunk)) +
           encoded(colorful(QSize(8, 8)), {".png"}).mid(33);
}

QByteArray gifOf(quint16 width, quint16 height)
{
    return "GIF89a" + little(width) + little(height) + QByteArray("\x80\0\0\0\0\0\xff\xff\xff,\0\0\0\0", 14) +
           little(width) + little(height) + QByteArray("\0\x02\x02\x44\x01\0;", 7);
}

QByteArray bmpOf(qint32 width, qint32 height)
{
    return "BM" + little(qint32(200)) + QByteArray(4, '\0') + little(qint32(54)) + little(qint32(40)) + little(width) +
           little(height) + little(qint16(1)) + little(qint16(24)) + QByteArray(24, '\0') + QByteArray(100, 'x');
}

QByteArray jpegOf(quint16 width, quint16 height, bool progressive)
{
    QByteArray file = encoded(colorful(QSize(8, 8)), {progressive ? ".jpg[interlace]" : ".jpg"});
    const QByteArray frame = progressive ? "\xff\xc2" : "\xff\xc0";
    return file.replace(file.indexOf(frame) + 5, 4, QByteArray(big(height) + big(width)));
}

QByteArray tiffOf(const QList<std::array<quint32, 3>> &entries) // tag, type, value
{
    QByteArray file = QByteArray("II*\0\x08\0\0\0", 8) + little(quint16(entries.size()));
    for (const auto &[tag, type, value] : entries)
        file += little(quint16(tag)) + little(quint16(type)) + little(quint32(1)) + little(value);
    return file + QByteArray(400, '\0');
}

qint64 peakMemory()
{
    rusage usage = {};
    ::getrusage(RUSAGE_SELF, &usage);
    return qint64(usage.ru_maxrss) * 1024;
}

constexpr bool kSanitized =
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    true;
#else
    false;
#endif

}

/// Files made to harm: refused or shown, in bounded memory, and never a crash.
class TestHostilePictures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void refusesByHeader_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("bytes");
        const auto add = [](const char *name, const QByteArray &bytes) {
            QTest::newRow(name) << QString::fromLatin1(name) << bytes;
        };
        QCOMPARE(gifOf(65535, 65535).size(), 35);
        add("35 bytes.gif", gifOf(65535, 65535));
        add("square.png", pngOf(0x7fffffff, 0x7fffffff));
        add("one row.png", pngOf(200'000'000, 1));
        add("one column.png", pngOf(1, 200'000'000));
        add("just too large.png", pngOf(20'000, 15'001));
        add("nothing.png", pngOf(0, 5));
        add("large.jpg", jpegOf(65500, 65500, false));
        add("progressive.jpg", jpegOf(20'000, 15'000, true) + QByteArray(700'000, 'x'));
        add("nothing.jpg", jpegOf(0, 8, false));
        add("large.bmp", bmpOf(60'000, 60'000));
        add("upside down.bmp", bmpOf(60'000, -60'000));
        add("lowest number.bmp", bmpOf(10, std::numeric_limits<qint32>::min()));
        add("large.tif",
            tiffOf({{256, 4, 100'000}, {257, 4, 100'000}, {258, 3, 8}, {262, 3, 1}, {273, 4, 8}, {279, 4, 8}}));
        add("circle.tif", QByteArray("II*\0\x08\0\0\0\0\0\x08\0\0\0", 14));
        add("cut.tif", QByteArray("II*\0\xff\xff\xff\x7f", 8));
        add("empty.dng", QByteArray());
        add("text.cr2", QByteArray("just some text that is no camera raw file at all"));
        add("no preview.dng", rawFile(QByteArray(100, 'x'), QSize(10, 10), 1));
        add("markers only.jpg", QByteArray("\xff\xd8") + QByteArray(2000, '\xff'));
        add("endless segments.jpg", QByteArray("\xff\xd8") + QByteArray("\xff\xe1\0\x02", 4).repeated(30'000));
        add("brand only.heic", QByteArray("\0\0\0\x18"
                                          "ftypheic\0\0\0\0mif1heic",
                                          24));
        add("brand only.avif", QByteArray("\0\0\0\x18"
                                          "ftypavif\0\0\0\0mif1avif",
                                          24));
        add("sound.webp", QByteArray("RIFF\x10\0\0\0WEBPVP8 ", 16));
        add("start.jxl", QByteArray("\xff\x0a\xff\xff\xff\xff", 6));
    }

    void refusesByHeader()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, bytes);
        const Folder folder;
        const QString path = folder.add(name, bytes);
        const auto file = openRegularFile(path);
        QString reason;
        QVERIFY(!Decoder::readHeader(file->descriptor.number(), path, &reason));
        QVERIFY(!reason.isEmpty());
        QVERIFY(!decode(path));
        QVERIFY(!Decoder::embeddedThumbnail(file->descriptor.number(), path));
    }

    void survivesLies_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("bytes");
        const auto add = [](const char *name, const QByteArray &bytes) {
            QTest::newRow(name) << QString::fromLatin1(name) << bytes;
        };
        add("300 megapixels in a few bytes.png", pngOf(20'000, 15'000));
        add("300 megapixels in a few bytes.jpg", jpegOf(20'000, 15'000, false));
        add("progressive, 300 megapixels in a few bytes.jpg", jpegOf(20'000, 15'000, true));
        add("300 megapixels in a few bytes.bmp", bmpOf(20'000, 15'000));
        add("interlaced, 300 megapixels in a few bytes.png", pngOf(20'000, 15'000, 1));
        add("289 megapixels in 35 bytes.gif", gifOf(17'000, 17'000));
        add("one strip.tif", tiffOf({{256, 4, 17'000},
                                     {257, 4, 17'000},
                                     {258, 3, 8},
                                     {259, 3, 5},
                                     {262, 3, 1},
                                     {273, 4, 8},
                                     {277, 3, 1},
                                     {278, 4, 17'000},
                                     {279, 4, 300}}));
        add("one tile.tif", tiffOf({{256, 4, 17'000},
                                    {257, 4, 17'000},
                                    {258, 3, 8},
                                    {259, 3, 8},
                                    {262, 3, 1},
                                    {277, 3, 1},
                                    {322, 4, 17'008},
                                    {323, 4, 17'008},
                                    {324, 4, 8},
                                    {325, 4, 300}}));
    }

    /// What a few bytes promise is not allocated on their word; a thumbnail is asked for.
    void survivesLies()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, bytes);
        const Folder folder;
        DecodeRequest request;
        request.size = QSize(24, 18);
        const qint64 before = peakMemory();
        const auto decoded = decode(folder.add(name, bytes), request);
        const qint64 grown = peakMemory() - before;
        QVERIFY(!decoded || (decoded->damaged && decoded->pixels.size() == request.size));
        QVERIFY2(kSanitized || grown < (qint64(400) << 20), qPrintable(QString::number(grown >> 20)));
    }

    /// Some libraries read a file whole before they say anything about it.
    void refusesHugeFiles()
    {
        const Folder folder;
        const std::pair<const char *, qint64> kinds[] = {
            {".jpg", Decoder::kMaxFileBytes}, {".gif", 64 << 20}, {".webp", 256 << 20}, {".heic", 256 << 20}};
        for (const auto &[suffix, most] : kinds) {
            const QString path = folder.add(QStringLiteral("huge"), encoded(colorful(QSize(8, 8)), {suffix}));
            QVERIFY(header(path));
            QVERIFY(QFile::resize(path, most + 1)); // a hole: takes no space
            QVERIFY2(!header(path), suffix);
            QVERIFY2(!decode(path), suffix);
        }
    }

    void showsWhatIsLeft_data()
    {
        QTest::addColumn<QString>("suffix");
        QTest::addColumn<double>("rowsThere"); // of the upper half of the picture
        for (const char *suffix : {".jpg[Q=90]", ".png", ".gif", ".tif", ".bmp"})
            QTest::newRow(suffix) << QString::fromLatin1(suffix) << 0.5;
        QTest::newRow("progressive") << QStringLiteral(".jpg[Q=90,interlace]") << 0.0;
    }

    void showsWhatIsLeft()
    {
        QFETCH(QString, suffix);
        QFETCH(double, rowsThere);
        const QImage picture = colorful(QSize(400, 300));
        QByteArray bytes;
        QBuffer buffer(&bytes);
        if (suffix == QLatin1String(".bmp"))
            QVERIFY(picture.mirrored().save(&buffer, "BMP")); // stored from the bottom up: the lower half survives
        else
            bytes = encoded(picture, {suffix.toLatin1().constData()});
        if (suffix == QLatin1String(".tif")) // its directory stands at the end: zero the last rows instead
            bytes = bytes.replace(8 + 400 * 3 * 200, 400 * 3 * 100, QByteArray(400 * 3 * 100, '\0'));
        else
            bytes.truncate(bytes.size() * 3 / 4);
        const Folder folder;
        const QString path = folder.add(QStringLiteral("cut"), bytes);
        for (const QSize size : {picture.size(), QSize(100, 75)}) {
            DecodeRequest request;
            request.size = size;
            const auto decoded = decode(path, request);
            QVERIFY(decoded);
            QCOMPARE(decoded->pixels.size(), size);
            QCOMPARE(decoded->damaged, suffix != QLatin1String(".tif"));
            QImage shown = suffix == QLatin1String(".bmp") ? decoded->pixels.mirrored() : decoded->pixels;
            const QRect upper(0, 0, size.width(), int(size.height() * rowsThere));
            const QImage expected = picture.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
            QVERIFY(upper.isEmpty() || meanDifference(shown.copy(upper), expected.copy(upper)) < 8);
        }
    }

    void survivesDamage_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("bytes");
        const QImage picture = colorful(QSize(120, 90));
        const QByteArray stamp = jpegFile(colorful(QSize(40, 30)));
        QTest::newRow("JPEG with notes") << QStringLiteral("a.jpg") << jpegFile(picture, exifBlock(6, stamp));
        for (const char *suffix : {".jpg[interlace]", ".jpg[profile=p3]", ".png", ".png[interlace]", ".tif",
                                   ".tif[tile,compression=lzw]", ".webp", ".heic", ".gif", ".jxl[effort=3]"})
            QTest::newRow(suffix) << QStringLiteral("a") << encoded(picture, {suffix});
        QTest::newRow("raw") << QStringLiteral("a.dng") << rawFile(jpegFile(picture), picture.size(), 6);
        QByteArray bitmap;
        QBuffer buffer(&bitmap);
        QVERIFY(picture.save(&buffer, "BMP"));
        QTest::newRow("BMP") << QStringLiteral("a.bmp") << bitmap;
    }

    /// Bytes flipped and ends cut off, the same way in every run; the first bytes, where all the lengths are, more
    /// often.
    void survivesDamage()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, bytes);
        QVERIFY(!bytes.isEmpty());
        const Folder folder;
        std::minstd_rand random(7);
        DecodeRequest request;
        request.size = QSize(60, 45);
        for (int round = 0; round < 60; ++round) {
            QByteArray broken = bytes;
            for (int i = 0; i < 1 + round % 4; ++i) {
                const qsizetype reach = round % 2 ? std::min<qsizetype>(broken.size(), 300) : broken.size();
                broken[qsizetype(random() % quint64(reach))] = char(random());
            }
            if (round % 3 == 0)
                broken.truncate(qsizetype(random() % quint64(broken.size())));
            const QString path = folder.add(name, broken);
            const auto head = header(path);
            const auto decoded = decode(path, request);
            QVERIFY(!decoded || (!decoded->pixels.isNull() && head && decoded->fullSize == head->size));
            const auto file = openRegularFile(path);
            const auto thumbnail = Decoder::embeddedThumbnail(file->descriptor.number(), path);
            QVERIFY(!thumbnail || !thumbnail->isNull());
        }
    }

    /// A library that maps files into memory would be killed here.
    void survivesFilesThatShrinkMeanwhile()
    {
        const Folder folder;
        for (const char *suffix : {".webp", ".gif", ".png", ".jpg", ".tif", ".heic"}) {
            const QString path = folder.add(QStringLiteral("a"), encoded(colorful(QSize(300, 200)), {suffix}));
            const auto file = openRegularFile(path);
            QVERIFY(file && Decoder::readHeader(file->descriptor.number(), path));
            QCOMPARE(::truncate(path.toUtf8().constData(), file->size / 3), 0);
            const auto decoded = Decoder::decode(file->descriptor.number(), path);
            QVERIFY(!decoded || decoded->damaged);
        }
    }

    void takesHarmlessWarningsForWhatTheyAre()
    {
        // Padding between segments, and rubbish behind the end, as some cameras leave it.
        QByteArray file = jpegFile(colorful(QSize(64, 48)), exifBlock(1));
        file.insert(file.indexOf("\xff\xdb"), QByteArray(7, '\xff'));
        file += QByteArray(500, 'x');
        const Folder folder;
        const auto decoded = decode(folder.add(QStringLiteral("a.jpg"), file));
        QVERIFY(decoded);
        QVERIFY(!decoded->damaged);
    }
};

REGISTER_TEST(TestHostilePictures)
#include "TestHostilePictures.moc"
