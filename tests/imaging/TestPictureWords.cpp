#include "TestPictures.h"
#include "TestRunner.h"

#include "CameraFacts.h"
#include "NotedFile.h"
#include "PictureWords.h"

#include <QTest>
#include <QtEndian>

#include <sys/stat.h>

using namespace TestPictures;
using namespace NotedFile;

namespace {

QByteArray picture()
{
    return jpegFile(colorful({32, 24}));
}

QByteArray pngWith(const QByteArray &exif, const QByteArray &xmp)
{
    const auto chunk = [](const QByteArray &typeAndBody) -> QByteArray {
        return number(quint64(typeAndBody.size() - 4), 4) + typeAndBody + number(pngChecksum(typeAndBody), 4);
    };
    const QByteArray png = encoded(colorful({8, 8}), {".png"});
    const qsizetype end = png.size() - 12; // programs write behind the pixels too
    return png.left(33) + chunk("eXIf" + exif) + png.mid(33, end - 33) +
           chunk(QByteArray("iTXtXML:com.adobe.xmp\0\0\0en\0\0", 28) + xmp) + png.mid(end);
}

QByteArray webPWith(const QByteArray &exif, const QByteArray &xmp)
{
    const auto chunk = [](const char *type, const QByteArray &body) -> QByteArray {
        QByteArray size = number(quint64(body.size()), 4);
        std::reverse(size.begin(), size.end());
        return type + size + body + QByteArray(body.size() % 2, '\0');
    };
    return chunk("RIFF", "WEBP" + chunk("VP8 ", "pixels") + chunk("EXIF", exif) + chunk("XMP ", xmp));
}

QByteArray jxlWith(const QByteArray &exif, const QByteArray &xmp)
{
    const auto box = [](const QByteArray &typeAndBody) -> QByteArray {
        return number(quint64(typeAndBody.size() + 4), 4) + typeAndBody;
    };
    return box(QByteArray("JXL \r\n\x87\n")) + box("Exif" + number(0, 4) + exif) + box("jxlcpixels") +
           box("xml " + xmp);
}

QByteArray heifWith(const QByteArray &exif, const QByteArray &xmp)
{
    const auto box = [](const QByteArray &typeAndBody) -> QByteArray {
        return number(quint64(typeAndBody.size() + 4), 4) + typeAndBody;
    };
    const QByteArray notes = number(6, 4) + QByteArray("Exif\0\0", 6) + exif;
    const auto file = [&](qint64 place) -> QByteArray {
        const auto entry = [&](quint64 item, const QByteArray &kind) -> QByteArray {
            return box("infe" + number(0x02000000, 4) + number(item, 2) + number(0, 2) + kind);
        };
        const auto at = [&](quint64 item, qint64 start, qsizetype size) -> QByteArray {
            return number(item, 2) + number(0, 2) + number(1, 2) + number(quint64(start), 4) + number(quint64(size), 4);
        };
        const QByteArray items = box("iinf" + number(0, 4) + number(2, 2) + entry(1, QByteArray("Exif\0", 5)) +
                                     entry(2, QByteArray("mime\0application/rdf+xml\0", 25)));
        const QByteArray places = box("iloc" + number(0, 4) + number(0x4400, 2) + number(2, 2) +
                                      at(1, place, notes.size()) + at(2, place + notes.size(), xmp.size()));
        return box("ftypheic" + number(0, 4)) + box("meta" + number(0, 4) + items + places) + box("mdat" + notes + xmp);
    };
    return file(file(0).size() - notes.size() - xmp.size());
}

QByteArray tiffWith(const QByteArray &xmp, const QByteArray &records = {})
{
    QList<Entry> more{{0x02bc, 1, quint32(xmp.size()), xmp}};
    if (!records.isEmpty())
        more << Entry{0x83bb, 1, quint32(records.size()), records};
    return cameraNotes(more);
}

/// With `middle` in place of the lists of a packet.
QByteArray packetOf(const QByteArray &middle)
{
    return packet({}, {})
        .replace("<dc:subject><rdf:Bag></rdf:Bag></dc:subject>", "")
        .replace("<dc:description><rdf:Alt></rdf:Alt></dc:description>", middle);
}

}

