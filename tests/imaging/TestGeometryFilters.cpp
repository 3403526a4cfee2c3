#include "FilterReference.h"
#include "TestPictures.h"
#include "TestRunner.h"

#include <QTest>

#include <algorithm>
#include <cmath>

namespace {

using Pixel = ReferencePicture::Pixel;
using Picture = ReferencePicture;

/// Opaque, as this is about shapes.
FilterCase opaque(const EffectEntry &entry, const std::function<Pixel(const Picture &in, int x, int y)> &rule,
                  int tolerance)
{
    FilterCase one{entry, [rule](const Picture &in) { return in.mapped([&](int x, int y) { return rule(in, x, y); }); },
                   tolerance};
    one.isOpaque = true;
    return one;
}

/// One direction of scaling: the pixels of `count` weigh as a kernel tells.
using Curve = std::function<double(double distance)>;
Pixel scaledAt(const Picture &in, double x, double y, double unitX, double unitY, const Curve &curve)
{
    Pixel mean{};
    double sum = 0;
    const int reach = int(3 * std::max(unitX, unitY)) + 1;
    for (int row = int(y) - reach; row <= int(y) + reach; ++row) {
        for (int column = int(x) - reach; column <= int(x) + reach; ++column) {
            const double weight = curve(std::abs(column - x) / unitX) * curve(std::abs(row - y) / unitY);
            sum += weight;
            for (size_t c = 0; c < 4; ++c)
                mean[c] += weight * in.at(column, row)[c];
        }
    }
    for (double &component : mean)
        component /= sum;
    return mean;
}

/// The picture from (0, 0) on, width x height pixels of it; clear where it ends before the frame does.
FilterCase scaled(const EffectEntry &entry, int width, int height, const Curve &curve)
{
    const auto expected = [=](Picture in) {
        in.multiplyAlpha();
        const double stepX = double(in.width()) / width;
        const double stepY = double(in.height()) / height;
        Picture out = in.mapped([&](int x, int y) {
            if (x >= width || y >= height)
                return Pixel{};
            return scaledAt(in, (x + 0.5) * stepX - 0.5, (y + 0.5) * stepY - 0.5, std::max(stepX, 1.0),
                            std::max(stepY, 1.0), curve);
        });
        out.divideAlpha();
        return out;
    };
    return {entry, expected};
}

double lanczos(double x)
{
    const auto sinc = [](double t) { return t == 0 ? 1 : std::sin(M_PI * t) / (M_PI * t); };
    return x < 3 ? sinc(x) * sinc(x / 3) : 0;
}

/// B = 1 / 3, C = 1 / 3.
double softCubic(double x)
{
    if (x < 1)
        return (7 * x * x * x - 12 * x * x + 16 / 3.) / 6;
    return x < 2 ? (-7 / 3. * x * x * x + 12 * x * x - 20 * x + 32 / 3.) / 6 : 0;
}

}

