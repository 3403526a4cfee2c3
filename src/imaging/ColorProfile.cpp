#include "ColorProfile.h"

#include "VipsPixels.h"
#include "VipsSupport.h"

#include <QtEndian>

#include <array>
#include <cmath>
#include <mutex>

namespace {

/// The tagged data of an ICC profile; empty when the tag is absent or lies outside.
QByteArrayView profileTag(QByteArrayView profile, const char *name)
{
    constexpr qsizetype tableStart = 132;
    constexpr qsizetype entrySize = 12;
    if (profile.size() < tableStart)
        return {};
    const auto number = [&](qsizetype at) { return qint64(qFromBigEndian<quint32>(profile.data() + at)); };
    for (qint64 i = 0; i < number(128); ++i) {
        const qint64 entry = tableStart + i * entrySize;
        if (entry + entrySize > profile.size())
            break;
        const qint64 offset = number(entry + 4);
        const qint64 length = number(entry + 8);
        if (profile.sliced(entry, 4) == QByteArrayView(name, 4) && offset + length <= profile.size())
            return profile.sliced(offset, length);
    }
    return {};
}

double fixedAt(QByteArrayView tag, qsizetype at)
{
    return qFromBigEndian<qint32>(tag.data() + at) / 65536.0;
}

bool isColorant(QByteArrayView profile, const char *name, const std::array<double, 3> &expected)
{
    const QByteArrayView tag = profileTag(profile, name);
    if (tag.size() < 20)
        return false;
    constexpr double tolerance = 0.001;
    for (qsizetype i = 0; i < 3; ++i) {
        if (std::abs(fixedAt(tag, 8 + 4 * i) - expected[size_t(i)]) > tolerance)
            return false;
    }
    return true;
}

double srgbToLinear(double value)
{
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

bool isSrgbTable(QByteArrayView tag, qint64 count)
{
    if (count < 256 || 12 + 2 * count > tag.size())
        return false;
    for (const double at : {0.02, 0.1, 0.25, 0.5, 0.75}) {
        const auto index = qint64(std::lround(at * double(count - 1)));
        const double value = qFromBigEndian<quint16>(tag.data() + 12 + 2 * index) / 65535.0;
        if (std::abs(value - srgbToLinear(double(index) / double(count - 1))) > 0.002)
            return false;
    }
    return true;
}

bool isSrgbCurve(QByteArrayView tag)
{
    if (tag.size() < 12)
        return false;
    if (tag.startsWith("curv"))
        return isSrgbTable(tag, qFromBigEndian<quint32>(tag.data() + 8));
    constexpr std::array<double, 5> parameters = {2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045};
    if (!tag.startsWith("para") || qFromBigEndian<quint16>(tag.data() + 8) != 3 || tag.size() < 32)
        return false;
    for (qsizetype i = 0; i < 5; ++i) {
        if (std::abs(fixedAt(tag, 12 + 4 * i) - parameters[size_t(i)]) > 0.001)
            return false;
    }
    return true;
}

}

bool isSrgbProfile(const QByteArray &profile)
{
    // A profile with look-up tables does more than its colorants say.
    return isColorant(profile, "rXYZ", {0.4361, 0.2225, 0.0139}) &&
           isColorant(profile, "gXYZ", {0.3851, 0.7169, 0.0971}) &&
           isColorant(profile, "bXYZ", {0.1431, 0.0606, 0.7141}) && isSrgbCurve(profileTag(profile, "rTRC")) &&
           isSrgbCurve(profileTag(profile, "gTRC")) && isSrgbCurve(profileTag(profile, "bTRC")) &&
           profileTag(profile, "A2B0").isEmpty();
}

namespace {

bool addConversion(VipsPipeline &pipeline, const QByteArray &profile)
{
    vips_image_set_blob_copy(pipeline.image(), VIPS_META_ICC_NAME, profile.constData(), size_t(profile.size()));
    return vips_icc_is_compatible_profile(pipeline.image(), profile.constData(), size_t(profile.size())) &&
           pipeline.add([](VipsImage *in, VipsImage **out) {
               return vips_icc_transform(in, out, "srgb", "embedded", TRUE, nullptr);
           });
}

}

void convertToSrgb(QImage &pixels, const QByteArray &profile)
{
    if (profile.isEmpty() || pixels.isNull() || isSrgbProfile(profile))
        return;
    ensureVips();
    {
        const QImage source = pixels;
        VipsPipeline pipeline = bandsOf(source);
        if (!pipeline.isNull() && addConversion(pipeline, profile)) {
            UprightCanvas canvas(pixels.size(), Orientation(), /*hasAlpha=*/false);
            if (!canvas.isNull())
                fillCanvas(canvas, pipeline.image());
            if (!canvas.isNull() && canvas.isFull())
                pixels = canvas.takeImage();
        }
    }
    vips_error_clear();
    vips_thread_shutdown();
}

const QByteArray &srgbProfile()
{
    static const QByteArray profile = [] {
        ensureVips();
        VipsBlob *blob = nullptr;
        QByteArray bytes;
        if (vips_profile_load("srgb", &blob, nullptr) == 0 && blob) {
            size_t length = 0;
            const void *data = vips_blob_get(blob, &length);
            bytes = QByteArray(static_cast<const char *>(data), qsizetype(length));
            vips_area_unref(VIPS_AREA(blob));
        }
        return bytes;
    }();
    return profile;
}
