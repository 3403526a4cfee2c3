#pragma once

#include "ByteSource.h"

#include <QByteArray>
#include <QSize>

#include <optional>

/// What stands in a JPEG file before its pixels.
struct JpegMarkers
{
    QSize size; ///< as stored
    int components = 0;
    bool isProgressive = false;
    /// What a decoder must keep of a picture that comes in several scans, at whatever scale; 0 when it comes in one.
    qint64 coefficientBytes = 0;
    QByteArray exif;    ///< with its "Exif" signature; empty when there is none
    QByteArray profile; ///< ICC; empty when there is none
    // Only when asked for:
    QByteArray xmp;       ///< the packet; empty when there is none
    QByteArray resources; ///< those of an image editor, among which captions stand; empty when there are none
};

enum class JpegTexts { Skip, Read };

/// Walks over the segments up to the picture data, reading those that matter only. Nothing when it is no JPEG file
/// with a usable frame.
[[nodiscard]] std::optional<JpegMarkers> readJpegMarkers(const ByteSource &source, JpegTexts texts = JpegTexts::Skip);
