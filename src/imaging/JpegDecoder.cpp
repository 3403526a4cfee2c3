#include "JpegDecoder.h"

#include "ColorProfile.h"
#include "ExifFacts.h"
#include "JpegMarkers.h"
#include "JpegReader.h"
#include "MemoryShare.h"
#include "PictureLimits.h"
#include "PixelPlan.h"
#include "RowReducer.h"
#include "VipsDecoder.h"

#include <algorithm>
#include <cmath>

namespace {

/// A single file that comes in several scans may take half of what all decoders may.
constexpr qint64 kCoefficientWeight = 2;

struct JpegFacts
{
    JpegMarkers markers;
    Orientation orientation;
    QSize shownSize;
};

/// A progressive picture is kept in memory while it is decoded: it must hold a bit at least for each of its blocks.
bool isCredible(const JpegMarkers &markers, qint64 fileBytes)
{
    constexpr qint64 pixelsPerBlock = 64;
    const qint64 pixels = qint64(markers.size.width()) * markers.size.height();
    return !markers.isProgressive || fileBytes >= pixels / pixelsPerBlock / 8;
}

std::optional<JpegFacts> readFacts(const ByteSource &source, std::optional<Orientation> orientation, QString *reason)
{
    auto markers = readJpegMarkers(source);
    if (!markers) {
        tell(reason, QStringLiteral("The JPEG header cannot be read"));
        return std::nullopt;
    }
    if (!isAcceptableSize(markers->size, reason))
        return std::nullopt;
    if (!isCredible(*markers, source.size())) {
        tell(reason, QStringLiteral("The file is too short for the size that it tells"));
        return std::nullopt;
    }
    if (!isAcceptableWhole(kCoefficientWeight * markers->coefficientBytes, reason))
        return std::nullopt;
    const Orientation turn = orientation ? *orientation : readExif(markers->exif).orientation;
    const QSize shown = turn.turned(markers->size);
    return JpegFacts{*std::move(markers), turn, shown};
}

/// The smallest scale, in eighths, that leaves enough pixels for a good reduction. The three sizes between are slow.
int eighthsFor(QSize part, QSize target)
{
    constexpr double margin = 1.2;
    for (const int eighths : {1, 2, 4}) {
        const double scale = eighths / 8.0;
        if (part.width() * scale >= target.width() * margin && part.height() * scale >= target.height() * margin)
            return eighths;
    }
    return 8;
}

bool needsColorManagement(const JpegMarkers &markers)
{
    return markers.components == 4 || (markers.components == 1 && !markers.profile.isEmpty());
}

}

std::optional<ImageHeader> JpegDecoder::readHeader(const ByteSource &source, std::optional<Orientation> orientation,
                                                   QString *reason)
{
    const auto facts = readFacts(source, orientation, reason);
    return facts ? std::optional(ImageHeader{ImageFormat::Jpeg, facts->shownSize, false}) : std::nullopt;
}

std::optional<DecodedImage> JpegDecoder::decode(const ByteSource &source, const DecodeRequest &request,
                                                std::optional<Orientation> orientation, QString *reason)
{
    const auto facts = readFacts(source, orientation, reason);
    if (!facts)
        return std::nullopt;
    const MemoryShare memory(facts->markers.coefficientBytes, source.cancelled());
    if (!memory.isGranted()) {
        tell(reason, QStringLiteral("Cancelled"));
        return std::nullopt;
    }
    if (needsColorManagement(facts->markers))
        return VipsDecoder::decode(source, ImageFormat::Jpeg, request, facts->orientation, reason);

    const PixelPlan plan = planPixels(request, facts->shownSize, facts->orientation);
    JpegReader reader(source);
    UprightCanvas canvas(plan.storedTarget, facts->orientation, /*hasAlpha=*/false);
    if (canvas.isNull() || !reader.start(eighthsFor(plan.storedPart.size(), plan.storedTarget), facts->markers)) {
        tell(reason, canvas.isNull() ? QStringLiteral("Out of memory") : reader.failure());
        return std::nullopt;
    }
    const double scaleX = double(reader.size().width()) / facts->markers.size.width();
    const double scaleY = double(reader.size().height()) / facts->markers.size.height();
    const QRectF part(plan.storedPart.x() * scaleX, plan.storedPart.y() * scaleY, plan.storedPart.width() * scaleX,
                      plan.storedPart.height() * scaleY);
    RowReducer reducer(reader.size(), part, plan.storedTarget, canvas);
    while (!reducer.isFinished()) {
        const QRgb *row = reader.nextRow();
        if (!row)
            break;
        reducer.addRow(row);
    }
    if (source.isCancelled() || canvas.rowsTaken() == 0) {
        tell(reason, source.isCancelled() ? QStringLiteral("Cancelled") : reader.failure());
        return std::nullopt;
    }
    DecodedImage result;
    result.damaged = reader.isDamaged() || !canvas.isFull();
    result.fullSize = facts->shownSize;
    result.pixels = canvas.takeImage();
    convertToSrgb(result.pixels, facts->markers.profile);
    return result;
}

namespace {

/// What cameras embed is far smaller; anything larger would keep the tiles waiting that it is to fill.
constexpr int kMaxEmbeddedSide = 1024;

/// Camera makers pad their small pictures with black bars to one fixed shape; such a picture would jump when the
/// real one replaces it.
bool isSameShape(QSize a, QSize b)
{
    constexpr double tolerance = 0.03;
    const double ratio = double(a.width()) * b.height() / (double(a.height()) * b.width());
    return std::abs(ratio - 1) <= tolerance;
}

}

std::optional<QImage> JpegDecoder::embeddedThumbnail(const ByteSource &source)
{
    const auto markers = readJpegMarkers(source);
    if (!markers)
        return std::nullopt;
    const ExifFacts exif = readExif(markers->exif);
    if (exif.thumbnail.isEmpty())
        return std::nullopt;
    const ByteSource small(exif.thumbnail);
    const auto header = readHeader(small, Orientation(), nullptr);
    if (!header || header->size.width() > kMaxEmbeddedSide || header->size.height() > kMaxEmbeddedSide ||
        !isSameShape(header->size, markers->size))
        return std::nullopt;
    auto decoded = decode(small, {}, exif.orientation, nullptr);
    return decoded && !decoded->damaged ? std::optional(decoded->pixels) : std::nullopt;
}
