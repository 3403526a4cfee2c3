#pragma once

#include "ByteSource.h"
#include "Decoder.h"
#include "Orientation.h"

/// JPEG through libjpeg's scaled decoding, row by row into the picture as shown.
namespace JpegDecoder {

/// `orientation`, when given, overrides what the file says.
[[nodiscard]] std::optional<ImageHeader> readHeader(const ByteSource &source, std::optional<Orientation> orientation,
                                                    QString *reason);
[[nodiscard]] std::optional<DecodedImage> decode(const ByteSource &source, const DecodeRequest &request,
                                                 std::optional<Orientation> orientation, QString *reason);
/// See Decoder.
[[nodiscard]] std::optional<QImage> embeddedThumbnail(const ByteSource &source);

}
