#include "CameraFile.h"
#include "DirectoryReader.h"
#include "ExportPreferences.h"
#include "SaveImage.h"
#include "TestPictures.h"
#include "TestRunner.h"
#include "TiffNotes.h"

#include <QRegularExpression>
#include <QTest>

#include <sys/stat.h>

using namespace TestPictures;

namespace {

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QStringList namesIn(const Folder &folder)
{
    return QDir(folder.path(QString())).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
}

/// A value of the first directory of a little-endian TIFF file.
int tiffTag(const QByteArray &file, int tag)
{
    const auto number = [&](qsizetype at, int bytes) {
        quint32 value = 0;
        for (int i = bytes - 1; i >= 0; --i)
            value = value << 8 | uchar(file.at(at + i));
        return value;
    };
    const qsizetype directory = number(4, 4);
    for (qsizetype i = 0; i < qsizetype(number(directory, 2)); ++i) {
        const qsizetype entry = directory + 2 + 12 * i;
        if (int(number(entry, 2)) == tag)
            return int(number(entry + 8, 2));
    }
    return -1;
}

}

/// The writer: which type it chooses, where it puts the file, and what comes back when it is read again.
class TestSaveImage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void choosesTypeAndName_data();
    void choosesTypeAndName();
    void readsBackWhatItWrote_data();
    void readsBackWhatItWrote();
    void writesIntoMemory();
    void writesPdf();
    void enlargesWhenAsked();
    void neverOverwritesWhenUnique();
    void replacesOnlyWhenComplete();
    void failsWithoutTraces_data();
    void failsWithoutTraces();
    void compressesAsAsked();
    void writesProfileButNoNotes_data();
    void writesProfileButNoNotes();
    void writesTheNotesAsked();
    void takesNoRubbishForNotes();
    void findsNotesBehindThePixels();
    void flattensOntoWhite();
    void makesTiffBytes();
    void computesExportSizes_data();
    void computesExportSizes();
    void mapsFormatsAndSettings();
};

void TestSaveImage::choosesTypeAndName_data()
{
    QTest::addColumn<QString>("asked");
    QTest::addColumn<SaveFileType>("type");
    QTest::addColumn<bool>("alpha");
    QTest::addColumn<QString>("written");
    QTest::addColumn<ImageFormat>("format"); // Unknown: PDF
    using T = SaveFileType;
    using F = ImageFormat;
    const auto add = [](const char *asked, T type, bool alpha, const char *written, F format) {
        QTest::addRow("%s %d%s", asked, int(type), alpha ? " alpha" : "")
            << QString::fromLatin1(asked) << type << alpha << QString::fromLatin1(written) << format;
    };
    add("photo.jpg", T::Automatic, false, "photo.jpg", F::Jpeg);
    add("photo.JPG", T::Automatic, true, "photo.JPG", F::Jpeg);
    add("photo.bmp", T::Automatic, false, "photo.jpg", F::Jpeg);
    add("photo.bmp", T::Automatic, true, "photo.tiff", F::Tiff);
    add("photo.jpeg", T::Automatic, true, "photo.tiff", F::Tiff);
    add("photo.PNG", T::Automatic, false, "photo.PNG", F::Png);
    add("photo", T::Automatic, true, "photo.png", F::Png);
    add("photo", T::Automatic, false, "photo.jpg", F::Jpeg);
    add("photo.jpeg", T::Jpeg, false, "photo.jpg", F::Jpeg);
    add("photo.tif", T::Tiff, false, "photo.tiff", F::Tiff);
    add("v1.2.png", T::Jpeg, false, "v1.2.jpg", F::Jpeg);
    add("photo.jpg", T::Png, true, "photo.png", F::Png);
    add("photo.jpg", T::Pdf, false, "photo.pdf", F::Unknown);
}

void TestSaveImage::choosesTypeAndName()
{
    QFETCH(QString, asked);
    QFETCH(SaveFileType, type);
    QFETCH(bool, alpha);
    QFETCH(QString, written);
    QFETCH(ImageFormat, format);
    const Folder folder;
    SaveRequest request;
    request.path = folder.path(asked);
    request.type = type;
    QVERIFY(SaveImageCore(0, 0, Image::fromPixels(colorful(QSize(40, 30), alpha)), request));
    QCOMPARE(request.path, folder.path(written));
    QCOMPARE(namesIn(folder), QStringList(written));
    QVERIFY(!request.writeFailed);
    QCOMPARE(imageFormat(written, contentOf(request.path)), format);
    QVERIFY(written.endsWith(request.extension, Qt::CaseInsensitive));
}

