#include "VipsDecoder.h"

#include "ColorProfile.h"
#include "MemoryShare.h"
#include "PictureLimits.h"
#include "PixelPlan.h"
#include "VipsPixels.h"
#include "VipsSupport.h"
#include "WholePictures.h"

#include <algorithm>
#include <cmath>

namespace {

/// What libvips reads from: it gets no descriptor, so that it neither maps the file (which kills the process when the
/// file shrinks meanwhile) nor reads on after a cancellation.
struct ByteStream
{
    ByteSource source;
    qint64 position = 0;
};

gint64 readBytes(VipsSourceCustom *, void *to, gint64 count, gpointer user)
{
    auto *stream = static_cast<ByteStream *>(user);
    if (stream->source.isCancelled())
        return -1;
    const qint64 got = stream->source.read(stream->position, to, count);
    stream->position += got;
    return got;
}

gint64 seekBytes(VipsSourceCustom *, gint64 offset, int whence, gpointer user)
{
    auto *stream = static_cast<ByteStream *>(user);
    const qint64 base = whence == SEEK_CUR ? stream->position : whence == SEEK_END ? stream->source.size() : 0;
    const qint64 target = base + offset;
    if (target < 0)
        return -1;
    stream->position = target;
    return target;
}

enum class Strictness { RefuseDamage, ShowWhatThereIs };

struct LoadOptions
{
    Strictness strictness = Strictness::RefuseDamage;
    int shrink = 1;         ///< JPEG: 1, 2, 4 or 8
    double scale = 1;       ///< WebP
    bool thumbnail = false; ///< HEIF: the small picture beside the large one
};

/// A file on which a loader of libvips works.
struct OpenPicture
{
    std::unique_ptr<ByteStream> stream;
    std::unique_ptr<VipsSourceCustom, GObjectDeleter> custom;
    Strictness strictness = Strictness::RefuseDamage;
    VipsPipeline pipeline; // last: it reads from those above
};

int load(ImageFormat format, VipsSource *source, const LoadOptions &options, VipsImage **out)
{
    const VipsFailOn failOn = options.strictness == Strictness::RefuseDamage ? VIPS_FAIL_ON_ERROR : VIPS_FAIL_ON_NONE;
    const auto run = [&](auto loader, auto... specific) {
        return loader(source, out, "access", VIPS_ACCESS_SEQUENTIAL, "fail_on", failOn, specific..., nullptr);
    };
    switch (format) {
    case ImageFormat::Jpeg:
        return run(vips_jpegload_source, "shrink", options.shrink);
    case ImageFormat::Png:
        return run(vips_pngload_source);
    case ImageFormat::Tiff:
        return run(vips_tiffload_source);
    case ImageFormat::WebP:
        return run(vips_webpload_source, "scale", options.scale);
    case ImageFormat::Heif:
        return run(vips_heifload_source, "thumbnail", gboolean(options.thumbnail));
    case ImageFormat::Gif:
        return run(vips_gifload_source);
    case ImageFormat::JpegXl:
        return run(vips_jxlload_source);
    default:
        return -1;
    }
}

std::optional<OpenPicture> openPicture(const ByteSource &source, ImageFormat format, const LoadOptions &options)
{
    OpenPicture picture;
    picture.stream = std::make_unique<ByteStream>(ByteStream{source});
    picture.custom.reset(vips_source_custom_new());
    g_signal_connect(picture.custom.get(), "read", G_CALLBACK(readBytes), picture.stream.get());
    g_signal_connect(picture.custom.get(), "seek", G_CALLBACK(seekBytes), picture.stream.get());
    picture.strictness = options.strictness;
    VipsImage *image = nullptr;
    if (load(format, VIPS_SOURCE(picture.custom.get()), options, &image) != 0)
        return std::nullopt;
    picture.pipeline = VipsPipeline(image);
    return picture;
}

/// HEIF and JPEG XL come upright out of their libraries, whatever their EXIF block says.
Orientation orientationOf(const VipsPipeline &pipeline, ImageFormat format)
{
    if (format == ImageFormat::Heif || format == ImageFormat::JpegXl)
        return {};
    return Orientation(vips_image_get_orientation(pipeline.image()));
}

QSize sizeOf(const VipsPipeline &pipeline)
{
    return {pipeline.width(), pipeline.height()};
}

/// Opens the picture for its header. A PNG file whose header fails its checksum is refused; other formats complain
/// there about what is missing at the end.
std::optional<OpenPicture> openForHeader(const ByteSource &source, ImageFormat format, QString *reason)
{
    auto picture = openPicture(source, format, {});
    if (!picture && format != ImageFormat::Png) {
        vips_error_clear();
        picture = openPicture(source, format, {Strictness::ShowWhatThereIs});
    }
    if (!picture) {
        const QString error = takeVipsError();
        tell(reason, error.isEmpty() ? QStringLiteral("The header cannot be read") : error);
    } else if (!isAcceptableSize(sizeOf(picture->pipeline), reason) ||
               !WholePictures::isAcceptablePicture(format, source.size(), picture->pipeline.image(), reason)) {
        picture.reset();
    }
    vips_error_clear();
    return picture;
}

/// How often the stored picture may be halved while loading and still have pixels enough for a good reduction.
LoadOptions shrinkingFor(const PixelPlan &plan)
{
    const double factor = std::min(double(plan.storedPart.width()) / plan.storedTarget.width(),
                                   double(plan.storedPart.height()) / plan.storedTarget.height());
    LoadOptions options;
    while (options.shrink < 8 && options.shrink * 4 <= factor)
        options.shrink *= 2;
    options.scale = 1.0 / options.shrink;
    return options;
}

bool isSubstitute(const VipsPipeline &small, const VipsPipeline &full, QSize target)
{
    const double shape = double(small.width()) * full.height() / (double(small.height()) * full.width());
    return small.width() >= target.width() && small.height() >= target.height() && std::abs(shape - 1) < 0.02;
}

/// Reopens the picture at a smaller size where its format offers that and the whole picture is wanted.
void shrinkOnLoad(OpenPicture &picture, const ByteSource &source, ImageFormat format, const PixelPlan &plan)
{
    LoadOptions options = shrinkingFor(plan);
    options.strictness = picture.strictness;
    const bool isWhole = plan.storedPart.size() == sizeOf(picture.pipeline);
    options.thumbnail = format == ImageFormat::Heif && options.shrink > 1;
    const bool shrinks = options.thumbnail || format == ImageFormat::Jpeg || format == ImageFormat::WebP;
    if (!isWhole || options.shrink == 1 || !shrinks)
        return;
    auto smaller = openPicture(source, format, options);
    if (smaller && isSubstitute(smaller->pipeline, picture.pipeline, plan.storedTarget))
        std::swap(picture, *smaller); // the old one ends as a whole, pipeline first
}

bool addCrop(VipsPipeline &pipeline, const QRect &part)
{
    return part.size() == sizeOf(pipeline) || pipeline.add([&](VipsImage *in, VipsImage **out) {
        return vips_extract_area(in, out, part.x(), part.y(), part.width(), part.height(), nullptr);
    });
}

bool addCast(VipsPipeline &pipeline, VipsBandFormat format)
{
    return pipeline.add([&](VipsImage *in, VipsImage **out) { return vips_cast(in, out, format, nullptr); });
}

/// Scales down; colours are weighted by their alpha meanwhile, or the colour of clear pixels would show at edges.
bool addResize(VipsPipeline &pipeline, QSize target)
{
    if (target == sizeOf(pipeline))
        return true;
    const bool hasAlpha = vips_image_hasalpha(pipeline.image());
    const VipsBandFormat format = vips_image_get_format(pipeline.image());
    if (hasAlpha && (!pipeline.add([](VipsImage *in, VipsImage **out) { return vips_premultiply(in, out, nullptr); }) ||
                     !addCast(pipeline, format)))
        return false;
    const bool resized = pipeline.add([&](VipsImage *in, VipsImage **out) {
        return vips_resize(in, out, double(target.width()) / vips_image_get_width(in), "vscale",
                           double(target.height()) / vips_image_get_height(in), nullptr);
    });
    if (!resized || !hasAlpha)
        return resized;
    return pipeline.add([](VipsImage *in, VipsImage **out) { return vips_unpremultiply(in, out, nullptr); }) &&
           addCast(pipeline, format);
}

/// The embedded profile when it fits the picture and is not sRGB anyway.
bool hasUsableProfile(VipsImage *image)
{
    const void *data = nullptr;
    size_t length = 0;
    if (!vips_image_get_typeof(image, VIPS_META_ICC_NAME) ||
        vips_image_get_blob(image, VIPS_META_ICC_NAME, &data, &length) != 0 ||
        !vips_icc_is_compatible_profile(image, data, length))
        return false;
    return !isSrgbProfile(QByteArray(static_cast<const char *>(data), qsizetype(length)));
}

bool addPlainConversion(VipsPipeline &pipeline)
{
    if (!vips_colourspace_issupported(pipeline.image())) {
        const VipsInterpretation guess = pipeline.bands() < 3 ? VIPS_INTERPRETATION_B_W : VIPS_INTERPRETATION_sRGB;
        const bool named = pipeline.add(
            [&](VipsImage *in, VipsImage **out) { return vips_copy(in, out, "interpretation", guess, nullptr); });
        if (!named)
            return false;
    }
    return pipeline.add(
        [](VipsImage *in, VipsImage **out) { return vips_colourspace(in, out, VIPS_INTERPRETATION_sRGB, nullptr); });
}

/// To 8-bit sRGB with three bands, or four with alpha.
bool addColors(VipsPipeline &pipeline)
{
    const bool hasAlpha = vips_image_hasalpha(pipeline.image());
    const bool converted = hasUsableProfile(pipeline.image()) && pipeline.add([](VipsImage *in, VipsImage **out) {
        return vips_icc_transform(in, out, "srgb", "embedded", TRUE, nullptr);
    });
    if (!converted && !addPlainConversion(pipeline))
        return false;
    if (vips_image_get_format(pipeline.image()) != VIPS_FORMAT_UCHAR && !addCast(pipeline, VIPS_FORMAT_UCHAR))
        return false;
    const int wanted = hasAlpha ? 4 : 3;
    return pipeline.bands() == wanted ||
           (pipeline.bands() > wanted && pipeline.add([&](VipsImage *in, VipsImage **out) {
               return vips_extract_band(in, out, 0, "n", wanted, nullptr);
           }));
}

struct Attempt
{
    QImage pixels;
    bool isComplete = false;
};

/// One pass over the file. Null pixels when not a single row could be made.
Attempt decodeOnce(OpenPicture picture, const ByteSource &source, ImageFormat format, const PixelPlan &plan,
                   Orientation orientation)
{
    shrinkOnLoad(picture, source, format, plan);
    QRect part = plan.storedPart;
    if (part.x() == 0 && part.y() == 0)
        part.setSize(part.size().boundedTo(sizeOf(picture.pipeline))); // it may have been shrunk
    if (!addCrop(picture.pipeline, part) || !addResize(picture.pipeline, plan.storedTarget) ||
        !addColors(picture.pipeline) || sizeOf(picture.pipeline) != plan.storedTarget)
        return {};
    UprightCanvas canvas(plan.storedTarget, orientation, picture.pipeline.bands() == 4);
    if (canvas.isNull())
        return {};
    fillCanvas(canvas, picture.pipeline.image(), source.cancelled());
    const bool isComplete = canvas.isFull();
    return canvas.rowsTaken() > 0 ? Attempt{canvas.takeImage(), isComplete} : Attempt{};
}

}

