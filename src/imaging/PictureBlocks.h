#pragma once

#include "ByteSource.h"
#include "ImageFormat.h"

#include <QByteArray>

/// The blocks in which an image file tells of its picture, as they stand in it and not yet understood; empty where it
/// has none. Blocks of unreasonable size count as none.
struct PictureBlocks
{
    QByteArray exif; ///< beginning with its TIFF header; of TIFF and raw files only what is of use to people
    QByteArray xmp;
    QByteArray iptc;      ///< bare records ...
    QByteArray resources; ///< ... or an image editor's resources with the records among them

    static constexpr qint64 kMostBytes = 8 << 20;

    /// Of the formats whose blocks stand in a row, with a length before each: PNG, WebP, JPEG XL.
    [[nodiscard]] static PictureBlocks fromChunks(const ByteSource &source, ImageFormat format);
    [[nodiscard]] static PictureBlocks fromHeif(const ByteSource &source);
    [[nodiscard]] static PictureBlocks fromJpeg(const ByteSource &source);
    /// Also of those raw files that are TIFF files.
    [[nodiscard]] static PictureBlocks fromTiff(const ByteSource &source);

    /// The block without the signature that stands before it in some formats.
    [[nodiscard]] static QByteArray withoutSignature(const QByteArray &exif);
    /// The same where a number before it tells how much there is to pass over.
    [[nodiscard]] static QByteArray withoutHead(const QByteArray &exif);
};