void TestSaveImage::readsBackWhatItWrote_data()
{
    QTest::addColumn<SaveFileType>("type");
    QTest::addColumn<bool>("alpha");
    QTest::addColumn<double>("tolerance");
    QTest::newRow("JPEG") << SaveFileType::Jpeg << false << 1.0;
    QTest::newRow("PNG") << SaveFileType::Png << false << 0.0;
    QTest::newRow("PNG with alpha") << SaveFileType::Png << true << 0.5;
    QTest::newRow("TIFF") << SaveFileType::Tiff << false << 0.0;
    QTest::newRow("TIFF with alpha") << SaveFileType::Tiff << true << 0.5;
}

void TestSaveImage::readsBackWhatItWrote()
{
    QFETCH(SaveFileType, type);
    QFETCH(bool, alpha);
    QFETCH(double, tolerance);
    const Folder folder;
    const QImage picture = colorful(QSize(200, 151), alpha);
    SaveRequest request;
    request.path = folder.path(QStringLiteral("ein Bild"));
    request.type = type;
    request.fullChroma = true;
    QVERIFY(SaveImageCore(0, 0, Image::fromPixels(picture), request));
    QCOMPARE(request.rect, QSize(200, 151));
    QVERIFY(meanDifference(decode(request.path)->pixels, picture) <= tolerance);
    QVERIFY(meanDifference(QImage(request.path), picture) <= tolerance); // another reader agrees
    QVERIFY(SaveImageCore(50, 0, Image::fromPixels(picture), request));
    QCOMPARE(header(request.path)->size, QSize(50, 151));
}

void TestSaveImage::writesIntoMemory()
{
    SaveRequest request;
    request.type = SaveFileType::Jpeg;
    request.data = "old";
    QVERIFY(SaveImageCore(20, 10, Image::fromPixels(colorful(QSize(40, 20))), request));
    QCOMPARE(QImage::fromData(request.data).size(), QSize(20, 10));
    QVERIFY(request.path.isEmpty());
}

void TestSaveImage::writesPdf()
{
    const Folder folder;
    SaveRequest request;
    request.path = folder.path(QStringLiteral("page.pdf"));
    request.type = SaveFileType::Pdf;
    QVERIFY(SaveImageCore(321, 123, Image::fromPixels(colorful(QSize(642, 246))), request));
    const QByteArray file = contentOf(request.path);
    QVERIFY(file.startsWith("%PDF-"));
    QCOMPARE(file.count("/Type /Page\n"), 1);
    const QRegularExpression box(QStringLiteral("/MediaBox\\s*\\[\\s*0 0 321(\\.0*)? 123(\\.0*)?\\s*\\]"));
    QVERIFY(box.match(QString::fromLatin1(file)).hasMatch());
}

void TestSaveImage::enlargesWhenAsked()
{
    SaveRequest request;
    request.type = SaveFileType::Png;
    QVERIFY(SaveImageCore(80, 60, Image::fromPixels(colorful(QSize(40, 30))), request));
    QVERIFY(meanDifference(QImage::fromData(request.data), colorful(QSize(80, 60))) < 4);
}

void TestSaveImage::neverOverwritesWhenUnique()
{
    const Folder folder;
    const QString taken = folder.add(QStringLiteral("a.jpg"), "somebody's");
    for (const char *expected : {"a-1.jpg", "a-2.jpg"}) {
        SaveRequest request;
        request.path = taken;
        request.type = SaveFileType::Jpeg;
        request.unique = true;
        QVERIFY(SaveImageCore(0, 0, Image::fromPixels(colorful(QSize(40, 30))), request));
        QCOMPARE(request.path, folder.path(QString::fromLatin1(expected)));
        QVERIFY(header(request.path));
    }
    QCOMPARE(contentOf(taken), QByteArray("somebody's"));
    QCOMPARE(namesIn(folder).size(), 3);
}

