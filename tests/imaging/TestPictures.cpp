#include "TestPictures.h"

#include "ImageEncoders.h"
#include "OpenFile.h"

#include <QDir>
#include <QFile>
#include <QtEndian>

#include <algorithm>
#include <cmath>

#include <vips/vips.h>

namespace TestPictures {

QImage colorful(QSize size, bool withAlpha)
{
    QImage image(size, QImage::Format_ARGB32);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            const double across = (x + 0.5) / size.width();
            const double down = (y + 0.5) / size.height();
            const double blue = across < 0.5 && down < 0.5 ? 220 : 40 + 60 * across * down;
            const int alpha = withAlpha && across > 0.5 ? int(255 * (1 - down)) : 255;
            image.setPixel(x, y, qRgba(int(30 + 200 * across), int(220 - 190 * down), int(blue), alpha));
        }
    }
    return image.convertToFormat(withAlpha ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
}

namespace {

template<typename Visit>
void visitDifferences(const QImage &a, const QImage &b, Visit visit)
{
    const QImage left = a.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    const QImage right = b.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < left.height(); ++y) {
        for (qsizetype x = 0; x < qsizetype(left.width()) * 4; ++x)
            visit(std::abs(left.constScanLine(y)[x] - right.constScanLine(y)[x]));
    }
}

}

double meanDifference(const QImage &a, const QImage &b)
{
    if (a.size() != b.size() || a.isNull())
        return 255;
    double sum = 0;
    visitDifferences(a, b, [&](int difference) { sum += difference; });
    return sum / (4.0 * a.width() * a.height());
}

int largestDifference(const QImage &a, const QImage &b)
{
    int largest = a.size() != b.size() || a.isNull() ? 255 : 0;
    if (largest == 0)
        visitDifferences(a, b, [&](int difference) { largest = std::max(largest, difference); });
    return largest;
}

namespace {

/// A TIFF directory, little endian, whose values all fit into their entries or are offsets.
class Directory
{
public:
    void add(quint16 tag, quint16 type, quint32 count, quint32 value)
    {
        number(tag);
        number(type);
        number(count);
        number(value);
        ++m_count;
    }
    QByteArray bytes(quint32 next = 0) const { return number16(m_count) + m_entries + number32(next); }
    static QByteArray number16(quint16 value)
    {
        value = qToLittleEndian(value);
        return QByteArray(reinterpret_cast<const char *>(&value), 2);
    }
    static QByteArray number32(quint32 value)
    {
        value = qToLittleEndian(value);
        return QByteArray(reinterpret_cast<const char *>(&value), 4);
    }

private:
    void number(quint16 value) { m_entries += number16(value); }
    void number(quint32 value) { m_entries += number32(value); }

    quint16 m_count = 0;
    QByteArray m_entries;
};

constexpr quint16 kShort = 3;
constexpr quint16 kLong = 4;
constexpr quint32 kHeaderSize = 8;

QByteArray tiffHeader()
{
    return QByteArray("II*\0", 4) + Directory::number32(kHeaderSize);
}

}

QByteArray exifBlock(int orientation, const QByteArray &thumbnail)
{
    constexpr quint32 oneEntry = 2 + 12 + 4;
    Directory first;
    first.add(0x0112, kShort, 1, quint32(orientation));
    QByteArray block = QByteArray("Exif\0\0", 6) + tiffHeader();
    if (thumbnail.isEmpty())
        return block + first.bytes();
    constexpr quint32 threeEntries = 2 + 3 * 12 + 4;
    Directory second;
    second.add(0x0103, kShort, 1, 6);
    second.add(0x0201, kLong, 1, kHeaderSize + oneEntry + threeEntries);
    second.add(0x0202, kLong, 1, quint32(thumbnail.size()));
    return block + first.bytes(kHeaderSize + oneEntry) + second.bytes() + thumbnail;
}

QByteArray jpegFile(const QImage &pixels, const QByteArray &exif)
{
    const QByteArray plain = ImageEncoders::jpeg(pixels, 95, ImageEncoders::Chroma::Full, {});
    if (exif.isEmpty())
        return plain;
    const auto length = qToBigEndian(quint16(exif.size() + 2));
    return QByteArray("\xff\xd8\xff\xe1") + QByteArray(reinterpret_cast<const char *>(&length), 2) + exif +
           plain.mid(2);
}

quint32 pngChecksum(const QByteArray &bytes)
{
    quint32 sum = 0xffffffff;
    for (const char byte : bytes) {
        sum ^= uchar(byte);
        for (int bit = 0; bit < 8; ++bit)
            sum = sum >> 1 ^ (sum & 1 ? 0xedb88320 : 0);
    }
    return ~sum;
}

namespace {

QByteArray bigEndian(quint32 value)
{
    value = qToBigEndian(value);
    return QByteArray(reinterpret_cast<const char *>(&value), 4);
}

/// What libvips leaves out when it writes PNG.
QByteArray withPngExif(const QByteArray &file, const QByteArray &exif)
{
    constexpr qsizetype signatureAndHeader = 8 + 25;
    const QByteArray chunk = "eXIf" + exif.mid(6);
    return file.left(signatureAndHeader) + bigEndian(quint32(chunk.size() - 4)) + chunk +
           bigEndian(pngChecksum(chunk)) + file.mid(signatureAndHeader);
}

}

