#pragma once

#include <sys/types.h>

#include <cstddef>

/// The calls through which FileWriter changes the disk. Tests put failing ones in their place; nobody else does.
struct FileSystemCalls
{
    ssize_t (*write)(int descriptor, const void *bytes, std::size_t count);
    int (*fsync)(int descriptor);
    int (*close)(int descriptor);
    int (*rename)(const char *from, const char *to);
    /// Fails with EEXIST when something stands at the target, with EINVAL where the file system cannot promise that.
    int (*renameNoReplace)(const char *from, const char *to);
    int (*link)(const char *from, const char *to);
    int (*unlink)(const char *path);
};

[[nodiscard]] FileSystemCalls &fileSystemCalls();