void TestSaveImage::replacesOnlyWhenComplete()
{
    const Folder folder;
    SaveRequest request;
    request.path = folder.add(QStringLiteral("a.jpg"), "old");
    request.type = SaveFileType::Jpeg;
    const QString source = folder.add(QStringLiteral("source.png"), encoded(colorful(QSize(40, 30)), {".png"}));
    const Image image = Image::fromFile(source);
    QVERIFY(QFile::remove(source));
    QVERIFY(!SaveImageCore(0, 0, image, request));
    QVERIFY(!request.writeFailed);
    QCOMPARE(contentOf(request.path), QByteArray("old"));
    QVERIFY(SaveImageCore(0, 0, Image::fromPixels(colorful(QSize(40, 30))), request));
    QVERIFY(header(request.path));
    QCOMPARE(namesIn(folder), QStringList(QStringLiteral("a.jpg")));
}

void TestSaveImage::failsWithoutTraces_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<bool>("writeFailed");
    QTest::newRow("no such folder") << QStringLiteral("missing/a.jpg") << QSize(0, 0) << true;
    QTest::newRow("a folder stands there") << QStringLiteral("folder.jpg") << QSize(0, 0) << true;
    QTest::newRow("negative size") << QStringLiteral("a.jpg") << QSize(-1, 5) << false;
    QTest::newRow("beyond all limits") << QStringLiteral("a.jpg") << QSize(90000, 90000) << false;
    QTest::newRow("wider than JPEG can be") << QStringLiteral("a.jpg") << QSize(70000, 10) << false;
}

void TestSaveImage::failsWithoutTraces()
{
    QFETCH(QString, path);
    QFETCH(QSize, size);
    QFETCH(bool, writeFailed);
    const Folder folder;
    QVERIFY(QDir().mkdir(folder.path(QStringLiteral("folder.jpg"))));
    for (const bool unique : {false, true}) {
        SaveRequest request;
        request.path = folder.path(path);
        request.type = SaveFileType::Jpeg;
        request.unique = unique && !path.startsWith(QLatin1String("folder"));
        QVERIFY(!SaveImageCore(size.width(), size.height(), Image::fromPixels(colorful(QSize(40, 30))), request));
        QCOMPARE(request.writeFailed, writeFailed);
        QCOMPARE(namesIn(folder), QStringList(QStringLiteral("folder.jpg")));
    }
    SaveRequest request;
    QVERIFY(!SaveImageCore(0, 0, Image(), request));
}

void TestSaveImage::compressesAsAsked()
{
    const Image image = Image::fromPixels(colorful(QSize(300, 200)));
    const auto saved = [&](SaveFileType type, double compression, bool fullChroma = false) {
        SaveRequest request;
        request.type = type;
        request.compression = compression;
        request.fullChroma = fullChroma;
        return SaveImageCore(0, 0, image, request) ? request.data : QByteArray();
    };
    constexpr int compressionTag = 259;
    constexpr int none = 1;
    constexpr int lzw = 5;
    QCOMPARE(tiffTag(saved(SaveFileType::Tiff, 0), compressionTag), none);
    QCOMPARE(tiffTag(saved(SaveFileType::Tiff, 0.99), compressionTag), none);
    QCOMPARE(tiffTag(saved(SaveFileType::Tiff, 1), compressionTag), lzw);
    const qsizetype low = saved(SaveFileType::Jpeg, 0.3).size();
    const qsizetype high = saved(SaveFileType::Jpeg, 0.95).size();
    QVERIFY(low > 0 && low < high);
    QCOMPARE(saved(SaveFileType::Jpeg, 7).size(), saved(SaveFileType::Jpeg, 1).size()); // beyond the range: its end
    QVERIFY(!saved(SaveFileType::Jpeg, -1).isEmpty());
    QVERIFY(saved(SaveFileType::Jpeg, 0.95, /*fullChroma=*/true).size() > high);
}

void TestSaveImage::writesProfileButNoNotes_data()
{
    QTest::addColumn<SaveFileType>("type");
    QTest::addColumn<QByteArray>("profileMark");
    QTest::newRow("JPEG") << SaveFileType::Jpeg << QByteArray("ICC_PROFILE");
    QTest::newRow("PNG") << SaveFileType::Png << QByteArray("iCCP");
    QTest::newRow("TIFF") << SaveFileType::Tiff << QByteArray("acsp");
}