QByteArray encoded(const QImage &pixels, const Encoding &encoding)
{
    Decoder::initialize();
    vips_operation_block_set("VipsForeignSaveJxl", FALSE);
    const bool withAlpha = pixels.hasAlphaChannel();
    const QImage source = pixels.convertToFormat(QImage::Format_RGBA8888);
    VipsImage *image = vips_image_new_from_memory(source.constBits(), size_t(source.sizeInBytes()), source.width(),
                                                  source.height(), 4, VIPS_FORMAT_UCHAR);
    const auto replace = [&](VipsImage *next) {
        g_object_unref(image);
        image = next;
    };
    VipsImage *out = nullptr;
    if (vips_extract_band(image, &out, 0, "n", withAlpha ? 4 : 3, nullptr) == 0)
        replace(out);
    if (vips_copy(image, &out, "interpretation", VIPS_INTERPRETATION_sRGB, nullptr) == 0)
        replace(out);
    if (encoding.profile && vips_icc_transform(image, &out, encoding.profile, "input_profile", "srgb", nullptr) == 0)
        replace(out);
    if (encoding.orientation)
        vips_image_set_int(image, VIPS_META_ORIENTATION, encoding.orientation);
    void *data = nullptr;
    size_t length = 0;
    QByteArray bytes;
    if (vips_image_write_to_buffer(image, encoding.suffix, &data, &length, nullptr) == 0)
        bytes = QByteArray(static_cast<const char *>(data), qsizetype(length));
    else
        qWarning("%s: %s", encoding.suffix, vips_error_buffer());
    vips_error_clear();
    g_free(data);
    g_object_unref(image);
    vips_thread_shutdown();
    if (encoding.orientation && QByteArrayView(encoding.suffix).startsWith(".png"))
        return withPngExif(bytes, exifBlock(encoding.orientation));
    return bytes;
}

QByteArray rawFile(const QByteArray &previewJpeg, QSize previewSize, int orientation)
{
    constexpr quint32 sensorWidth = 256;
    constexpr quint32 sensorHeight = 192;
    constexpr quint32 directorySize = 2 + 14 * 12 + 4; // room for either
    constexpr quint32 sensorDirectory = kHeaderSize + directorySize;
    constexpr quint32 words = sensorDirectory + directorySize;
    constexpr quint32 sensorStart = words + 64;
    constexpr quint32 previewStart = sensorStart + sensorWidth * sensorHeight * 2;

    Directory first;
    first.add(0x00fe, kLong, 1, 1);
    first.add(0x0100, kLong, 1, quint32(previewSize.width()));
    first.add(0x0101, kLong, 1, quint32(previewSize.height()));
    first.add(0x0102, kShort, 1, 8);
    first.add(0x0103, kShort, 1, 7);
    first.add(0x0106, kShort, 1, 6);
    first.add(0x010f, 2, 8, words);
    first.add(0x0110, 2, 8, words);
    first.add(0x0111, kLong, 1, previewStart);
    first.add(0x0112, kShort, 1, quint32(orientation));
    first.add(0x0115, kShort, 1, 3);
    first.add(0x0117, kLong, 1, quint32(previewJpeg.size()));
    first.add(0x014a, kLong, 1, sensorDirectory);
    first.add(0xc612, 1, 4, 0x00000401);

    Directory sensor;
    sensor.add(0x00fe, kLong, 1, 0);
    sensor.add(0x0100, kLong, 1, sensorWidth);
    sensor.add(0x0101, kLong, 1, sensorHeight);
    sensor.add(0x0102, kShort, 1, 16);
    sensor.add(0x0103, kShort, 1, 1);
    sensor.add(0x0106, kShort, 1, 32803);
    sensor.add(0x0111, kLong, 1, sensorStart);
    sensor.add(0x0115, kShort, 1, 1);
    sensor.add(0x0116, kLong, 1, sensorHeight);
    sensor.add(0x0117, kLong, 1, sensorWidth * sensorHeight * 2);
    sensor.add(0x828d, kShort, 2, 0x00020002);
    sensor.add(0x828e, 1, 4, 0x02010100);

    QByteArray file = tiffHeader() + first.bytes();
    file = file.leftJustified(sensorDirectory, '\0') + sensor.bytes();
    file = file.leftJustified(words, '\0') + QByteArray("Testing\0", 8);
    return file.leftJustified(sensorStart, '\0') + QByteArray(sensorWidth * sensorHeight * 2, '\x10') + previewJpeg;
}

QString Folder::add(const QString &name, const QByteArray &bytes) const
{
    QFile file(path(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("a test file cannot be written");
    return path(name);
}

std::optional<ImageHeader> header(const QString &path)
{
    const auto file = openRegularFile(path);
    return file ? Decoder::readHeader(file->descriptor.number(), path) : std::nullopt;
}

std::optional<DecodedImage> decode(const QString &path, const DecodeRequest &request)
{
    const auto file = openRegularFile(path);
    return file ? Decoder::decode(file->descriptor.number(), path, request) : std::nullopt;
}

}
