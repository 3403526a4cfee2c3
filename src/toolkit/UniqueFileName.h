#pragma once

#include <QString>

/// A file name, not a path, that does not yet exist in `folder`: `name` without "/" and ":" ("untitled" when nothing
/// is left), else with "-1" to "-99" behind it, else a new GUID. With an extension, dots leave the name, and "zip"
/// swallows the name's own extension ("album.tar" gives "album.tar.zip").
[[nodiscard]] QString UniqueFileName(const QString &folder, const QString &name, const QString &extension = {});
