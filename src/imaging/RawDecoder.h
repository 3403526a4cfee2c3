#pragma once

#include "ByteSource.h"
#include "Decoder.h"

/// Camera raw files: the preview that the camera put into them.
namespace RawDecoder {

[[nodiscard]] std::optional<ImageHeader> readHeader(const ByteSource &source, QString *reason);
[[nodiscard]] std::optional<DecodedImage> decode(const ByteSource &source, const DecodeRequest &request,
                                                 QString *reason);
/// From the file's directories, else from the preview's own notes, else what LibRaw makes of the file.
[[nodiscard]] PictureNotes readNotes(const ByteSource &source);
/// From the file's directories, else from the preview.
[[nodiscard]] PictureBlocks readBlocks(const ByteSource &source);

}
