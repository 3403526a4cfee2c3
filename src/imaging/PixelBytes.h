#pragma once

#include "WorkingImage.h"

/// Between the 8-bit sRGB of pictures and the pixels of working images. Of pixels in blocks, at most as many as one
/// holds; alpha is not multiplied into their colours.
namespace PixelBytes {

/// Ignores alpha, which becomes 1.
void readOpaque(PixelBlock &to, const QRgb *from, int count, WorkingImage::Light light);
void readPremultiplied(PixelBlock &to, const QRgb *from, int count, WorkingImage::Light light);

/// Opaque, whatever alpha is.
void writeOpaque(QRgb *to, const PixelBlock &from, int count, WorkingImage::Light light);
/// Tells whether every pixel is opaque.
[[nodiscard]] bool writePremultiplied(QRgb *to, const PixelBlock &from, int count, WorkingImage::Light light);

}
