#include "DirectoryReader.h"

#include "PosixSupport.h"

#include <QStringDecoder>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <cstring>
#include <memory>

namespace {

struct FolderCloser
{
    void operator()(DIR *folder) const { ::closedir(folder); }
};
using OpenFolder = std::unique_ptr<DIR, FolderCloser>;

EntryType typeFromMode(mode_t mode)
{
    if (S_ISREG(mode))
        return EntryType::File;
    if (S_ISDIR(mode))
        return EntryType::Folder;
    return S_ISLNK(mode) ? EntryType::Link : EntryType::Other;
}

EntryType typeOf(const dirent &entry, int folder)
{
    if (entry.d_type != DT_UNKNOWN)
        return typeFromMode(static_cast<mode_t>(DTTOIF(entry.d_type)));
    struct stat status = {};
    if (::fstatat(folder, entry.d_name, &status, AT_SYMLINK_NOFOLLOW) != 0)
        return EntryType::Other;
    return typeFromMode(status.st_mode);
}

/// Strict, and without dropping a byte-order mark, which may well begin a name.
std::optional<QString> decodedName(const char *name)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::ConvertInitialBom);
    QString text = decoder(QByteArrayView(name));
    // A sequence that the name's end cuts short is no error to the decoder, which waits for the rest; encoding tells.
    if (decoder.hasError() || text.toUtf8() != name)
        return {};
    return text;
}

bool isSelfOrParent(const char *name)
{
    return std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0;
}

}

std::optional<DirectoryListing> readDirectory(const QString &path, QString *reason)
{
    OpenFolder folder(::opendir(Posix::nativePath(path).constData()));
    if (!folder) {
        Posix::fail(reason, errno);
        return {};
    }
    DirectoryListing listing;
    for (errno = 0; const dirent *entry = ::readdir(folder.get()); errno = 0) {
        if (isSelfOrParent(entry->d_name))
            continue;
        if (auto name = decodedName(entry->d_name))
            listing.entries.append({*std::move(name), typeOf(*entry, ::dirfd(folder.get())), entry->d_ino});
        else
            ++listing.undecodableNames;
    }
    if (errno != 0) {
        Posix::fail(reason, errno);
        return {};
    }
    return listing;
}

std::optional<EntryType> entryTypeAt(const QString &path)
{
    struct stat status = {};
    if (::stat(Posix::nativePath(path).constData(), &status) != 0)
        return {};
    return typeFromMode(status.st_mode);
}
