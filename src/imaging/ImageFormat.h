#pragma once

#include <QByteArrayView>
#include <QString>
#include <QStringList>

/// The kinds of picture that the decoder tells apart.
enum class ImageFormat { Unknown, Jpeg, Png, Tiff, WebP, Heif, Gif, Bmp, JpegXl, Raw };

/// Extensions of files that count as pictures, lower case, without the dot.
[[nodiscard]] const QStringList &readableImageExtensions();
[[nodiscard]] bool isReadableImageExtension(const QString &extension);
/// For file dialogs: "*.jpg", "*.JPG", ...
[[nodiscard]] QStringList readableImageNameFilters();

/// The format of a file by its name; camera raw is decided by the name alone, because it looks like TIFF inside.
[[nodiscard]] ImageFormat imageFormatForFileName(const QString &fileName);
/// The format by name and first bytes: a raw name stays raw, else the bytes decide (a PNG named .jpg is a PNG).
[[nodiscard]] ImageFormat imageFormat(const QString &fileName, QByteArrayView firstBytes);
