#include "SaveImage.h"

#include "ColorProfile.h"
#include "DirectoryReader.h"
#include "ImageEncoders.h"
#include "LogString.h"
#include "PictureLimits.h"
#include "StringUtilities.h"
#include "UniqueFileName.h"

#include <QFile>

#include <algorithm>
#include <cmath>

namespace {

SaveFileType automaticType(const QString &path, bool hasAlpha)
{
    const QString extension = QVString::pathExtension(path);
    if (extension.isEmpty())
        return hasAlpha ? SaveFileType::Png : SaveFileType::Jpeg;
    if (QVString::isFuzzyEqualToString(extension, QStringLiteral("png")))
        return SaveFileType::Png;
    const bool isJpeg = !hasAlpha || QVString::isFuzzyEqualToString(extension, QStringLiteral("jpg"));
    return isJpeg ? SaveFileType::Jpeg : SaveFileType::Tiff;
}

QString extensionOf(SaveFileType type)
{
    switch (type) {
    case SaveFileType::Jpeg:
        return QStringLiteral("jpg");
    case SaveFileType::Png:
        return QStringLiteral("png");
    case SaveFileType::Pdf:
        return QStringLiteral("pdf");
    default:
        return QStringLiteral("tiff");
    }
}

QString uniquePath(const QString &path, const QString &extension)
{
    const QString folder = QVString::deletingLastPathComponent(path);
    const QString name = UniqueFileName(folder, QVString::fileNameMinusExtension(path), extension);
    return QVString::appendingPathComponent(folder, name);
}

void completeRequest(SaveRequest &request)
{
    request.extension = extensionOf(request.type);
    if (request.path.isEmpty())
        return;
    if (!QVString::isFuzzyEqualToString(QVString::pathExtension(request.path), request.extension))
        request.path = QVString::stringByReplacingExtension(request.path, request.extension);
    if (request.unique)
        request.path = uniquePath(request.path, request.extension);
}

QByteArray encode(const QImage &pixels, const SaveRequest &request)
{
    const QByteArray profile = request.embedProfile ? srgbProfile() : QByteArray();
    switch (request.type) {
    case SaveFileType::Jpeg: {
        const auto quality = int(std::lround(std::clamp(request.compression, 0.0, 1.0) * 100));
        const auto chroma = request.fullChroma ? ImageEncoders::Chroma::Full : ImageEncoders::Chroma::Halved;
        return ImageEncoders::jpeg(pixels, quality, chroma, profile, request.notes);
    }
    case SaveFileType::Png:
        return ImageEncoders::png(pixels, profile, request.notes);
    case SaveFileType::Pdf:
        return ImageEncoders::pdf(pixels, request.notes);
    default: {
        using Compression = ImageEncoders::TiffCompression;
        return ImageEncoders::tiff(pixels, request.compression >= 1 ? Compression::Lzw : Compression::None, profile,
                                   request.notes);
    }
    }
}

bool isCancelled(const SaveRequest &request)
{
    return request.cancelled && request.cancelled->load();
}

/// Writes without ever replacing a file: when somebody takes the name meanwhile, the next free one is used.
bool writeUnique(SaveRequest &request, const QByteArray &bytes)
{
    const QString folder = QVString::deletingLastPathComponent(request.path);
    const QString partial =
        QVString::appendingPathComponent(folder, QLatin1Char('.') + QVString::guidString() + QStringLiteral(".part"));
    bool done = FileWriter::write(partial, bytes, request.flush, &request.reason);
    done = done && !isCancelled(request);
    if (done) {
        constexpr int attempts = 5;
        done = FileWriter::renameNoReplace(partial, request.path, &request.reason);
        for (int i = 0; i < attempts && !done && entryTypeAt(request.path); ++i) {
            request.path = uniquePath(request.path, request.extension);
            done = FileWriter::renameNoReplace(partial, request.path, &request.reason);
        }
    }
    if (!done)
        QFile::remove(partial);
    return done;
}

bool writeInPlace(SaveRequest &request, const QByteArray &bytes, bool &isStopped)
{
    const auto mayReplace = [&] {
        isStopped = isCancelled(request) || (request.mayReplace && !request.mayReplace()) || isCancelled(request);
        return !isStopped;
    };
    return FileWriter::replace(request.path, bytes, request.flush, &request.reason, mayReplace);
}

/// The image at exactly `size`, enlarged when it is smaller.
std::optional<QImage> pixelsAt(const Image &image, QSize size, const std::atomic<bool> *cancelled)
{
    auto pixels = image.pixels(size.boundedTo(image.size()), cancelled);
    if (pixels && pixels->size() != size)
        pixels = pixels->scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    return pixels && !pixels->isNull() ? pixels : std::nullopt;
}

}

