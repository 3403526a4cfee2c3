#pragma once

#include "PIGroup.h"

#include <QByteArray>
#include <QString>

#include <optional>

class FileRefRegistry;

/// Photos as text, the form in which they are copied and pasted within this library.
namespace PhotoClipboard {

inline const QString kCopyPhotoType = QStringLiteral("hmphoto.copyPhoto");

/// UTF-8.
[[nodiscard]] QByteArray textForPhotos(const PIGroup::PhotoList &photos);
/// New photos with guids of their own; those whose files the library does not know are left out. Nothing when the
/// text is malformed or leaves no photo.
[[nodiscard]] std::optional<PIGroup::PhotoList> photosFromText(const QByteArray &utf8, const FileRefRegistry &refs);

}
