#pragma once

#include <QByteArray>
#include <QImage>

/// Whether an ICC profile describes sRGB, so that nothing needs converting.
[[nodiscard]] bool isSrgbProfile(const QByteArray &profile);

/// Converts opaque pixels in place from the colours of an RGB profile to sRGB. A profile that is empty, is sRGB, or
/// cannot be used leaves them as they are.
void convertToSrgb(QImage &pixels, const QByteArray &profile);

/// The profile that is written into exported files.
[[nodiscard]] const QByteArray &srgbProfile();