std::optional<ImageHeader> VipsDecoder::readHeader(const ByteSource &source, ImageFormat format, QString *reason)
{
    ensureVips();
    std::optional<ImageHeader> header;
    const MemoryShare memory(WholePictures::bytesForHeader(format, source.size()), source.cancelled());
    if (!memory.isGranted())
        return std::nullopt;
    if (const auto picture = openForHeader(source, format, reason)) {
        const Orientation orientation = orientationOf(picture->pipeline, format);
        header = ImageHeader{format, orientation.turned(sizeOf(picture->pipeline)),
                             bool(vips_image_hasalpha(picture->pipeline.image()))};
    }
    vips_thread_shutdown();
    return header;
}

namespace {

/// Opens the picture with a share of memory that lasts for its pixels. What it took for its header is given back
/// first, for nobody may hold one share and wait for another.
std::optional<OpenPicture> openForPixels(const ByteSource &source, ImageFormat format,
                                         std::optional<MemoryShare> &memory, QString *reason)
{
    const auto open = [&](qint64 bytes) {
        memory.emplace(bytes, source.cancelled());
        return memory->isGranted() ? openForHeader(source, format, reason) : std::nullopt;
    };
    const qint64 forHeader = WholePictures::bytesForHeader(format, source.size());
    auto picture = open(forHeader);
    if (!picture)
        return std::nullopt;
    const qint64 forPixels = WholePictures::bytesForPixels(format, source.size(), picture->pipeline.image());
    if (std::max(forHeader, forPixels) <= MemoryShare::kSmallBytes)
        return picture;
    picture.reset();
    return open(forPixels);
}

std::optional<DecodedImage> decodeBestEffort(const ByteSource &source, ImageFormat format, const DecodeRequest &request,
                                             std::optional<Orientation> forced, QString *reason)
{
    std::optional<MemoryShare> memory;
    auto picture = openForPixels(source, format, memory, reason);
    if (!picture)
        return std::nullopt;
    const Orientation orientation = forced ? *forced : orientationOf(picture->pipeline, format);
    DecodedImage result;
    result.fullSize = orientation.turned(sizeOf(picture->pipeline));
    const PixelPlan plan = planPixels(request, result.fullSize, orientation);
    result.damaged = picture->strictness == Strictness::ShowWhatThereIs;
    Attempt attempt = decodeOnce(*std::move(picture), source, format, plan, orientation);
    if (!attempt.isComplete && !result.damaged && !source.isCancelled()) {
        result.damaged = true;
        if (auto again = openPicture(source, format, {Strictness::ShowWhatThereIs})) {
            Attempt second = decodeOnce(*std::move(again), source, format, plan, orientation);
            if (!second.pixels.isNull())
                attempt = std::move(second);
        }
    }
    const QString error = takeVipsError();
    if (attempt.pixels.isNull() || source.isCancelled()) {
        tell(reason, error.isEmpty() ? QStringLiteral("The picture cannot be decoded") : error);
        return std::nullopt;
    }
    result.pixels = std::move(attempt.pixels);
    return result;
}

}

std::optional<DecodedImage> VipsDecoder::decode(const ByteSource &source, ImageFormat format,
                                                const DecodeRequest &request, std::optional<Orientation> orientation,
                                                QString *reason)
{
    ensureVips();
    auto result = decodeBestEffort(source, format, request, orientation, reason);
    vips_thread_shutdown();
    return result;
}

QByteArray VipsDecoder::readExif(const ByteSource &source, ImageFormat format)
{
    ensureVips();
    QByteArray exif;
    const MemoryShare memory(WholePictures::bytesForHeader(format, source.size()), source.cancelled());
    if (!memory.isGranted())
        return exif;
    if (const auto picture = openForHeader(source, format, nullptr)) {
        VipsImage *image = picture->pipeline.image();
        const void *data = nullptr;
        size_t length = 0;
        if (vips_image_get_typeof(image, VIPS_META_EXIF_NAME) &&
            vips_image_get_blob(image, VIPS_META_EXIF_NAME, &data, &length) == 0)
            exif = QByteArray(static_cast<const char *>(data), qsizetype(length));
    }
    vips_thread_shutdown();
    return exif;
}
