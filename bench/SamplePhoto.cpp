#include "SamplePhoto.h"

#include "ImageEncoders.h"

#include <algorithm>
#include <cmath>
#include <random>

namespace {

/// Hills of a few sizes: what gradients, skies and blurred backgrounds are to an encoder.
double relief(double x, double y)
{
    return 40 * std::sin(x * 3.1 + y * 1.7) + 25 * std::sin(x * 11 - y * 7 + std::sin(y * 9)) +
           12 * std::sin(x * 47 + 5 * std::sin(y * 31)) + 7 * std::sin(x * 190 + y * 210 + 3 * std::sin(x * 77));
}

}

QImage samplePhoto(QSize size)
{
    QImage image(size, QImage::Format_RGB32);
    std::minstd_rand random(1);
    for (int y = 0; y < size.height(); ++y) {
        auto *row = reinterpret_cast<QRgb *>(image.scanLine(y));
        const double down = double(y) / size.height();
        for (int x = 0; x < size.width(); ++x) {
            const double across = double(x) / size.width();
            const auto bits = quint32(random());
            const double noise = double((bits & 0xf) + (bits >> 4 & 0xf) + (bits >> 8 & 0xf)) - 22.5;
            const double texture = 1 + 2.2 * std::max(0.0, std::sin(across * 9) * std::sin(down * 5));
            const double light = 128 + relief(across, down) + noise * 0.5 * texture;
            const auto level = [&](double offset) { return int(std::clamp(light + offset, 0.0, 255.0)); };
            row[x] = qRgb(level(20 * across), level(0), level(25 * down - 10));
        }
    }
    return image;
}

QByteArray sampleJpeg(QSize size)
{
    return ImageEncoders::jpeg(samplePhoto(size), 90, ImageEncoders::Chroma::Halved, {});
}
