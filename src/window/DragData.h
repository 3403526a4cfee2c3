#pragma once

#include "NavigatorDrop.h"
#include "PIGroup.h"
#include "PhotoEdits.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

class PIFolder;
class PhotoLibrary;
class QDropEvent;
class QMimeData;

/// What is dragged: groups, folders and photos, which mean something to this window alone, and files. Photos are files
/// as well, for other programs to copy.
namespace DragData {

using Transfer = PhotoEdits::Transfer;

[[nodiscard]] std::unique_ptr<QMimeData> forItem(const std::shared_ptr<PIGroup> &item);
/// `Copy` lets the drop copy the photos to another folder; a move is the rule.
[[nodiscard]] std::unique_ptr<QMimeData> forPhotos(const PIGroup::PhotoList &photos, Transfer transfer);

/// Nothing for what cannot be dropped here. What only looks like a drag of ours comes from another program and is
/// taken for its files, if there are any.
[[nodiscard]] std::optional<NavigatorDrop::Kind> kind(const QDropEvent &event);
/// The group or folder that is dragged; null when it is no longer in the library.
[[nodiscard]] std::shared_ptr<PIGroup> item(const QMimeData &data, const PhotoLibrary &library);
/// Those of the dragged photos that are in the folder, in its order.
[[nodiscard]] PIGroup::PhotoList photos(const QMimeData &data, const PIFolder &folder);
[[nodiscard]] Transfer transfer(const QDropEvent &event);
/// The local files among what is dragged.
[[nodiscard]] QStringList files(const QMimeData &data);

/// The addresses of the photos' files that are not missing, as other programs take them.
void addFiles(QMimeData &data, const PIGroup::PhotoList &photos);

}
