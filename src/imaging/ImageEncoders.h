#pragma once

#include "PictureNotes.h"

#include <QByteArray>
#include <QImage>

/// Pixels to the bytes of a file. All give nothing when they fail, and write no notes but those given. `profile` is an
/// ICC profile; none is written when it is empty.
namespace ImageEncoders {

enum class Chroma { Halved, Full };
enum class TiffCompression { None, Lzw };

/// `quality` 0 to 100. Clear parts become white.
[[nodiscard]] QByteArray jpeg(const QImage &pixels, int quality, Chroma chroma, const QByteArray &profile,
                              const PictureNotes &notes = {});
[[nodiscard]] QByteArray png(const QImage &pixels, const QByteArray &profile, const PictureNotes &notes = {});
[[nodiscard]] QByteArray tiff(const QImage &pixels, TiffCompression compression, const QByteArray &profile,
                              const PictureNotes &notes = {});
/// One page whose size in points is that of the picture in pixels.
[[nodiscard]] QByteArray pdf(const QImage &pixels, const PictureNotes &notes = {});

}
