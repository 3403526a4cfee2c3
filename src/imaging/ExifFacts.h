#pragma once

#include "Orientation.h"

#include <QByteArray>
#include <QByteArrayView>

/// What this program wants to know of a camera's notes.
struct ExifFacts
{
    Orientation orientation;
    QByteArray thumbnail; ///< JPEG; empty when there is none
};

/// Reads a block that begins with the "Exif" signature; what cannot be read is left at its default.
[[nodiscard]] ExifFacts readExif(QByteArrayView exif);
