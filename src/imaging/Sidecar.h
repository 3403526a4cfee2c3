#pragma once

#include <QByteArray>
#include <QString>

/// The XMP file that stands beside an image file: "photo.jpg.xmp" or, if there is none, "photo.xmp".
struct Sidecar
{
    QString path; ///< empty when there is none
    QByteArray packet;

    /// Reads it; one that is there but cannot be read is told of in the log, and counts as none.
    [[nodiscard]] static Sidecar ofFile(const QString &path);
};
