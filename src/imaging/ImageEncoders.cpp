#include "ImageEncoders.h"

#include "TiffNotes.h"
#include "VipsPixels.h"
#include "VipsSupport.h"

#include <QBuffer>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QtEndian>

#include <zlib.h>

namespace {

/// Runs a saver of libvips on pixels. What it puts into the buffer is copied into the result.
template<typename Save>
QByteArray encode(const QImage &pixels, const QByteArray &profile, const PictureNotes &notes, Save save)
{
    ensureVips();
    const bool hasAlpha = pixels.hasAlphaChannel();
    const QImage source = pixels.convertToFormat(hasAlpha ? QImage::Format_RGBA8888 : QImage::Format_RGB32);
    QByteArray bytes;
    {
        VipsPipeline pipeline = hasAlpha ? alphaBandsOf(source) : bandsOf(source);
        void *data = nullptr;
        size_t length = 0;
        if (!pipeline.isNull() && !profile.isEmpty())
            vips_image_set_blob_copy(pipeline.image(), VIPS_META_ICC_NAME, profile.constData(), size_t(profile.size()));
        const QByteArray xmp = notes.xmp();
        if (!pipeline.isNull() && !xmp.isEmpty())
            vips_image_set_blob_copy(pipeline.image(), VIPS_META_XMP_NAME, xmp.constData(), size_t(xmp.size()));
        if (!pipeline.isNull() && save(pipeline.image(), &data, &length) == 0)
            bytes = QByteArray(static_cast<const char *>(data), qsizetype(length));
        g_free(data);
    }
    vips_error_clear();
    vips_thread_shutdown();
    return bytes;
}

}

namespace {

QByteArray pngChunk(const QByteArray &type, const QByteArray &content)
{
    const auto number = [](quint32 value) {
        value = qToBigEndian(value);
        return QByteArray(reinterpret_cast<const char *>(&value), sizeof(value));
    };
    const QByteArray checked = type + content;
    const auto *bytes = reinterpret_cast<const Bytef *>(checked.constData());
    return number(quint32(content.size())) + checked + number(quint32(crc32(0, bytes, uInt(checked.size()))));
}

/// The file with the notes where its standard wants them: libvips packs them into chunks that few programs look into.
QByteArray withPngNotes(QByteArray png, const PictureNotes &notes)
{
    constexpr qsizetype behindHeader = 8 + 4 + 4 + 13 + 4;
    constexpr qsizetype signature = 6;
    if (notes.isEmpty() || png.size() < behindHeader)
        return png;
    const QByteArray xmp = QByteArray("XML:com.adobe.xmp\0\0\0\0\0", 22) + notes.xmp();
    return png.insert(behindHeader, pngChunk("eXIf", notes.exif().mid(signature)) + pngChunk("iTXt", xmp));
}

}

QByteArray ImageEncoders::png(const QImage &pixels, const QByteArray &profile, const PictureNotes &notes)
{
    const QByteArray bytes = encode(pixels, profile, {}, [](VipsImage *image, void **data, size_t *length) {
        // On photos the usual level 6 takes three times as long and gives larger files.
        return vips_pngsave_buffer(image, data, length, "compression", 3, "filter", VIPS_FOREIGN_PNG_FILTER_ALL,
                                   nullptr);
    });
    return withPngNotes(bytes, notes);
}

QByteArray ImageEncoders::tiff(const QImage &pixels, TiffCompression compression, const QByteArray &profile,
                               const PictureNotes &notes)
{
    const VipsForeignTiffCompression kind =
        compression == TiffCompression::Lzw ? VIPS_FOREIGN_TIFF_COMPRESSION_LZW : VIPS_FOREIGN_TIFF_COMPRESSION_NONE;
    constexpr double pixelsPerMillimetre = 72 / 25.4;
    QByteArray bytes = encode(pixels, profile, notes, [&](VipsImage *image, void **data, size_t *length) {
        return vips_tiffsave_buffer(image, data, length, "compression", kind, "resunit", VIPS_FOREIGN_TIFF_RESUNIT_INCH,
                                    "xres", pixelsPerMillimetre, "yres", pixelsPerMillimetre, nullptr);
    });
    return withTiffNotes(std::move(bytes), notes);
}

QByteArray ImageEncoders::pdf(const QImage &pixels, const PictureNotes &notes)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    if (!buffer.open(QIODevice::WriteOnly))
        return {};
    {
        QPdfWriter writer(&buffer);
        writer.setResolution(72);
        writer.setPageSize(QPageSize(pixels.size(), QString(), QPageSize::ExactMatch));
        writer.setPageMargins(QMarginsF());
        if (!notes.isEmpty())
            writer.setDocumentXmpMetadata(notes.xmp());
        QPainter painter;
        if (!painter.begin(&writer))
            return {};
        painter.setRenderHints(QPainter::SmoothPixmapTransform | QPainter::LosslessImageRendering);
        painter.drawImage(QRect(QPoint(), pixels.size()), pixels);
        if (!painter.end())
            return {};
    }
    return bytes;
}
