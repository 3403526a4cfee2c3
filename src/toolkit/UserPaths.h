#pragma once

#include "StandardFolders.h"

#include <QString>

#include <optional>

/// The user's home folder, asked of the system once.
[[nodiscard]] QString HomeFolderPath();

/// What stands before the path of a file on the start-up disk when it is seen among the volumes. No such view exists
/// here, so this prefix never matches a path.
[[nodiscard]] QString RootPath();

/// The folder's path; made with missing parents when it does not exist. Nothing when it is unknown or cannot be made.
[[nodiscard]] std::optional<QString> PathForUserFolder(StandardFolder folder);
