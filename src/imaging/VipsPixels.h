#pragma once

#include "UprightCanvas.h"
#include "VipsSupport.h"

#include <atomic>

/// The pixels, not copied, as red, green and blue bands; null on failure. `pixels` must be opaque and outlive the
/// pipeline.
[[nodiscard]] VipsPipeline bandsOf(const QImage &pixels);

/// The same with alpha as fourth band, for pixels of Format_RGBA8888.
[[nodiscard]] VipsPipeline alphaBandsOf(const QImage &pixels);

/// Computes a pipeline of 8-bit sRGB, with or without alpha, strip by strip on this thread, and hands its rows to the
/// canvas. Ends early when something fails or `cancelled` becomes true; the canvas knows how far it came.
void fillCanvas(UprightCanvas &canvas, VipsImage *image, const std::atomic<bool> *cancelled = nullptr);