bool SaveImageCore(int width, int height, const Image &image, SaveRequest &request)
{
    request.writeFailed = false;
    request.reason.clear();
    request.data.clear();
    if (image.isNull())
        return false;
    const QSize size(width == 0 ? image.size().width() : width, height == 0 ? image.size().height() : height);
    if (!isAcceptableSize(size, nullptr))
        return false;
    request.rect = size;
    const auto pixels = pixelsAt(image, size, request.cancelled);
    if (!pixels)
        return false;
    if (request.type == SaveFileType::Automatic)
        request.type = automaticType(request.path, pixels->hasAlphaChannel());
    completeRequest(request);
    const QByteArray bytes = encode(*pixels, request);
    if (bytes.isEmpty() || isCancelled(request))
        return false;
    if (request.path.isEmpty()) {
        request.data = bytes;
        return true;
    }
    bool isStopped = false;
    const bool done = request.unique ? writeUnique(request, bytes) : writeInPlace(request, bytes, isStopped);
    request.writeFailed = !done && !isStopped && !isCancelled(request);
    return done;
}

std::optional<QByteArray> TiffFromImage(const Image &image)
{
    const auto pixels = image.pixels();
    QByteArray bytes;
    if (pixels)
        bytes = ImageEncoders::tiff(*pixels, ImageEncoders::TiffCompression::None, srgbProfile());
    if (!bytes.isEmpty())
        return bytes;
    if (!image.isNull())
        LogString(QStringLiteral("TIFFRepresentation failed"));
    return std::nullopt;
}

int exportSideLimit(int sizeOption)
{
    switch (sizeOption) {
    case 1:
        return 2000;
    case 2:
        return 1000;
    case 3:
        return 600;
    case 4:
        return 300;
    default:
        return 1'000'000;
    }
}

QSize finalImageSize(QSize source, int sizeOption)
{
    const int limit = exportSideLimit(sizeOption);
    if (source.width() <= limit && source.height() <= limit)
        return source;
    const auto other = [&](int shorter, int longer) {
        const float side = std::floor(float(double(shorter) * limit / longer));
        return std::max(1, int(side));
    };
    if (source.width() <= source.height())
        return {other(source.width(), source.height()), limit};
    return {limit, other(source.height(), source.width())};
}

SaveFileType typeForFormat(int format)
{
    static constexpr SaveFileType types[] = {SaveFileType::Jpeg, SaveFileType::Pdf, SaveFileType::Png,
                                             SaveFileType::Tiff};
    return format >= 0 && format < int(std::size(types)) ? types[format] : SaveFileType::Automatic;
}

QString extensionForFormat(int format)
{
    const SaveFileType type = typeForFormat(format);
    return type == SaveFileType::Automatic ? QString() : extensionOf(type);
}

std::optional<int> formatForExtension(const QString &extension)
{
    const QString lower = extension.toLower();
    if (lower == QLatin1String("jpg") || lower == QLatin1String("jpeg"))
        return 0;
    if (lower == QLatin1String("pdf"))
        return 1;
    if (lower == QLatin1String("png"))
        return 2;
    if (lower == QLatin1String("tif") || lower == QLatin1String("tiff"))
        return 3;
    return std::nullopt;
}

QString pathForFormat(const QString &path, int format)
{
    const QString extension = extensionForFormat(format);
    const QString own = QVString::pathExtension(path);
    if (extension.isEmpty() || QVString::isFuzzyEqualToString(own, extension))
        return path;
    if (formatForExtension(own))
        return QVString::stringByReplacingExtension(path, extension);
    return path + QLatin1Char('.') + extension;
}