void TestSaveImage::writesProfileButNoNotes()
{
    QFETCH(SaveFileType, type);
    QFETCH(QByteArray, profileMark);
    const Folder folder;
    const QByteArray camera = jpegFile(colorful(QSize(80, 60)), exifBlock(6, jpegFile(colorful(QSize(16, 12)))));
    const Image image = Image::fromFile(folder.add(QStringLiteral("camera.jpg"), camera));
    SaveRequest request;
    request.type = type;
    QVERIFY(SaveImageCore(0, 0, image, request));
    QVERIFY(request.data.contains(profileMark));
    QVERIFY(!request.data.contains("Exif") && !request.data.contains("eXIf"));
    const auto again = decode(folder.add(QStringLiteral("again"), request.data));
    QCOMPARE(again->fullSize, QSize(60, 80)); // upright without a word about it
    QVERIFY(meanDifference(again->pixels, *image.pixels()) < 2);
    request.embedProfile = false;
    QVERIFY(SaveImageCore(0, 0, image, request));
    QVERIFY(!request.data.contains(profileMark));
}

void TestSaveImage::writesTheNotesAsked()
{
    const Folder folder;
    const Image image = Image::fromPixels(colorful(QSize(40, 30)));
    SaveRequest request;
    request.notes = {"2021:06:05 04:03:02", "Zoë & Ko", QByteArray("mine\0hers", 9)};
    for (const SaveFileType type : {SaveFileType::Jpeg, SaveFileType::Png, SaveFileType::Tiff}) {
        request.type = type;
        request.path = folder.path(QStringLiteral("a.jpg"));
        QVERIFY(SaveImageCore(0, 0, image, request));
        const Image written = Image::fromFile(request.path);
        QCOMPARE(written.size(), image.size());
        for (const Image &shown : {written, written.cropped(QRectF(1, 1, 5, 5))}) {
            QCOMPARE(shown.notes().taken, request.notes.taken);
            QCOMPARE(shown.notes().artist, request.notes.artist);
            QCOMPARE(shown.notes().copyright, request.notes.copyright);
        }
    }
    const QByteArray preview = jpegFile(colorful(QSize(64, 48)), request.notes.exif());
    const Image raw = Image::fromFile(folder.add(QStringLiteral("a.dng"), rawFile(preview, QSize(64, 48), 1)));
    QCOMPARE(raw.notes().taken, request.notes.taken);
    for (const SaveFileType type : {SaveFileType::Png, SaveFileType::Tiff, SaveFileType::Pdf}) {
        SaveRequest other;
        other.type = type;
        other.notes = request.notes;
        QVERIFY(SaveImageCore(0, 0, image, other));
        for (const char *text : {"2021-06-05T04:03:02", "Zoë &amp; Ko", "mine, hers"})
            QVERIFY2(other.data.contains(text), qPrintable(other.extension + QString::fromUtf8(text)));
    }
}

void TestSaveImage::takesNoRubbishForNotes()
{
    const QByteArray exif = PictureNotes{"2021:06:05 04:03:02", "A", "B"}.exif();
    for (qsizetype length = 0; length < exif.size() - 20; ++length) // its end holds the moment
        QVERIFY(PictureNotes::fromExif(exif.left(length)).taken.isEmpty());
    QVERIFY((PictureNotes::fromExif(PictureNotes{"    :  :     :  :  ", {}, {}}.exif()).isEmpty()));
    QVERIFY(PictureNotes().exif().isEmpty() && PictureNotes().xmp().isEmpty());
}

void TestSaveImage::findsNotesBehindThePixels()
{
    using CameraFile::bigEndian;
    constexpr quint32 pixels = 400'000;
    constexpr quint32 first = 8 + pixels;
    constexpr quint32 camera = first + 2 + 2 * 12 + 4;
    const auto text = [](quint32 tag, quint32 length) -> QByteArray {
        return bigEndian(tag, 2) + bigEndian(2, 2) + bigEndian(length, 4);
    };
    const QByteArray file = QByteArray("MM\0*", 4) + bigEndian(first, 4) + QByteArray(pixels, '*') + bigEndian(2, 2) +
                            text(0x013b, 3) + QByteArray("Jo\0\0", 4) + CameraFile::exifEntry(0x8769, 13, camera) +
                            bigEndian(0, 4) + // ends the first directory
                            bigEndian(1, 2) + text(0x9003, 20) + bigEndian(camera + 2 + 12 + 4, 4) + bigEndian(0, 4) +
                            "2021:06:05 04:03:02";
    const PictureNotes notes = readTiffNotes(ByteSource(file));
    QCOMPARE(notes.taken, QByteArray("2021:06:05 04:03:02"));
    QCOMPARE(notes.artist, QByteArray("Jo"));
    for (qsizetype length = 0; length < file.size(); length += length < first - 10 ? 50'000 : 1) {
        const QByteArray part = file.left(length);
        QVERIFY(readTiffNotes(ByteSource(part)).taken.isEmpty());
    }
    const QByteArray exif = PictureNotes{"2021:06:05 04:03:02", "A", "B"}.exif().mid(6);
    QCOMPARE(readTiffNotes(ByteSource(exif)).copyright, QByteArray("B"));
}

