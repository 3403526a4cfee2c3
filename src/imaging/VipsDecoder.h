#pragma once

#include "ByteSource.h"
#include "Decoder.h"
#include "Orientation.h"

/// Everything that libvips reads.
namespace VipsDecoder {

[[nodiscard]] std::optional<ImageHeader> readHeader(const ByteSource &source, ImageFormat format, QString *reason);
/// `orientation`, when given, overrides what the file says.
[[nodiscard]] std::optional<DecodedImage> decode(const ByteSource &source, ImageFormat format,
                                                 const DecodeRequest &request, std::optional<Orientation> orientation,
                                                 QString *reason);
/// The EXIF block as it stands in the file; empty when there is none.
[[nodiscard]] QByteArray readExif(const ByteSource &source, ImageFormat format);

}
