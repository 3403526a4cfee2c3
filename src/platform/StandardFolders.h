#pragma once

#include <QString>

#include <optional>

/// Well-known folders of the user, by the codes that the toolkit's folder look-up uses.
enum class StandardFolder { Caches = 13, ApplicationSupport = 14, Trash = 102 };

/// Where the desktop's base-directory rules put the folder; it may not exist yet. A variable that holds a relative
/// path is ignored, as those rules demand. Nothing when there is no home folder.
[[nodiscard]] std::optional<QString> standardFolderPath(StandardFolder folder);

/// The user's home folder: $HOME when that is an absolute path, else what the user database tells.
[[nodiscard]] std::optional<QString> homeFolder();

/// The folder that a base-directory variable such as "XDG_CONFIG_HOME" names, else `belowHome` in the home folder.
[[nodiscard]] std::optional<QString> baseFolder(const char *variable, const QString &belowHome);

/// Reverse domain name of this application; names its cache folder and its desktop entry.
inline constexpr char kBundleIdentifier[] = "com.harrowmere.TamselPhoto";

/// This application's own folder in the user's cache; it may not exist yet.
[[nodiscard]] std::optional<QString> applicationCacheFolder();
