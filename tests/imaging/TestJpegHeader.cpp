#include "TestPictures.h"
#include "TestRunner.h"

#include "OpenFile.h"

#include <QTest>

using namespace TestPictures;

namespace {

QByteArray segment(uchar marker, const QByteArray &body)
{
    const auto length = quint16(body.size() + 2);
    return QByteArray("\xff") + char(marker) + char(length >> 8) + char(length & 0xff) + body;
}

/// A picture of 64 × 64, behind a marker without length: who takes what follows it for one comes, after two jumps over
/// comments, to the frame of a picture of 16 × 16.
QByteArray doubleHeader()
{
    constexpr uchar comment = 0xfe;
    constexpr uchar other = 0xe5;
    const QByteArray frame("\xff\xc0\0\x11\x08\0\x10\0\x10\x03\x01\x11\0\x02\x11\0\x03\x11\0", 19);
    const QByteArray scan("\xff\xda\0\x0c\x03\x01\0\x02\x11\x03\x11\0\x3f\0", 14);
    QByteArray first(65533, 'x');
    first.replace(65530, 3, QByteArray(QByteArray("\xff") + char(other) + '\0'));
    QByteArray second(400, 'x');
    second.replace(251, frame.size() + scan.size(), QByteArray(frame + scan));
    const QByteArray plain = jpegFile(colorful(QSize(64, 64)));
    return plain.left(2) + QByteArray("\xff\x01") + segment(comment, first) + segment(comment, second) + plain.mid(2);
}

}

/// What admits a JPEG file and what decodes it must read the same header.
class TestJpegHeader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void markersWithoutLengthHideNoFrame()
    {
        const Folder folder;
        const QString path = folder.add(QStringLiteral("double.jpg"), doubleHeader());
        const auto told = header(path);
        QVERIFY(told);
        QCOMPARE(told->size, QSize(64, 64));
        const auto decoded = decode(path);
        QVERIFY(decoded);
        QCOMPARE(decoded->pixels.size(), QSize(64, 64));
    }

    void anEmbeddedPictureIsSmall()
    {
        QImage large(1500, 1000, QImage::Format_RGB32);
        large.fill(Qt::gray);
        const Folder folder;
        const QString path = folder.add(QStringLiteral("camera.jpg"),
                                        jpegFile(colorful(QSize(900, 600)), exifBlock(1, jpegFile(large))));
        const auto opened = openRegularFile(path);
        QVERIFY(opened);
        QVERIFY(!Decoder::embeddedThumbnail(opened->descriptor.number(), path));
    }
};

REGISTER_TEST(TestJpegHeader)
#include "TestJpegHeader.moc"
