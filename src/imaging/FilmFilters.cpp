#include "FilmFilters.h"

#include "FilterValues.h"
#include "PixelMath.h"

#include <cmath>

namespace {

using PixelMath::addEncodedStep;
using PixelMath::clamped;
using PixelMath::eachColor;
using PixelMath::grey;
using PixelMath::mixed;
using PixelMath::smooth;

float filmGrey(const Pixel &pixel)
{
    return 0.299F * pixel.r + 0.587F * pixel.g + 0.114F * pixel.b;
}

// Towards an S-shaped curve.
float steeper(float x, float share)
{
    return x + share * (smooth(0, 1, x) - x);
}

// Adds a film look: saturation, then `curves` of the red, green and blue.
template<typename Curves>
bool addFilm(WorkingImage &image, float saturation, Curves curves)
{
    return addEncodedStep(image, [=](Pixel &pixel) {
        pixel = curves(mixed(grey(filmGrey(pixel), pixel.a), pixel, saturation));
        eachColor(pixel, clamped);
    });
}

// Powers of what lies below nothing are nothing.
TAMSEL_WIDE inline float power(float x, float exponent)
{
    const float result = SrgbCurve::powerOf(x, exponent);
    return x > 0 ? result : 0;
}

}

bool Film::chrome(WorkingImage &image, const FilterValues &)
{
    return addFilm(image, 1.25F, [](Pixel x) {
        eachColor(x, [](float c) { return steeper(c, 0.35F); });
        return x;
    });
}

bool Film::fade(WorkingImage &image, const FilterValues &)
{
    return addFilm(image, 0.7F, [](Pixel x) {
        eachColor(x, [](float c) { return 0.07F + 0.86F * c; });
        return x;
    });
}

bool Film::instant(WorkingImage &image, const FilterValues &)
{
    return addFilm(image, 0.85F, [](const Pixel &x) {
        return Pixel{0.04F + 0.94F * power(x.r, 0.9F), 0.03F + 0.92F * x.g, 0.10F + 0.80F * power(x.b, 1.05F), x.a};
    });
}

bool Film::mono(WorkingImage &image, const FilterValues &)
{
    return addFilm(image, 0, [](const Pixel &x) { return grey(0.05F + 0.88F * x.r, x.a); });
}

bool Film::noir(WorkingImage &image, const FilterValues &)
{
    return addFilm(image, 0, [](const Pixel &x) { return grey((steeper(x.r, 1) - 0.5F) * 1.1F + 0.5F, x.a); });
}

bool Film::process(WorkingImage &image, const FilterValues &)
{
    return addFilm(image, 0.9F, [](const Pixel &x) {
        return Pixel{power(x.r, 1.1F), 0.01F + 0.98F * x.g, 0.06F + 0.94F * power(x.b, 0.92F), x.a};
    });
}

bool Film::tonal(WorkingImage &image, const FilterValues &)
{
    return addFilm(image, 0, [](const Pixel &x) { return x; });
}

bool Film::transfer(WorkingImage &image, const FilterValues &)
{
    return addFilm(image, 0.95F, [](const Pixel &x) {
        return Pixel{0.05F + 0.95F * power(x.r, 0.92F), 0.02F + 0.95F * x.g, 0.02F + 0.88F * power(x.b, 1.08F), x.a};
    });
}
