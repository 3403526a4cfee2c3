#pragma once

#include "PIGroup.h"

#include <QByteArray>

#include <optional>

class PhotoLibrary;

/// Photos as they travel through the clipboard: with caption, keywords, mark, crop and effects, and by reference to
/// their files.
namespace PhotoClipboard {

inline const QString kCopyPhotoType = QStringLiteral("hmphoto.copyPhoto");

[[nodiscard]] QByteArray archive(const PIGroup::PhotoList &photos);
/// The photos, each with a guid of its own. Photos and keywords that this library does not know are left out. Nothing
/// when the text is malformed; it may come from any program.
[[nodiscard]] std::optional<PIGroup::PhotoList> unarchive(const QByteArray &xml, const PhotoLibrary &library);

}
