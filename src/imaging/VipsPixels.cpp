#include "VipsPixels.h"

#include <algorithm>

VipsPipeline bandsOf(const QImage &pixels)
{
    VipsPipeline pipeline(vips_image_new_from_memory(pixels.constBits(), size_t(pixels.sizeInBytes()), pixels.width(),
                                                     pixels.height(), 4, VIPS_FORMAT_UCHAR));
    VipsImage *bands[3] = {};
    bool ok = !pipeline.isNull();
    for (int i = 0; i < 3 && ok; ++i)
        ok = vips_extract_band(pipeline.image(), &bands[i], 2 - i, nullptr) == 0;
    ok = ok && pipeline.add([&](VipsImage *, VipsImage **out) { return vips_bandjoin(bands, out, 3, nullptr); }) &&
         pipeline.add([](VipsImage *in, VipsImage **out) {
             return vips_copy(in, out, "interpretation", VIPS_INTERPRETATION_sRGB, nullptr);
         });
    for (VipsImage *band : bands)
        g_clear_object(&band);
    return ok ? std::move(pipeline) : VipsPipeline();
}

VipsPipeline alphaBandsOf(const QImage &pixels)
{
    VipsPipeline pipeline(vips_image_new_from_memory(pixels.constBits(), size_t(pixels.sizeInBytes()), pixels.width(),
                                                     pixels.height(), 4, VIPS_FORMAT_UCHAR));
    const bool ok = !pipeline.isNull() && pipeline.add([](VipsImage *in, VipsImage **out) {
        return vips_copy(in, out, "interpretation", VIPS_INTERPRETATION_sRGB, nullptr);
    });
    return ok ? std::move(pipeline) : VipsPipeline();
}

namespace {

/// The region may hold more than was asked for.
const VipsPel *startOfRow(const VipsRegion &region, int y)
{
    const ptrdiff_t pixelSize = region.im->Bands; // of bytes
    return region.data + ptrdiff_t(y - region.valid.top) * region.bpl - region.valid.left * pixelSize;
}

void convertRow(const VipsPel *from, int bands, int width, QRgb *to)
{
    if (bands == 3) {
        for (int x = 0; x < width; ++x, from += 3)
            to[x] = qRgb(from[0], from[1], from[2]);
    } else {
        for (int x = 0; x < width; ++x, from += bands)
            to[x] = qPremultiply(qRgba(from[0], from[1], from[2], from[3]));
    }
}

}

void fillCanvas(UprightCanvas &canvas, VipsImage *image, const std::atomic<bool> *cancelled)
{
    constexpr int stripHeight = 32;
    const std::unique_ptr<VipsRegion, GObjectDeleter> region(vips_region_new(image));
    const int width = vips_image_get_width(image);
    const int height = vips_image_get_height(image);
    const int bands = vips_image_get_bands(image);
    while (!canvas.isFull() && !(cancelled && cancelled->load(std::memory_order_relaxed))) {
        const int top = canvas.rowsTaken();
        const VipsRect strip = {0, top, width, std::min(stripHeight, height - top)};
        if (strip.height <= 0 || vips_region_prepare(region.get(), &strip) != 0)
            break;
        for (int y = top; y < top + strip.height; ++y) {
            convertRow(startOfRow(*region, y), bands, width, canvas.nextRow());
            canvas.rowDone();
        }
    }
}
