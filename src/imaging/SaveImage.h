#pragma once

#include "FileWriter.h"
#include "Image.h"

#include <QByteArray>
#include <QSize>
#include <QString>

#include <functional>
#include <optional>

enum class SaveFileType { Automatic = 0, Jpeg = 1, Pdf = 2, Png = 3, Tiff = 4 };

/// What to write and how; the writer completes it and tells what became of it.
struct SaveRequest
{
    QString path;    ///< destination; empty to write into `data`. The writer may change its extension or make it unique
    QByteArray data; ///< out
    SaveFileType type = SaveFileType::Automatic;         ///< out: the type chosen
    QString extension;                                   ///< out: the extension that belongs to the type
    QSize rect;                                          ///< out: the pixel size written
    double compression = 1.0;                            ///< JPEG quality 0 to 1; for TIFF, 1 or more means compress
    bool unique = false;                                 ///< never overwrite: take a new name instead
    bool writeFailed = false;                            ///< out: the destination could not be created or written
    QString reason;                                      ///< out: why, then
    bool embedProfile = true;                            ///< write an sRGB profile where the type can carry one
    bool fullChroma = false;                             ///< JPEG: keep colour at full resolution
    PictureNotes notes;                                  ///< written along, as far as the type can carry them
    FileWriter::Flush flush = FileWriter::Flush::ToDisk; ///< `No` for files that can be made again
    std::function<bool()> mayReplace; ///< asked when all is ready to be put in the place of a file; none: it may
    const std::atomic<bool> *cancelled = nullptr; ///< set from another thread when nobody wants the file any more
};

/// Writes the image as JPEG, PNG, TIFF or single-page PDF at the given pixel size (its own where a side is 0). No
/// location data is ever written. The path holds the whole file or what it held before, and that when it was cancelled
/// or may not be replaced, which is no failed writing. Blocks: any thread but the
/// main one, except for small images.
[[nodiscard]] bool SaveImageCore(int width, int height, const Image &image, SaveRequest &request);

/// The image as TIFF bytes at its full size; nothing (and a log line) when it cannot be made.
[[nodiscard]] std::optional<QByteArray> TiffFromImage(const Image &image);

/// The largest side in pixels for a size option; options that name none do not limit in practice.
[[nodiscard]] int exportSideLimit(int sizeOption);
/// The size to write under the size option; smaller images are never enlarged.
[[nodiscard]] QSize finalImageSize(QSize source, int sizeOption);
/// "jpg", "pdf", "png" or "tiff"; null for an index above 3.
[[nodiscard]] QString extensionForFormat(int format);
/// The type for a format index; `Automatic` for one above 3.
[[nodiscard]] SaveFileType typeForFormat(int format);
[[nodiscard]] std::optional<int> formatForExtension(const QString &extension);
/// The path with the format's extension: in place of that of another format, else behind the whole name.
[[nodiscard]] QString pathForFormat(const QString &path, int format);
