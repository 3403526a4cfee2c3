#include "BmpDecoder.h"

#include "MemoryShare.h"
#include "PictureLimits.h"
#include "PixelPlan.h"
#include "RowReducer.h"

#include <QIODevice>
#include <QImageReader>

#include <cstdlib>

namespace {

class SourceDevice final : public QIODevice
{
public:
    explicit SourceDevice(const ByteSource &source)
        : m_source(source)
    {
        open(ReadOnly | Unbuffered);
    }
    qint64 size() const override { return m_source.size(); }

protected:
    qint64 readData(char *to, qint64 count) override { return m_source.read(pos(), to, count); }
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    const ByteSource &m_source;
};

/// Qt's reader makes the whole picture.
qint64 bytesOf(QSize size)
{
    return qint64(size.width()) * size.height() * qint64(sizeof(QRgb));
}

std::optional<ImageHeader> headerOf(QImageReader &reader, QString *reason)
{
    const QSize size = reader.size();
    if (!size.isValid()) {
        tell(reason, reader.errorString());
        return std::nullopt;
    }
    if (!isAcceptableSize(size, reason) || !isAcceptableWhole(bytesOf(size), reason))
        return std::nullopt;
    const bool hasAlpha = reader.imageFormat() == QImage::Format_ARGB32;
    return ImageHeader{ImageFormat::Bmp, size, hasAlpha};
}

/// Qt's reader takes a file that ends early for a whole one. Only pictures without compression tell their length.
bool isCutShort(const ByteSource &source)
{
    struct Fields
    {
        quint32 pixelsOffset;
        quint32 headerSize;
        qint32 width;
        qint32 height;
        quint16 planes;
        quint16 bitsPerPixel;
        quint32 compression;
    } fields = {};
    if (source.read(10, &fields, sizeof(fields)) != sizeof(fields) || fields.headerSize < 40)
        return false;
    constexpr quint32 none = 0;
    constexpr quint32 bitFields = 3;
    const qint64 rowBytes = (std::abs(qint64(fields.width)) * fields.bitsPerPixel + 31) / 32 * 4;
    return (fields.compression == none || fields.compression == bitFields) &&
           source.size() < fields.pixelsOffset + rowBytes * std::abs(qint64(fields.height));
}

}

std::optional<ImageHeader> BmpDecoder::readHeader(const ByteSource &source, QString *reason)
{
    SourceDevice device(source);
    QImageReader reader(&device, "bmp");
    return headerOf(reader, reason);
}

std::optional<DecodedImage> BmpDecoder::decode(const ByteSource &source, const DecodeRequest &request, QString *reason)
{
    SourceDevice device(source);
    QImageReader reader(&device, "bmp");
    const auto header = headerOf(reader, reason);
    if (!header)
        return std::nullopt;
    const MemoryShare memory(bytesOf(header->size), source.cancelled());
    if (!memory.isGranted())
        return std::nullopt;
    QImage image;
    const bool complete = reader.read(&image);
    if (image.isNull() || source.isCancelled()) {
        tell(reason, reader.errorString());
        return std::nullopt;
    }
    image.convertTo(image.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
    const PixelPlan plan = planPixels(request, image.size(), Orientation());
    DecodedImage result;
    result.fullSize = image.size();
    result.damaged = !complete || isCutShort(source);
    result.pixels = reducedImage(image, plan.storedPart, plan.storedTarget);
    return result.pixels.isNull() ? std::nullopt : std::optional(result);
}
