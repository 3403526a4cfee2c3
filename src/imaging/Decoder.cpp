#include "Decoder.h"

#include "BmpDecoder.h"
#include "ByteSource.h"
#include "JpegDecoder.h"
#include "JpegMarkers.h"
#include "PictureLimits.h"
#include "RawDecoder.h"
#include "TiffNotes.h"
#include "VipsDecoder.h"
#include "VipsSupport.h"
#include "WholePictures.h"

#include <sys/stat.h>

namespace {

struct Picture
{
    QByteArray bytes; ///< of a small file
    ByteSource source;
    ImageFormat format;
};

std::optional<Picture> open(int descriptor, const QString &fileName, QString *reason)
{
    struct stat status = {};
    if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        tell(reason, QStringLiteral("Not a regular file"));
        return std::nullopt;
    }
    if (status.st_size > Decoder::kMaxFileBytes) {
        tell(reason, QStringLiteral("The file is too large"));
        return std::nullopt;
    }
    constexpr qint64 smallFile = 64 * 1024; // a thumbnail: one read, where the decoders would make several
    constexpr qint64 enoughToTell = 32;
    const ByteSource file(descriptor, status.st_size);
    const QByteArray bytes = file.bytes(0, status.st_size <= smallFile ? smallFile : enoughToTell);
    const ByteSource source = status.st_size <= smallFile ? ByteSource(bytes) : file;
    const ImageFormat format = imageFormat(fileName, bytes);
    if (format == ImageFormat::Unknown) {
        tell(reason, QStringLiteral("Not a picture of a known kind"));
        return std::nullopt;
    }
    if (!WholePictures::isAcceptableFile(format, status.st_size, reason))
        return std::nullopt;
    return Picture{bytes, source, format};
}

}

void Decoder::initialize()
{
    ensureVips();
}

std::optional<ImageHeader> Decoder::readHeader(int descriptor, const QString &fileName, QString *reason)
{
    const auto picture = open(descriptor, fileName, reason);
    if (!picture)
        return std::nullopt;
    switch (picture->format) {
    case ImageFormat::Jpeg:
        return JpegDecoder::readHeader(picture->source, std::nullopt, reason);
    case ImageFormat::Bmp:
        return BmpDecoder::readHeader(picture->source, reason);
    case ImageFormat::Raw:
        return RawDecoder::readHeader(picture->source, reason);
    default:
        return VipsDecoder::readHeader(picture->source, picture->format, reason);
    }
}

std::optional<DecodedImage> Decoder::decode(int descriptor, const QString &fileName, const DecodeRequest &request,
                                            QString *reason)
{
    auto picture = open(descriptor, fileName, reason);
    if (!picture)
        return std::nullopt;
    picture->source.setCancelled(request.cancelled);
    switch (picture->format) {
    case ImageFormat::Jpeg:
        return JpegDecoder::decode(picture->source, request, std::nullopt, reason);
    case ImageFormat::Bmp:
        return BmpDecoder::decode(picture->source, request, reason);
    case ImageFormat::Raw:
        return RawDecoder::decode(picture->source, request, reason);
    default:
        return VipsDecoder::decode(picture->source, picture->format, request, std::nullopt, reason);
    }
}

std::optional<QImage> Decoder::embeddedThumbnail(int descriptor, const QString &fileName)
{
    const auto picture = open(descriptor, fileName, nullptr);
    if (!picture || picture->format != ImageFormat::Jpeg)
        return std::nullopt;
    return JpegDecoder::embeddedThumbnail(picture->source);
}

PictureNotes Decoder::readNotes(int descriptor, const QString &fileName)
{
    const auto picture = open(descriptor, fileName, nullptr);
    if (!picture)
        return {};
    switch (picture->format) {
    case ImageFormat::Jpeg: {
        const auto markers = readJpegMarkers(picture->source);
        return markers ? PictureNotes::fromExif(markers->exif) : PictureNotes();
    }
    case ImageFormat::Tiff:
        return readTiffNotes(picture->source);
    case ImageFormat::Raw:
        return RawDecoder::readNotes(picture->source);
    case ImageFormat::Bmp:
    case ImageFormat::Gif:
        return {};
    default:
        return PictureNotes::fromExif(VipsDecoder::readExif(picture->source, picture->format));
    }
}

PictureBlocks Decoder::readBlocks(int descriptor, const QString &fileName)
{
    const auto picture = open(descriptor, fileName, nullptr);
    if (!picture)
        return {};
    switch (picture->format) {
    case ImageFormat::Jpeg:
        return PictureBlocks::fromJpeg(picture->source);
    case ImageFormat::Tiff:
        return PictureBlocks::fromTiff(picture->source);
    case ImageFormat::Raw:
        return RawDecoder::readBlocks(picture->source);
    case ImageFormat::Png:
    case ImageFormat::WebP:
    case ImageFormat::JpegXl:
        return PictureBlocks::fromChunks(picture->source, picture->format);
    case ImageFormat::Heif:
        return PictureBlocks::fromHeif(picture->source);
    default:
        return {};
    }
}
