#include "DirectoryReader.h"
#include "OpenFile.h"
#include "Volumes.h"

#include <QDir>
#include <QHash>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/statfs.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

QByteArray realPath(const char *path)
{
    const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path, nullptr), &std::free);
    return QByteArray(real.get());
}

/// The name under which the device of a mount is listed by UUID; empty when it is not.
QByteArray listedUuid(const QByteArray &device)
{
    const QString folder = QStringLiteral("/dev/disk/by-uuid");
    const auto listing = readDirectory(folder);
    const QByteArray wanted = device.startsWith('/') && listing ? realPath(device.constData()) : QByteArray();
    if (wanted.isEmpty())
        return {};
    for (const DirectoryEntry &entry : listing->entries)
        if (realPath(QFile::encodeName(folder + u'/' + entry.name).constData()) == wanted)
            return QFile::encodeName(entry.name);
    return {};
}

/// What the kernel's ioctl for a file system's UUID fills in. The headers in use are older than it.
struct KernelUuid
{
    unsigned char length;
    unsigned char bytes[16];
};
constexpr unsigned long kGetUuid = _IOR(0x15, 0, KernelUuid);

/// In the form in which it would be listed; empty when the file system has none, or one of zeros.
QByteArray kernelUuid(int folder)
{
    KernelUuid uuid = {};
    if (::ioctl(folder, kGetUuid, &uuid) != 0 || uuid.length != sizeof uuid.bytes)
        return {};
    QByteArray text = QByteArray(reinterpret_cast<const char *>(uuid.bytes), sizeof uuid.bytes);
    if (text == QByteArray(sizeof uuid.bytes, '\0'))
        return {};
    text = text.toHex();
    for (const int at : {20, 16, 12, 8})
        text.insert(at, '-');
    return text;
}

/// The file system's own id; empty when it is zero, as where a program stands behind it.
QByteArray fileSystemId(int folder)
{
    struct statfs facts = {};
    quint64 id = 0;
    static_assert(sizeof id == sizeof facts.f_fsid);
    if (::fstatfs(folder, &facts) != 0)
        return {};
    std::memcpy(&id, &facts.f_fsid, sizeof id);
    return id == 0 ? QByteArray() : QByteArray::number(id, 16);
}

QByteArray sourceIdentity(const Mount &mount)
{
    return "source:" + mount.type + ':' + mount.source;
}

}

std::optional<QByteArray> identifyMount(const Mount &mount)
{
    if (mount.isNetwork())
        return sourceIdentity(mount);
    const FileDescriptor folder(::open(mount.point.constData(), O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC));
    const FileDescriptor place(::open(mount.point.constData(), O_PATH | O_CLOEXEC));
    // Something else may be mounted over it, or it may be a single file; neither is a place to look for files.
    const auto present = place.isValid() ? examineOpenFile(place.number()) : std::nullopt;
    if (!present || present->mountId != mount.id || present->identity.kind != FileKind::Folder)
        return {};
    QByteArray uuid = listedUuid(mount.source);
    if (uuid.isEmpty() && folder.isValid())
        uuid = kernelUuid(folder.number());
    if (!uuid.isEmpty())
        return "uuid:" + uuid.toLower();
    const QByteArray id = fileSystemId(place.number());
    return id.isEmpty() ? sourceIdentity(mount) : "fsid:" + id;
}