void TestSaveImage::flattensOntoWhite()
{
    QImage clear(20, 20, QImage::Format_ARGB32_Premultiplied);
    clear.fill(Qt::transparent);
    SaveRequest request;
    request.type = SaveFileType::Jpeg;
    QVERIFY(SaveImageCore(0, 0, Image::fromPixels(clear), request));
    QCOMPARE(QImage::fromData(request.data).pixel(10, 10), qRgb(255, 255, 255));
}

void TestSaveImage::makesTiffBytes()
{
    const QImage picture = colorful(QSize(50, 40), /*withAlpha=*/true);
    const auto bytes = TiffFromImage(Image::fromPixels(picture));
    QVERIFY(bytes);
    const Folder folder;
    QVERIFY(meanDifference(decode(folder.add(QStringLiteral("a.tif"), *bytes))->pixels, picture) < 0.5);
    QVERIFY(!TiffFromImage(Image()));
}

void TestSaveImage::computesExportSizes_data()
{
    QTest::addColumn<QSize>("source");
    QTest::addColumn<int>("option");
    QTest::addColumn<QSize>("size");
    QTest::newRow("rounded down") << QSize(3000, 2000) << 2 << QSize(1000, 666);
    QTest::newRow("small enough") << QSize(800, 600) << 2 << QSize(800, 600);
    QTest::newRow("exactly") << QSize(2000, 2000) << 1 << QSize(2000, 2000);
    QTest::newRow("portrait") << QSize(2000, 3000) << 3 << QSize(400, 600);
    QTest::newRow("square") << QSize(900, 900) << 4 << QSize(300, 300);
    QTest::newRow("full size") << QSize(60000, 40000) << 0 << QSize(60000, 40000);
    QTest::newRow("no such option") << QSize(60000, 40000) << 5 << QSize(60000, 40000);
    QTest::newRow("one line") << QSize(60000, 1) << 4 << QSize(300, 1);
    // 1998.99994 is 1999 in single precision.
    QTest::newRow("single precision") << QSize(17990, 17999) << 1 << QSize(1999, 2000);
}

void TestSaveImage::computesExportSizes()
{
    QFETCH(QSize, source);
    QFETCH(int, option);
    QFETCH(QSize, size);
    QCOMPARE(finalImageSize(source, option), size);
}

void TestSaveImage::mapsFormatsAndSettings()
{
    const char *extensions[] = {"jpg", "pdf", "png", "tiff"};
    for (int format = 0; format < 4; ++format) {
        QCOMPARE(extensionForFormat(format), QString::fromLatin1(extensions[format]));
        QCOMPARE(formatForExtension(QString::fromLatin1(extensions[format])), std::optional(format));
    }
    QVERIFY(extensionForFormat(4).isNull() && extensionForFormat(-1).isNull());
    QCOMPARE(formatForExtension(QStringLiteral("JPEG")), std::optional(0));
    QCOMPARE(formatForExtension(QStringLiteral("tif")), std::optional(3));
    QVERIFY(!formatForExtension(QStringLiteral("gif")));
    constexpr int png = 2;
    for (const auto &[path, expected] :
         {std::pair("/a/b", "/a/b.png"), std::pair("/a/b.PNG", "/a/b.PNG"), std::pair("/a/b.jpeg", "/a/b.png"),
          std::pair("/a.pdf/v1.2", "/a.pdf/v1.2.png")})
        QCOMPARE(pathForFormat(QString::fromLatin1(path), png), QString::fromLatin1(expected));
    QCOMPARE(pathForFormat(QStringLiteral("/a/b.jpeg"), 0), QStringLiteral("/a/b.jpg"));
    QCOMPARE(exportCompression(), 0.7);
    g_saveFormat = 3;
    QCOMPARE(exportCompression(), 1.0);
    g_tiffCompression = false;
    QCOMPARE(exportCompression(), 0.0);
    g_saveFormat = 2;
    QCOMPARE(exportCompression(), 1.0);
}

REGISTER_TEST(TestSaveImage)
#include "TestSaveImage.moc"
