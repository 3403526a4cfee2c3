#pragma once

#include <QtGlobal>

#include <compare>
#include <optional>
#include <string>

/// A moment as the kernel tells it, since 1970-01-01 UTC.
struct FileTime
{
    qint64 seconds = 0;
    quint32 nanoseconds = 0;
    auto operator<=>(const FileTime &) const = default;
};

enum class FileKind : quint8 { File = 1, Folder = 2 };

/// The kernel's own name for a file inside its volume. Where the file system makes one it carries a generation, so that
/// a later file with the same inode number has another handle. Only ever compared: opening by handle needs privileges.
struct FileHandle
{
    qint32 type = 0;
    std::string bytes; ///< empty: the file system makes no handles. The usual ones fit in without further memory

    bool operator==(const FileHandle &) const = default;
};

/// What tells one file or folder of a volume from every other that stands or stood there.
struct FileIdentity
{
    FileKind kind = FileKind::File;
    quint64 inode = 0;
    FileHandle handle;
    std::optional<FileTime> birth; ///< nothing where the file system keeps none
    quint64 size = 0;              ///< 0 for a folder
    FileTime modified;             ///< zero for a folder, whose date changes with every file in it
    bool operator==(const FileIdentity &) const = default;
};

/// A file or folder that exists now, and on what it stands.
struct PresentFile
{
    FileIdentity identity; ///< without the handle, which costs a call of its own: see readHandle()
    quint64 device = 0;
    quint64 mountId = 0; ///< as in /proc/self/mountinfo
    quint32 names = 1;   ///< how many hard links it has
};

/// Looks at `name` inside the open folder, or at a whole path with `kNoFolder`, without opening it and without
/// following a link at its end. Nothing unless a regular file or a folder stands there.
[[nodiscard]] std::optional<PresentFile> examineFile(int folder, const char *name);
/// The same for a whole path, links followed: what a program finds that opens it.
[[nodiscard]] std::optional<PresentFile> examineLinkedFile(const char *path);
/// The same for something already open.
[[nodiscard]] std::optional<PresentFile> examineOpenFile(int descriptor);
inline constexpr int kNoFolder = -100; // what the kernel calls AT_FDCWD

/// An empty handle where the file system makes none.
[[nodiscard]] FileHandle readHandle(int folder, const char *name);
[[nodiscard]] FileHandle readOpenHandle(int descriptor);

/// Whether a volume's inode numbers are its own. Some file systems make them up as they go, and other ones after the
/// next mount: there an inode number is a hint and neither proves nor disproves anything. Where snapshots are kept, a
/// file and its snapshots share number and time of birth, and only their handles differ.
enum class InodeTrust { Stable, Shared, MadeUp };

/// Whether a present file is the stored one, as far as the facts at hand can tell.
enum class Sameness {
    Same,
    Different,
    AskHandle,  ///< the same when the present handle equals the stored one
    AskContent, ///< the same when the content is
};

/// Compares within one volume, without regard to the handles.
[[nodiscard]] Sameness compareFiles(const FileIdentity &stored, const FileIdentity &present, InodeTrust trust);
/// Compares after both handles are known.
[[nodiscard]] Sameness compareHandles(const FileIdentity &stored, const FileIdentity &present);
