#pragma once

#include "ByteSource.h"
#include "Decoder.h"

/// Windows bitmaps, through Qt's reader for them.
namespace BmpDecoder {

[[nodiscard]] std::optional<ImageHeader> readHeader(const ByteSource &source, QString *reason);
[[nodiscard]] std::optional<DecodedImage> decode(const ByteSource &source, const DecodeRequest &request,
                                                 QString *reason);

}
