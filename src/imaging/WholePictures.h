#pragma once

#include "ImageFormat.h"

#include <QString>

using VipsImage = struct _VipsImage;

/// What libvips and the libraries behind it hold in memory at once, whatever size is wanted. Everything else passes
/// through in a few rows.
namespace WholePictures {

/// False for a file that a library would read whole and that is far larger than any real one of its kind.
[[nodiscard]] bool isAcceptableFile(ImageFormat format, qint64 fileBytes, QString *reason);
/// False for a picture whose pixels would take more than all decoders may.
[[nodiscard]] bool isAcceptablePicture(ImageFormat format, qint64 fileBytes, VipsImage *picture, QString *reason);
/// For looking at the header.
[[nodiscard]] qint64 bytesForHeader(ImageFormat format, qint64 fileBytes);
/// For the pixels of an opened picture, its file included.
[[nodiscard]] qint64 bytesForPixels(ImageFormat format, qint64 fileBytes, VipsImage *picture);

}
