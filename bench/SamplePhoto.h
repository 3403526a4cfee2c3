#pragma once

#include <QByteArray>
#include <QImage>
#include <QSize>

/// A picture made by code that costs an encoder, and filters, what a photo costs them: large forms, fine texture here
/// and there, sensor noise.
[[nodiscard]] QImage samplePhoto(QSize size);
/// The same as a JPEG file such as cameras write.
[[nodiscard]] QByteArray sampleJpeg(QSize size);