class TestPictureWords : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyFormatTellsTheSame_data()
    {
        const QByteArray xmp = packet(inEveryLanguage("Harbour"), {"sea", "old town"});
        const QByteArray notes = cameraNotes();
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("JPEG") << "a.jpg" << withExif(withPacket(picture(), xmp), notes);
        QTest::newRow("PNG") << "a.png" << pngWith(notes, xmp);
        QTest::newRow("WebP") << "a.webp" << webPWith("Exif" + QByteArray(2, '\0') + notes, xmp);
        QTest::newRow("JPEG XL") << "a.jxl" << jxlWith(notes, xmp);
        QTest::newRow("HEIF") << "a.heic" << heifWith(notes, xmp);
        QTest::newRow("TIFF") << "a.tif" << tiffWith(xmp);
        QTest::newRow("TIFF, IPTC") << "a.tif"
                                    << tiffWith(QByteArray(1, ' '),
                                                record(120, "Harbour") + record(25, "sea") + record(25, "old town"));
        QTest::newRow("raw that is TIFF") << "a.nef" << tiffWith(xmp);
    }
    void everyFormatTellsTheSame()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, bytes);
        const Folder folder;
        const QString path = folder.add(name, bytes);
        const PictureWords words = PictureWords::ofFile(path);
        QCOMPARE(words.caption, QStringLiteral("Harbour"));
        QCOMPARE(words.keywords, (QStringList{QStringLiteral("sea"), QStringLiteral("old town")}));

        const CameraFacts facts = CameraFacts::ofFile(path);
        QCOMPARE(facts.taken, QDateTime({2024, 5, 31}, {12, 34, 56}, Qt::UTC));
        QCOMPARE(facts.secondsFromUtc, std::optional(2 * 60 * 60));
        QCOMPARE(facts.camera, QStringLiteral("Norvik D5"));
        QCOMPARE(facts.lens, QStringLiteral("Norvik 85mm F1.8"));
        QCOMPARE(facts.exposureTime, 1.0 / 250);
        QCOMPARE(facts.aperture, 2.8);
        QCOMPARE(facts.iso, 400);
        QCOMPARE(facts.focalLength, 85.0);
    }

    void theNearestWordsCount_data()
    {
        const QByteArray own = packet(inEveryLanguage("embedded"), {"e"});
        const QByteArray records = record(120, "records") + record(25, "r");
        QTest::addColumn<QString>("sidecarName");
        QTest::addColumn<QByteArray>("sidecar");
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QString>("expected");
        const QByteArray both = withRecords(withPacket(picture(), own), records);
        const QByteArray beside = packet(inEveryLanguage("beside"), {"b"});
        QTest::newRow("full name") << "a.jpg.xmp" << beside << both << "beside|b";
        QTest::newRow("other case") << "a.jpg.XMP" << beside << both << "beside|b";
        QTest::newRow("stem") << "a.xmp" << beside << both << "beside|b";
        QTest::newRow("another photo's") << "ab.xmp" << beside << both << "embedded|e";
        QTest::newRow("each for itself") << "a.xmp" << packet(inEveryLanguage("beside"), {}) << both << "beside|e";
        QTest::newRow("broken") << "a.xmp" << beside.chopped(20) << both << "embedded|e";
        QTest::newRow("UTF-16") << "a.xmp"
                                << QByteArray("\xff\xfe") +
                                       QByteArray(reinterpret_cast<const char *>(QString::fromUtf8(beside).utf16()),
                                                  2 * beside.size())
                                << both << "beside|b";
        QTest::newRow("records last") << "-" << beside << withRecords(picture(), records) << "records|r";
        QTest::newRow("empty XMP") << "-" << beside << withRecords(withPacket(picture(), packet("", {})), records)
                                   << "records|r";
        QTest::newRow("nothing") << "-" << beside << picture() << "|";
    }
    void theNearestWordsCount()
    {
        QFETCH(QString, sidecarName);
        QFETCH(QByteArray, sidecar);
        QFETCH(QByteArray, file);
        const Folder folder;
        const QString path = folder.add(QStringLiteral("a.jpg"), file);
        (void)folder.add(sidecarName, sidecar);
        const PictureWords words = PictureWords::ofFile(path);
        QTEST(QString(words.caption + u'|' + words.keywords.join(u',')), "expected");
    }

    void textsComeOutAsPeopleMeantThem_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QString>("expected");
        const auto inXmp = [](const QByteArray &description, const QByteArrayList &subjects) {
            return withPacket(picture(), packet(description, subjects));
        };
        const auto inRecords = [](const QByteArray &records) { return withRecords(picture(), records); };
        QTest::newRow("for everyone") << inXmp("<rdf:li xml:lang='de'>Hafen</rdf:li>" + inEveryLanguage("Harbour"), {})
                                      << "Harbour|";
        QTest::newRow("no words") << inXmp(inEveryLanguage("x-default"), {}) << "|";
        QTest::newRow("only language") << inXmp("<rdf:li xml:lang='de'>Hafen</rdf:li>", {}) << "Hafen|";
        QTest::newRow("lines") << inXmp(inEveryLanguage(" two\nlines&#xD;\n "), {}) << "two lines|";
        QTest::newRow("no list") << withPacket(picture(), packetOf("<dc:description>plain</dc:description>"
                                                                   "<dc:subject>one</dc:subject>"))
                                 << "plain|one";
        QTest::newRow("junk beside") << withPacket(picture(),
                                                   packetOf("<dc:rights>a</dc:rights><dc:rights>b</dc:rights>"
                                                            "<dc:subject><rdf:Bag><rdf:li>sea</rdf:li>"
                                                            "</rdf:Bag></dc:subject>"))
                                     << "|sea";
        QTest::newRow("short form") << withPacket(
                                           picture(),
                                           packet({}, {})
                                               .replace("rdf:about=''", "rdf:about='' dc:description='a b'")
                                               .replace("<dc:description><rdf:Alt></rdf:Alt></dc:description>", ""))
                                    << "a b|";
        QTest::newRow("blanks and repeats") << inXmp({}, {"  old \n town ", "Sea", "sea", " ", ""}) << "|old town,Sea";
        QTest::newRow("marked UTF-8") << inRecords(kUtf8Records + record(120, "Möwe")) << QStringLiteral("Möwe|");
        QTest::newRow("unmarked UTF-8") << inRecords(record(120, "Möwe") + record(25, "Süd"))
                                        << QStringLiteral("Möwe|Süd");
        QTest::newRow("marked UTF-8, broken")
            << inRecords(kUtf8Records + record(120, "M\xf6we")) << QStringLiteral("M\ufffdwe|");
        QTest::newRow("Windows, all alike") << inRecords(record(120, "O\x92"
                                                                     "Brien") +
                                                         record(25, "10 \x80, M\xc3\xb6we"))
                                            << QStringLiteral("O’Brien|10 €, MÃ¶we");
        QTest::newRow("the first caption") << inRecords(record(120, "own") + record(120, "other")) << "own|";
        QTest::newRow("parts and other pictures")
            << withPacket(picture(), packetOf("<dc:relation rdf:parseType='Resource'><dc:description>not this"
                                              "</dc:description><dc:subject>nor this</dc:subject></dc:relation>"
                                              "<dc:subject/><dc:subject><rdf:Bag><rdf:li xml:lang='en'>sea</rdf:li>"
                                              "<rdf:li>old <b>town</b></rdf:li></rdf:Bag></dc:subject>"))
            << "|sea,old town";
        QTest::newRow("not for XML") << inRecords(record(120, QByteArray("a\0b\x01", 4) + "c\xef\xbf\xbe"
                                                                                          "d"))
                                     << "a b cd|";
        QTest::newRow("controls in XML") << inXmp(inEveryLanguage("a\x01\xef\xbf\xbf"
                                                                  "b"),
                                                  {})
                                         << "a  b|";
        const QByteArray longText(PictureWords::kLongestCaption + 1, 'x');
        QTest::newRow("long") << inXmp(inEveryLanguage(longText), {longText.left(PictureWords::kLongestKeyword + 1)})
                              << QString::fromLatin1(longText.chopped(1)) + u'|';
    }
    void textsComeOutAsPeopleMeantThem()
    {
        QFETCH(QByteArray, file);
        const Folder folder;
        const PictureWords words = PictureWords::ofFile(folder.add(QStringLiteral("a.jpg"), file));
        QTEST(QString(words.caption + u'|' + words.keywords.join(u',')), "expected");
    }

    /// None of these may hang, crash or fill the memory; the words of the file itself are read all the same.
    void hostileSidecarsCountAsNone_data()
    {
        QTest::addColumn<QByteArray>("sidecar");
        const QByteArray lots(40'000, ' ');
        QTest::newRow("not XML") << QByteArray(5000, '\xff');
        QTest::newRow("entities")
            << "<!DOCTYPE x [<!ENTITY a '0123456789'><!ENTITY b '&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;'>]>" +
                   packet(inEveryLanguage("&b;"), {"&b;"});
        QTest::newRow("depth") << packetOf("<dc:a a='/&gt;/>'>" +
                                           QByteArray(lots).replace(" ", "<dc:a><rdf:Description>"));
        QTest::newRow("depth, ended") << packetOf(QByteArray(lots).replace(" ", "<dc:a rdf:parseType='Resource'>") +
                                                  QByteArray(lots).replace(" ", "</dc:a>"));
        QByteArray properties;
        for (int i = 0; i < 40'000; ++i)
            properties += "<rdf:li" + QByteArray::number(i) + "/>";
        QTest::newRow("siblings") << packetOf(properties);
        QByteArray items;
        for (int i = 0; i < 20'000; ++i)
            items += "<rdf:li-" + QByteArray::number(i) + "/>";
        QTest::newRow("like items") << packetOf("<dc:description rdf:parseType='Resource'>" + items +
                                                "</dc:description>");
        QByteArray spaces;
        for (int i = 0; i < 20'000; ++i)
            spaces += " xmlns:a" + QByteArray::number(i) + "='u'";
        QTest::newRow("namespaces") << packetOf("<dc:subject" + spaces + "><rdf:Bag>" +
                                                QByteArray(lots).replace(" ", "<rdf:li/>") + "</rdf:Bag></dc:subject>");
        QTest::newRow("attributes") << packetOf("<dc:a" + properties.replace("<rdf:", " dc:").replace("/>", "=''") +
                                                "/>");
    }
    void hostileSidecarsCountAsNone()
    {
        QFETCH(QByteArray, sidecar);
        const Folder folder;
        const QByteArray records = record(120, "own") + record(25, "o");
        const QString path = folder.add(QStringLiteral("a.jpg"), withRecords(picture(), records));
        (void)folder.add(QStringLiteral("a.xmp"), sidecar);
        const PictureWords words = PictureWords::ofFile(path);
        QCOMPARE(words.caption, QStringLiteral("own"));
        QCOMPARE(words.keywords, QStringList(QStringLiteral("o")));
    }

    /// Exiv2 looks through all records for each, and copies what entries lead to for each of them.
    void hostileBlocksEndSoon()
    {
        const Folder folder;
        QByteArray records;
        for (int i = 0; i < 60'000; ++i)
            records += record(25, QByteArray::number(i)) + record(120, {});
        const PictureWords words =
            PictureWords::ofFile(folder.add(QStringLiteral("a.tif"), tiffWith(QByteArray(1, ' '), records)));
        QCOMPARE(words.keywords.size(), PictureWords::kMostKeywords);

        QByteArray block = cameraNotes();
        block.resize(4 << 20);
        QCOMPARE(CameraFacts::ofFile(folder.add(QStringLiteral("a.png"), pngWith(block, {}))), CameraFacts());
    }

    void whatIsNoUsualFileIsPassedOver()
    {
        const Folder folder;
        const QString path = folder.add(QStringLiteral("a.jpg"), withRecords(picture(), record(120, "own")));
        QCOMPARE(::mkfifo(QFile::encodeName(folder.path(QStringLiteral("a.jpg.xmp"))).constData(), 0600), 0);
        QVERIFY(QDir().mkdir(folder.path(QStringLiteral("a.jpg.XMP"))));
        QFile huge(folder.add(QStringLiteral("a.xmp"), packet(inEveryLanguage("huge"), {})));
        QVERIFY(huge.resize(qint64(100) << 20));
        QCOMPARE(PictureWords::ofFile(path).caption, QStringLiteral("own"));

        const QString pipe = folder.path(QStringLiteral("b.jpg"));
        QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        (void)folder.add(QStringLiteral("b.xmp"), packet(inEveryLanguage("beside"), {}));
        QCOMPARE(PictureWords::ofFile(pipe).caption, QStringLiteral("beside"));
        QCOMPARE(CameraFacts::ofFile(pipe), CameraFacts());
    }

    void veryManyKeywordsAreCut()
    {
        QByteArrayList subjects;
        for (int i = 0; i < 100'000; ++i)
            subjects << "keyword " + QByteArray::number(i);
        const Folder folder;
        const QString path = folder.add(QStringLiteral("a.jpg"), picture());
        (void)folder.add(QStringLiteral("a.xmp"), packet({}, subjects));
        const PictureWords words = PictureWords::ofFile(path);
        QCOMPARE(words.keywords.size(), PictureWords::kMostKeywords);
        QCOMPARE(words.keywords.last(), QStringLiteral("keyword 999"));
    }

    /// Whatever is cut off or turned over, reading ends and tells no nonsense sizes.
    void damageIsSurvived_data() { everyFormatTellsTheSame_data(); }
    void damageIsSurvived()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, bytes);
        const Folder folder;
        const auto check = [&](const QByteArray &damaged) {
            const QString path = folder.add(name, damaged);
            const PictureWords words = PictureWords::ofFile(path);
            const CameraFacts facts = CameraFacts::ofFile(path);
            return words.keywords.size() <= 2 && words.caption.size() < 100 && facts.iso >= 0 &&
                   facts.exposureTime < 1e6;
        };
        const qsizetype step = qMax(bytes.size() / 25, qsizetype(1));
        for (qsizetype at = 0; at < bytes.size(); at += step) {
            QVERIFY(check(bytes.left(at)));
            QByteArray turned = bytes;
            for (qsizetype i = at; i < qMin(at + 4, bytes.size()); ++i)
                turned[i] = char(~turned.at(i));
            QVERIFY(check(turned));
        }
    }

    void camerasAreNamedOnce_data()
    {
        QTest::addColumn<QByteArray>("maker");
        QTest::addColumn<QByteArray>("model");
        QTest::addColumn<QString>("expected");
        QTest::newRow("repeated") << QByteArray("Alder") << QByteArray("ALDER X1") << "ALDER X1";
        QTest::newRow("company") << QByteArray("Alder Imaging Corp.") << QByteArray("Alder X1") << "Alder X1";
        QTest::newRow("told once") << QByteArray("Alder") << QByteArray("X1  ") << "Alder X1";
        QTest::newRow("no maker") << QByteArray() << QByteArray("X1") << "X1";
        QTest::newRow("no model") << QByteArray("Alder") << QByteArray("----") << "Alder";
    }
    void camerasAreNamedOnce()
    {
        QFETCH(QByteArray, maker);
        QFETCH(QByteArray, model);
        const Folder folder;
        const QByteArray block =
            QByteArray("MM\0*\0\0\0\x08", 8) + directory({text(0x010f, maker), text(0x0110, model)}, 8);
        const CameraFacts facts = CameraFacts::ofFile(folder.add(QStringLiteral("a.jpg"), withExif(picture(), block)));
        QTEST(facts.camera, "expected");
        QVERIFY(!facts.taken.isValid() && facts.lens.isEmpty() && facts.exposureTime == 0 && facts.iso == 0);
    }
};

REGISTER_TEST(TestPictureWords)
#include "TestPictureWords.moc"
