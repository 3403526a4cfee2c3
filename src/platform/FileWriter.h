#pragma once

#include <QByteArrayView>
#include <QString>

#include <sys/types.h>

#include <functional>
#include <optional>

/// Writing files of which none may be lost. Every call is checked, and success means that the bytes are on disk.
/// All answer false on failure and then tell why through `reason`, when given.
namespace FileWriter {

enum class Flush {
    ToDisk, ///< file and folder are synced before success is reported
    No,     ///< for files that can be made again, such as thumbnails
};

/// Creates or truncates the file and writes the bytes in place. `mode` is given to the file before the first byte.
[[nodiscard]] bool write(const QString &path, QByteArrayView bytes, Flush flush, QString *reason = nullptr,
                         std::optional<mode_t> mode = {});
/// Writes beside the path under a temporary name and renames it there when complete: the path holds either the old
/// file or the whole new one, never a part. `mayReplace` is asked when all is written, right before the renaming; where
/// it says no the old file stays.
[[nodiscard]] bool replace(const QString &path, QByteArrayView bytes, Flush flush, QString *reason = nullptr,
                           const std::function<bool()> &mayReplace = {});
/// What renameNoReplace() does where the file system can neither promise to replace nothing nor link.
enum class WithoutLinks {
    Copy,  ///< a regular file is copied under the new name and then removed: it is another file then
    Refuse ///< for files that are not ours
};
/// Renames, and refuses when something stands at the target, also when it comes there at the last moment.
[[nodiscard]] bool renameNoReplace(const QString &from, const QString &to, QString *reason = nullptr,
                                   WithoutLinks withoutLinks = WithoutLinks::Copy);
/// Renames over whatever file stands at the target.
[[nodiscard]] bool renameOver(const QString &from, const QString &to, QString *reason = nullptr);
/// Gives a file a second name, over whatever file stands there; fails where the file system has no such links.
[[nodiscard]] bool linkOver(const QString &from, const QString &to, QString *reason = nullptr);
/// The permissions of what stands at the path; nothing when nothing does.
[[nodiscard]] std::optional<mode_t> modeOf(const QString &path);
/// Makes renamings in the folder of `path` durable.
[[nodiscard]] bool syncFolder(const QString &path, QString *reason = nullptr);
/// Copies a regular file to a path where nothing may stand yet, flushed to disk.
[[nodiscard]] bool copyNoReplace(const QString &from, const QString &to, QString *reason = nullptr);

}
