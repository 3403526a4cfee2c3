#include "FileIdentity.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <array>
#include <cstddef>
#include <cstring>

static_assert(kNoFolder == AT_FDCWD);

namespace {

FileTime timeFrom(const statx_timestamp &time)
{
    return {time.tv_sec, time.tv_nsec};
}

std::optional<PresentFile> examine(int folder, const char *name, int flags)
{
    struct statx facts = {};
    if (::statx(folder, name, flags | AT_NO_AUTOMOUNT, STATX_BASIC_STATS | STATX_BTIME | STATX_MNT_ID, &facts) != 0)
        return {};
    const bool isFolder = S_ISDIR(facts.stx_mode);
    if (!isFolder && !S_ISREG(facts.stx_mode))
        return {};
    std::optional<PresentFile> file(std::in_place);
    file->identity.kind = isFolder ? FileKind::Folder : FileKind::File;
    file->identity.inode = facts.stx_ino;
    if (facts.stx_mask & STATX_BTIME)
        file->identity.birth = timeFrom(facts.stx_btime);
    if (!isFolder) {
        file->identity.size = facts.stx_size;
        file->identity.modified = timeFrom(facts.stx_mtime);
    }
    file->device = makedev(facts.stx_dev_major, facts.stx_dev_minor);
    file->mountId = facts.stx_mnt_id;
    file->names = facts.stx_nlink;
    return file;
}

}

std::optional<PresentFile> examineFile(int folder, const char *name)
{
    // With an empty name some kernels answer for the folder itself.
    if (*name == '\0')
        return {};
    return examine(folder, name, AT_SYMLINK_NOFOLLOW);
}

std::optional<PresentFile> examineLinkedFile(const char *path)
{
    return examine(AT_FDCWD, path, 0);
}

std::optional<PresentFile> examineOpenFile(int descriptor)
{
    return examine(descriptor, "", AT_EMPTY_PATH);
}

namespace {

FileHandle handleOf(int folder, const char *name, int flags)
{
    alignas(file_handle) std::array<char, sizeof(file_handle) + MAX_HANDLE_SZ> room = {};
    auto *handle = reinterpret_cast<file_handle *>(room.data());
    handle->handle_bytes = MAX_HANDLE_SZ;
    int mountId = 0;
    if (::name_to_handle_at(folder, name, handle, &mountId, flags) != 0)
        return {};
    const char *bytes = room.data() + offsetof(file_handle, f_handle);
    return {handle->handle_type, std::string(bytes, handle->handle_bytes)};
}

}

FileHandle readHandle(int folder, const char *name)
{
    return handleOf(folder, name, 0);
}

FileHandle readOpenHandle(int descriptor)
{
    return handleOf(descriptor, "", AT_EMPTY_PATH);
}

namespace {

/// Where inode numbers are made up. Folders have no content to ask for.
Sameness compareWithoutInodes(const FileIdentity &stored, const FileIdentity &present)
{
    const bool bothBorn = stored.birth && present.birth;
    if (bothBorn && stored.birth != present.birth)
        return Sameness::Different;
    if (stored.kind == FileKind::File)
        return stored.size == present.size ? Sameness::AskContent : Sameness::Different;
    return bothBorn || stored.inode == present.inode ? Sameness::Same : Sameness::Different;
}

Sameness compareWithoutHandle(const FileIdentity &stored, const FileIdentity &present)
{
    if (stored.kind == FileKind::Folder)
        return Sameness::Same;
    return stored.size == present.size && stored.modified == present.modified ? Sameness::Same : Sameness::AskContent;
}

}

Sameness compareFiles(const FileIdentity &stored, const FileIdentity &present, InodeTrust trust)
{
    if (stored.kind != present.kind)
        return Sameness::Different;
    if (trust == InodeTrust::MadeUp)
        return compareWithoutInodes(stored, present);
    if (stored.inode != present.inode)
        return Sameness::Different;
    // A birth time to the nanosecond is as good as a generation, and comes with the facts at no further cost.
    const bool bothBorn = stored.birth && present.birth;
    if (bothBorn && stored.birth != present.birth)
        return Sameness::Different;
    if (bothBorn && trust == InodeTrust::Stable)
        return Sameness::Same;
    return stored.handle.bytes.empty() ? compareWithoutHandle(stored, present) : Sameness::AskHandle;
}

Sameness compareHandles(const FileIdentity &stored, const FileIdentity &present)
{
    if (stored.handle.bytes.empty() || present.handle.bytes.empty())
        return compareWithoutHandle(stored, present);
    return stored.handle == present.handle ? Sameness::Same : Sameness::Different;
}
