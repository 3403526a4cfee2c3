#include "WholePictures.h"

#include "MemoryShare.h"
#include "PictureLimits.h"
#include "VipsSupport.h"

#include <algorithm>

namespace {

/// 0 for kinds that are read piece by piece.
qint64 mostFileBytes(ImageFormat format)
{
    constexpr qint64 megabyte = 1 << 20;
    switch (format) {
    case ImageFormat::Gif:
        return 64 * megabyte;
    case ImageFormat::WebP:
    case ImageFormat::Heif:
        return 256 * megabyte;
    default:
        return 0;
    }
}

qint64 pixelsOf(VipsImage *picture)
{
    return qint64(vips_image_get_width(picture)) * vips_image_get_height(picture);
}

/// Measured with pictures of 24 megapixels, rounded up. The decoders of HEIF and JPEG XL keep planes of their own.
int bytesPerPixel(ImageFormat format, VipsImage *picture)
{
    const bool isDeep = vips_image_get_format(picture) != VIPS_FORMAT_UCHAR;
    switch (format) {
    case ImageFormat::Png:
        return vips_image_get_typeof(picture, "interlaced") ? vips_image_get_bands(picture) * (isDeep ? 2 : 1) : 0;
    case ImageFormat::Gif:
        return 5;
    case ImageFormat::WebP:
        return 4;
    case ImageFormat::Heif:
        return isDeep ? 18 : 9;
    case ImageFormat::JpegXl:
        return isDeep ? 20 : 16;
    default:
        return 0;
    }
}

}

bool WholePictures::isAcceptableFile(ImageFormat format, qint64 fileBytes, QString *reason)
{
    const qint64 most = mostFileBytes(format);
    if (most == 0 || fileBytes <= most)
        return true;
    tell(reason, QStringLiteral("The file is too large for its kind"));
    return false;
}

bool WholePictures::isAcceptablePicture(ImageFormat format, qint64 fileBytes, VipsImage *picture, QString *reason)
{
    constexpr qint64 mostGifPixels = 64'000'000; // a few bytes of such a file suffice to ask for them
    if (format == ImageFormat::Gif && pixelsOf(picture) > mostGifPixels) {
        tell(reason, QStringLiteral("The picture is too large for a GIF file"));
        return false;
    }
    return isAcceptableWhole(bytesForPixels(format, fileBytes, picture), reason);
}

qint64 WholePictures::bytesForHeader(ImageFormat format, qint64 fileBytes)
{
    return mostFileBytes(format) > 0 ? fileBytes : 0;
}

qint64 WholePictures::bytesForPixels(ImageFormat format, qint64 fileBytes, VipsImage *picture)
{
    if (format == ImageFormat::Tiff) // in the worst case it stands in one compressed strip
        return std::min(fileBytes, MemoryShare::mostBytes());
    return bytesForHeader(format, fileBytes) + pixelsOf(picture) * bytesPerPixel(format, picture);
}
