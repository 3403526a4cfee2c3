#pragma once

#include <QImage>
#include <QSize>

/// A picture made by code that costs an encoder, and filters, what a photo costs them: large forms, fine texture here
/// and there, sensor noise.
[[nodiscard]] QImage samplePhoto(QSize size);
