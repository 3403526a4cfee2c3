#include "FilterValues.h"
#include "Halftone.h"
#include "Plane.h"

#include <algorithm>
#include <cmath>

namespace {

using Halftone::wave;

// Prints with a screen: `screen(vector from the centre, in widths)` tells 0 to 1, the light from which on it is white.
template<typename Screen>
bool addScreen(WorkingImage &image, const FilterValues &values, double angle, Screen screen)
{
    const QPointF center = values.point("inputCenter");
    const double width = std::max(values.number("inputWidth"), values.scale());
    const float edge = Halftone::edgeOf(values.number("inputSharpness", 0, 1), width);
    return image.setAlpha(WorkingImage::Alpha::Straight) && image.addPlacedStep([=](Pixel &pixel, QPointF place) {
        const auto level = float(screen(Plane::turned(place - center, -angle) / width));
        pixel = PixelMath::grey(Halftone::printed(luminance(pixel), level, edge), pixel.a);
    });
}

bool circularScreen(WorkingImage &image, const FilterValues &values)
{
    return addScreen(image, values, 0, [](QPointF u) { return wave(Plane::length(u)); });
}

bool dotScreen(WorkingImage &image, const FilterValues &values)
{
    return addScreen(image, values, values.number("inputAngle"), Halftone::dots);
}

bool hatchedScreen(WorkingImage &image, const FilterValues &values)
{
    return addScreen(image, values, values.number("inputAngle"),
                     [](QPointF u) { return std::max(wave(u.x()), wave(u.y())); });
}

bool lineScreen(WorkingImage &image, const FilterValues &values)
{
    return addScreen(image, values, values.number("inputAngle"), [](QPointF u) { return wave(u.y()); });
}

const FilterTable kFilters{
    {"CICircularScreen",
     QT_TRANSLATE_NOOP("FilterLibrary", "Circular Screen"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Renders the picture as a black-and-white screen of concentric rings."),
     {{"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputWidth", QT_TRANSLATE_NOOP("FilterLibrary", "Width"), InputKind::Pixels, 6.0, {}, 2.0, 50.0},
      {"inputSharpness", QT_TRANSLATE_NOOP("FilterLibrary", "Sharpness"), InputKind::Number, 0.7, {}, 0.0, 1.0}},
     circularScreen},
    {"CIDotScreen",
     QT_TRANSLATE_NOOP("FilterLibrary", "Dot Screen"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Renders the picture as a black-and-white screen of dots."),
     {{"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputAngle", QT_TRANSLATE_NOOP("FilterLibrary", "Angle"), InputKind::Angle, 0.0, {}, -kPi, kPi},
      {"inputWidth", QT_TRANSLATE_NOOP("FilterLibrary", "Width"), InputKind::Pixels, 6.0, {}, 2.0, 50.0},
      {"inputSharpness", QT_TRANSLATE_NOOP("FilterLibrary", "Sharpness"), InputKind::Number, 0.7, {}, 0.0, 1.0}},
     dotScreen},
    {"CIHatchedScreen",
     QT_TRANSLATE_NOOP("FilterLibrary", "Hatched Screen"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Renders the picture as a black-and-white screen of crossing lines."),
     {{"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputAngle", QT_TRANSLATE_NOOP("FilterLibrary", "Angle"), InputKind::Angle, 0.0, {}, -kPi, kPi},
      {"inputWidth", QT_TRANSLATE_NOOP("FilterLibrary", "Width"), InputKind::Pixels, 6.0, {}, 2.0, 50.0},
      {"inputSharpness", QT_TRANSLATE_NOOP("FilterLibrary", "Sharpness"), InputKind::Number, 0.7, {}, 0.0, 1.0}},
     hatchedScreen},
    {"CILineScreen",
     QT_TRANSLATE_NOOP("FilterLibrary", "Line Screen"),
     QT_TRANSLATE_NOOP("FilterLibrary", "Renders the picture as a black-and-white screen of parallel lines."),
     {{"inputCenter", QT_TRANSLATE_NOOP("FilterLibrary", "Center"), InputKind::Point, QPointF(150, 150), {}, {}, {}},
      {"inputAngle", QT_TRANSLATE_NOOP("FilterLibrary", "Angle"), InputKind::Angle, 0.0, {}, -kPi, kPi},
      {"inputWidth", QT_TRANSLATE_NOOP("FilterLibrary", "Width"), InputKind::Pixels, 6.0, {}, 2.0, 50.0},
      {"inputSharpness", QT_TRANSLATE_NOOP("FilterLibrary", "Sharpness"), InputKind::Number, 0.7, {}, 0.0, 1.0}},
     lineScreen},
};

}

const FilterTable &halftoneFilters()
{
    return kFilters;
}