class TestGeometryFilters : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void scalingKeepsTheFrameAndItsLeftBottomCorner()
    {
        const FilterSettings third{
            {"inputScale", 1.25}, {"inputAspectRatio", 0.6}, {"inputB", 1 / 3.}, {"inputC", 1 / 3.}};
        const std::vector<FilterCase> cases{
            scaled(effect("CILanczosScaleTransform", {{"inputScale", 0.4}, {"inputAspectRatio", 2.0}}), 26, 10,
                   lanczos),
            scaled(effect("CILanczosScaleTransform", {{"inputScale", 1.5}}), 48, 36, lanczos),
            scaled(effect("CIBicubicScaleTransform", third), 24, 30, softCubic),
            scaled(effect("CIBicubicScaleTransform", {{"inputScale", 40.0}, {"inputB", 1 / 3.}, {"inputC", 1 / 3.}}),
                   1280, 960, softCubic)};
        QCOMPARE(firstDifference(cases), QString());
    }

    void whatLiesOutsideTheFrameIsThereForTheNextFilter()
    {
        const QImage sample = samplePicture(false);
        const EffectEntry larger = effect("CILanczosScaleTransform", {{"inputScale", 2.0}});
        const EffectEntry smaller = effect("CILanczosScaleTransform", {{"inputScale", 0.5}});
        const QImage back = filtered({larger, smaller}, sample);
        QCOMPARE(back.format(), QImage::Format_RGB32);
        QVERIFY(TestPictures::meanDifference(back, sample) < 3);
        const EffectEntry far = effect("CIBicubicScaleTransform", {{"inputScale", 10.0}});
        const EffectEntry near = effect("CILanczosScaleTransform", {{"inputScale", 0.1}});
        QVERIFY(TestPictures::meanDifference(filtered({far, near}, sample), sample) < 3);
    }

    void nearestSamplingIsForTheNextFilterAlone()
    {
        const QImage sample = samplePicture(false);
        const EffectEntry nearest = effect("CISampleNearest");
        const EffectEntry enlarged = effect("CIBicubicScaleTransform", {{"inputScale", 3.0}});
        const EffectEntry turned = effect("CIOpTile", {{"inputScale", 1.0}, {"inputAngle", 0.3}, {"inputWidth", 90.0}});
        QCOMPARE(filtered({nearest}, sample), sample);
        const QImage blocks = filtered({nearest, enlarged}, sample);
        for (int i = 0; i < 32 * 24; ++i)
            QCOMPARE(blocks.pixel(i % 32, 23 - i / 32), sample.pixel(i % 32 / 3, 23 - i / 32 / 3));
        const QImage plain = filtered({turned}, sample);
        QVERIFY(filtered({nearest, turned}, sample) != plain);
        QCOMPARE(filtered({nearest, effect("CIColorInvert"), effect("CIColorInvert"), turned}, sample), plain);
    }

    void straighteningTurnsWithoutCorners()
    {
        QImage picture(300, 200, QImage::Format_RGB32);
        picture.fill(qRgb(40, 90, 160));
        for (int x = 0; x < 300; ++x) {
            for (int y = 98; y < 102; ++y)
                picture.setPixel(x, y, qRgb(255, 255, 255)); // a horizon
        }
        const double angle = 0.2;
        const QImage result = filtered({effect("CIStraightenFilter", {{"inputAngle", angle}})}, picture);
        QCOMPARE(result.format(), QImage::Format_RGB32);
        QCOMPARE(result.pixel(0, 0), qRgb(40, 90, 160));
        QCOMPARE(result.pixel(299, 199), qRgb(40, 90, 160));
        for (const int right : {-100, -40, 0, 70, 120}) // counterclockwise: the right side rises
            QVERIFY(qRed(result.pixel(150 + right, int(100 - std::tan(angle) * right))) > 250);
    }

    void turningInSpaceFollowsTheCamera()
    {
        const double focus = 28 * std::hypot(32, 24) / 43.27;
        const double yaw = 0.25;
        const auto turned = [=](const Picture &in, int x, int y) {
            // With yaw alone a ray turns in the plane of the camera's horizon.
            const double direction = std::atan2(x + 0.5 - 16, focus) - yaw;
            const double across = focus * std::tan(direction);
            const double depth = std::hypot(x + 0.5 - 16, focus) * std::cos(direction);
            const double up = (y + 0.5 - 12) * focus / depth;
            const double column = across + 16 - 0.5;
            const double row = up + 12 - 0.5;
            Pixel mean{};
            for (int i = 0; i < 4; ++i) {
                const int cx = int(std::floor(column)) + i % 2;
                const int cy = int(std::floor(row)) + i / 2;
                if (cx < 0 || cy < 0 || cx >= 32 || cy >= 24)
                    continue;
                const double weight = (1 - std::abs(column - cx)) * (1 - std::abs(row - cy));
                for (size_t c = 0; c < 4; ++c)
                    mean[c] += weight * in.at(cx, cy)[c];
            }
            for (size_t c = 0; c < 3; ++c)
                mean[c] = mean[3] > 0 ? mean[c] / mean[3] : 0;
            return mean;
        };
        QCOMPARE(firstDifference({opaque(effect("CIPerspectiveRotate", {{"inputYaw", yaw}}), turned, 2)}), QString());
    }
};

REGISTER_TEST(TestGeometryFilters)
#include "TestGeometryFilters.moc"
