#include "FilterReference.h"

#include "PixelMath.h"
#include "TestPictures.h"

#include <algorithm>
#include <cmath>

double srgbEncoded(double linear)
{
    const double size = std::abs(linear);
    return std::copysign(size <= 0.0031308 ? 12.92 * size : 1.055 * std::pow(size, 1 / 2.4) - 0.055, linear);
}

double srgbDecoded(double encoded)
{
    const double size = std::abs(encoded);
    return std::copysign(size <= 0.04045 ? size / 12.92 : std::pow((size + 0.055) / 1.055, 2.4), encoded);
}

double luminanceOf(const ReferencePicture::Pixel &pixel)
{
    return 0.2126 * pixel[0] + 0.7152 * pixel[1] + 0.0722 * pixel[2];
}

ReferencePicture::ReferencePicture(const QImage &image)
    : m_width(image.width())
    , m_height(image.height())
{
    for (int y = m_height - 1; y >= 0; --y) {
        for (int x = 0; x < m_width; ++x) {
            const QRgb rgb = image.pixel(x, y);
            const double alpha = qAlpha(rgb) / 255.0;
            const auto part = [&](int component) { return alpha > 0 ? srgbDecoded(component / 255.0 / alpha) : 0; };
            m_pixels.push_back({part(qRed(rgb)), part(qGreen(rgb)), part(qBlue(rgb)), alpha});
        }
    }
}

const ReferencePicture::Pixel &ReferencePicture::at(int x, int y) const
{
    return m_pixels[size_t(std::clamp(y, 0, m_height - 1) * m_width + std::clamp(x, 0, m_width - 1))];
}

ReferencePicture::Pixel &ReferencePicture::at(int x, int y)
{
    return m_pixels[size_t(y * m_width + x)];
}

QImage ReferencePicture::image() const
{
    QImage image(m_width, m_height, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < m_height; ++y) {
        for (int x = 0; x < m_width; ++x) {
            const Pixel &pixel = at(x, y);
            const double alpha = std::clamp(pixel[3], 0.0, 1.0);
            const auto byte = [&](double value) {
                return int(std::lround(srgbEncoded(std::clamp(value, 0.0, 1.0)) * alpha * 255));
            };
            auto *row = reinterpret_cast<QRgb *>(image.scanLine(m_height - 1 - y));
            row[x] = qRgba(byte(pixel[0]), byte(pixel[1]), byte(pixel[2]), int(std::lround(alpha * 255)));
        }
    }
    return image;
}

void ReferencePicture::multiplyAlpha()
{
    for (Pixel &pixel : m_pixels) {
        for (size_t i = 0; i < 3; ++i)
            pixel[i] *= pixel[3];
    }
}

void ReferencePicture::divideAlpha()
{
    for (Pixel &pixel : m_pixels) {
        for (size_t i = 0; i < 3; ++i)
            pixel[i] = pixel[3] > 0 ? pixel[i] / pixel[3] : 0;
    }
}

ReferencePicture ReferencePicture::mapped(const std::function<Pixel(int, int)> &function) const
{
    ReferencePicture result = *this;
    for (int y = 0; y < m_height; ++y) {
        for (int x = 0; x < m_width; ++x)
            result.at(x, y) = function(x, y);
    }
    return result;
}

QImage samplePicture(bool withAlpha)
{
    return TestPictures::colorful(QSize(32, 24), withAlpha);
}

QImage detailedPicture()
{
    QImage image(704, 496, QImage::Format_ARGB32);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const quint32 grain = PixelMath::cellHash(x / 3, y / 3) >> 24;
            const int light = x / 88 % 2 == y / 62 % 2 ? 90 : 10;
            const int alpha = x > 400 && (x + y) % 200 < 100 ? int(40 + grain / 2) : 255;
            image.setPixel(x, y, qRgba(light + int(grain / 2), int(grain), 60 + x / 5, alpha));
        }
    }
    return image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

EffectEntry effect(const char *filter, FilterSettings values)
{
    EffectEntry entry(QString::fromLatin1(filter));
    for (const auto &[input, value] : values)
        entry.setValue(QString::fromLatin1(input), value);
    return entry;
}

const FilterLibrary &filterLibrary()
{
    static const FilterLibrary library;
    return library;
}

QImage filtered(const EffectChain &chain, const QImage &image, double scale)
{
    FilterContext context;
    context.scale = scale;
    return EvaluateChain(chain, image, filterLibrary(), context).value_or(QImage());
}

QString firstDifference(const std::vector<FilterCase> &cases)
{
    for (const bool withAlpha : {false, true}) {
        const QImage sample = samplePicture(withAlpha);
        for (const FilterCase &one : cases) {
            if (withAlpha && one.isOpaque)
                continue;
            if (!filterLibrary().attributes(one.entry.filterName()))
                return one.entry.filterName() + QStringLiteral(" is missing");
            const QImage expected = one.expected(ReferencePicture(sample)).image();
            const QImage result = filtered({one.entry}, sample).convertToFormat(expected.format());
            const int difference = TestPictures::largestDifference(result, expected);
            if (difference > one.tolerance)
                return QStringLiteral("%1 (case %2) differs by %3%4")
                    .arg(one.entry.filterName())
                    .arg(&one - cases.data())
                    .arg(difference)
                    .arg(withAlpha ? QStringLiteral(" with alpha") : QString());
        }
    }
    return {};
}

namespace {

using Pixel = ReferencePicture::Pixel;

// The largest difference of the components of an encoded pixel with alpha multiplied in, in 8-bit steps.
double difference(const Pixel &expected, QRgb found)
{
    const double alpha = std::clamp(expected[3], 0.0, 1.0);
    double most = std::abs(alpha * 255 - qAlpha(found));
    const std::array<int, 3> parts{qRed(found), qGreen(found), qBlue(found)};
    for (size_t i = 0; i < 3; ++i) {
        const double color = alpha > 0 ? std::clamp(expected[i] / alpha, 0.0, 1.0) : 0;
        most = std::max(most, std::abs(srgbEncoded(color) * alpha * 255 - parts[i]));
    }
    return most;
}

}

QString firstWideDifference(const std::vector<WideCase> &cases)
{
    const QImage picture = detailedPicture();
    ReferencePicture in(picture);
    in.multiplyAlpha();
    for (const WideCase &one : cases) {
        const QImage result = filtered({one.entry}, picture).convertToFormat(picture.format());
        double sum = 0;
        double most = 0;
        int count = 0;
        for (int y = 0; y < in.height(); y += 99) {    // 495 is the last
            for (int x = 0; x < in.width(); x += 37) { // as is 703
                const double apart = difference(one.expected(in, x, y), result.pixel(x, in.height() - 1 - y));
                sum += apart;
                most = std::max(most, apart);
                ++count;
            }
        }
        if (!(sum / count <= one.meanTolerance && most <= one.tolerance))
            return QStringLiteral("%1 differs by %2, %3 at most")
                .arg(one.entry.filterName())
                .arg(sum / count)
                .arg(most);
    }
    return {};
}
