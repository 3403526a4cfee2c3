#include "RawDecoder.h"

#include "JpegDecoder.h"
#include "JpegMarkers.h"
#include "PictureLimits.h"
#include "PixelPlan.h"
#include "RawStream.h"
#include "RowReducer.h"
#include "TiffNotes.h"

#include <QDateTime>

#include <libraw/libraw.h>

#include <array>
#include <memory>

namespace {

/// LibRaw, opened up as far as to tell where in the file the preview lies, so that a header read needs not load it.
class PreviewFinder final : public LibRaw
{
public:
    qint64 previewOffset() const { return libraw_internal_data.internal_data.toffset; }
};

struct Preview
{
    std::optional<ByteSource> jpeg; ///< either a stretch of the file ...
    QImage bitmap;                  ///< ... or pixels
    Orientation orientation;
    PictureNotes notes; ///< as LibRaw tells them
};

/// LibRaw counts turns by bits of its own.
Orientation orientationOfFlip(int flip)
{
    constexpr std::array<int, 8> exifValues = {1, 2, 4, 3, 5, 8, 6, 7};
    return Orientation(flip >= 0 && flip < 8 ? exifValues[size_t(flip)] : 1);
}

QImage bitmapOf(const libraw_thumbnail_t &thumbnail)
{
    const QSize size(thumbnail.twidth, thumbnail.theight);
    const qint64 rowBytes = qint64(size.width()) * 3;
    if (thumbnail.tformat != LIBRAW_THUMBNAIL_BITMAP || !thumbnail.thumb || !isAcceptableSize(size, nullptr) ||
        rowBytes * size.height() > qint64(thumbnail.tlength))
        return {};
    return QImage(reinterpret_cast<const uchar *>(thumbnail.thumb), size.width(), size.height(), rowBytes,
                  QImage::Format_RGB888)
        .convertToFormat(QImage::Format_RGB32);
}

PictureNotes notesOf(const libraw_imgother_t &facts)
{
    const QByteArray artist(facts.artist, qsizetype(qstrnlen(facts.artist, sizeof(facts.artist))));
    if (facts.timestamp <= 0)
        return PictureNotes::fromTexts({}, artist, {});
    // LibRaw took the camera's time for one of this place.
    const QDateTime taken = QDateTime::fromSecsSinceEpoch(facts.timestamp);
    return PictureNotes::fromTexts(taken.toString(QStringLiteral("yyyy:MM:dd HH:mm:ss")).toLatin1(), artist, {});
}

std::optional<Preview> findPreviewWith(PreviewFinder &finder, RawStream &stream, const ByteSource &source)
{
    if (finder.open_datastream(&stream) != LIBRAW_SUCCESS)
        return std::nullopt;
    Preview preview;
    preview.orientation = orientationOfFlip(finder.imgdata.sizes.flip);
    preview.notes = notesOf(finder.imgdata.other);
    const ByteSource stretch = source.part(finder.previewOffset(), qint64(finder.imgdata.thumbnail.tlength));
    if (stretch.bytes(0, 2) == QByteArrayView("\xff\xd8"))
        preview.jpeg = stretch;
    else if (finder.thumbOK() && finder.unpack_thumb() == LIBRAW_SUCCESS)
        preview.bitmap = bitmapOf(finder.imgdata.thumbnail);
    return preview.jpeg || !preview.bitmap.isNull() ? std::optional(preview) : std::nullopt;
}

std::optional<Preview> findPreview(const ByteSource &source, QString *reason)
{
    std::optional<Preview> preview;
    RawStream stream(source);
    try {
        const auto finder = std::make_unique<PreviewFinder>(); // far too large for a thread's stack
        preview = findPreviewWith(*finder, stream, source);
    } catch (...) {
        // What LibRaw throws has no common type, and all of it means that the file is broken.
    }
    if (!preview)
        tell(reason, QStringLiteral("The raw file holds no preview that can be read"));
    return preview;
}

}

std::optional<ImageHeader> RawDecoder::readHeader(const ByteSource &source, QString *reason)
{
    const auto preview = findPreview(source, reason);
    if (!preview)
        return std::nullopt;
    if (!preview->jpeg)
        return ImageHeader{ImageFormat::Raw, preview->orientation.turned(preview->bitmap.size()), false};
    auto header = JpegDecoder::readHeader(*preview->jpeg, preview->orientation, reason);
    if (header)
        header->format = ImageFormat::Raw;
    return header;
}

std::optional<DecodedImage> RawDecoder::decode(const ByteSource &source, const DecodeRequest &request, QString *reason)
{
    const auto preview = findPreview(source, reason);
    if (!preview)
        return std::nullopt;
    if (preview->jpeg)
        return JpegDecoder::decode(*preview->jpeg, request, preview->orientation, reason);

    DecodedImage result;
    result.fullSize = preview->orientation.turned(preview->bitmap.size());
    const PixelPlan plan = planPixels(request, result.fullSize, preview->orientation);
    const QImage reduced = reducedImage(preview->bitmap, plan.storedPart, plan.storedTarget);
    UprightCanvas canvas(plan.storedTarget, preview->orientation, /*hasAlpha=*/false);
    if (reduced.isNull() || canvas.isNull())
        return std::nullopt;
    RowReducer copier(reduced.size(), reduced.rect(), reduced.size(), canvas);
    for (int y = 0; y < reduced.height(); ++y)
        copier.addRow(reinterpret_cast<const QRgb *>(reduced.constScanLine(y)));
    result.pixels = canvas.takeImage();
    return result;
}

namespace {

/// What is missing in the one is taken from the other.
PictureNotes merged(PictureNotes notes, const PictureNotes &other)
{
    if (notes.taken.isEmpty())
        notes.taken = other.taken;
    if (notes.artist.isEmpty())
        notes.artist = other.artist;
    if (notes.copyright.isEmpty())
        notes.copyright = other.copyright;
    return notes;
}

}

PictureNotes RawDecoder::readNotes(const ByteSource &source)
{
    PictureNotes notes = readTiffNotes(source);
    const auto preview = notes.taken.isEmpty() ? findPreview(source, nullptr) : std::nullopt;
    if (!preview)
        return notes;
    const auto markers = preview->jpeg ? readJpegMarkers(*preview->jpeg) : std::nullopt;
    if (markers)
        notes = merged(notes, PictureNotes::fromExif(markers->exif));
    return merged(notes, preview->notes);
}

PictureBlocks RawDecoder::readBlocks(const ByteSource &source)
{
    PictureBlocks blocks = PictureBlocks::fromTiff(source);
    const auto preview = blocks.exif.isEmpty() ? findPreview(source, nullptr) : std::nullopt;
    if (preview && preview->jpeg)
        blocks = PictureBlocks::fromJpeg(*preview->jpeg);
    return blocks;
}
