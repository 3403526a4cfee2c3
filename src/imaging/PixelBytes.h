#pragma once

#include "WorkingImage.h"

#include <array>

/// Between the 8-bit sRGB of pictures and the pixels of working images.
namespace PixelBytes {

/// The values of bytes.
using Levels = std::array<float, 256>;
[[nodiscard]] Levels levelsOf(WorkingImage::Light light);

[[nodiscard]] Pixel pixelOf(QRgb premultiplied, WorkingImage::Light light, const Levels &levels);

/// At most as many as a block holds; opaque.
void read(PixelBlock &to, const QRgb *from, int count, WorkingImage::Light light, const Levels &levels);
void load(PixelBlock &to, const Pixel *from, int count);
void write(QRgb *to, const PixelBlock &from, int count, WorkingImage::Light light);

/// Alpha is multiplied in. Tells whether every pixel is opaque.
[[nodiscard]] bool writeClear(QRgb *to, const Pixel *from, int count, WorkingImage::Light light);

}
