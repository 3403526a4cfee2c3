#include "FileSystemCalls.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

FileSystemCalls &fileSystemCalls()
{
    static FileSystemCalls calls = {
        ::write,
        ::fsync,
        ::close,
        ::rename,
        [](const char *from, const char *to) { return ::renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE); },
        ::link,
        ::unlink,
    };
    return calls;
}
