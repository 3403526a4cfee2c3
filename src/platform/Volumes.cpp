#include "Volumes.h"

#include "NativePath.h"
#include "OpenFile.h"
#include "PosixSupport.h"

#include <QMutex>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>

namespace {

template<std::size_t N>
bool isOneOf(const QByteArray &text, const char *const (&list)[N])
{
    return std::any_of(std::begin(list), std::end(list), [&](const char *item) { return text == item; });
}

bool isLocalProgram(const QByteArray &type)
{
    static constexpr const char *kLocal[] = {"fuse.mergerfs", "fuse.encfs",   "fuse.gocryptfs", "fuse.cryfs",
                                             "fuse.bindfs",   "fuse.ntfs-3g", "fuse.exfat"};
    return isOneOf(type, kLocal);
}

bool isPseudo(const QByteArray &type)
{
    static constexpr const char *kPseudo[] = {
        "autofs",   "binfmt_misc", "bpf",        "cgroup",      "cgroup2",    "configfs",  "debugfs", "devpts",
        "devtmpfs", "efivarfs",    "fusectl",    "fuse.portal", "fuse.lxcfs", "hugetlbfs", "mqueue",  "nsfs",
        "proc",     "pstore",      "rpc_pipefs", "securityfs",  "selinuxfs",  "sysfs",     "tracefs", "swiotlb_fs"};
    return isOneOf(type, kPseudo);
}

}

bool Mount::isNetwork() const
{
    static constexpr const char *kNetwork[] = {"nfs", "nfs4", "cifs", "smb3",      "smbfs", "afs",
                                               "9p",  "ceph", "coda", "glusterfs", "lustre"};
    if (type == "fuse" || type.startsWith("fuse."))
        return !isLocalProgram(type);
    return isOneOf(type, kNetwork);
}

bool Mount::isSystem() const
{
    static constexpr const char *kPlaces[] = {"/boot", "/dev", "/proc", "/run", "/snap", "/sys", "/var/lib"};
    if (isPseudo(type) || type == "squashfs")
        return true;
    if (NativePath::isWithin(point, "/run/media"))
        return false;
    return std::any_of(std::begin(kPlaces), std::end(kPlaces),
                       [this](const char *place) { return NativePath::isWithin(point, place); });
}

std::optional<QByteArray> Mount::pathFor(const QByteArray &volumePath) const
{
    if (!NativePath::isWithin(volumePath, root))
        return {};
    return NativePath::rebased(volumePath, root, point);
}

QByteArray Mount::volumePathFor(const QByteArray &path) const
{
    return NativePath::rebased(path, point, root);
}

InodeTrust Volume::inodeTrust() const
{
    static constexpr const char *kStable[] = {"ext2", "ext3",     "ext4",   "xfs",   "f2fs",  "zfs",     "jfs",
                                              "nfs",  "reiserfs", "nilfs2", "tmpfs", "ntfs3", "hfsplus", "nfs4"};
    static constexpr const char *kShared[] = {"btrfs", "bcachefs"};
    if (isOneOf(mounts.first().type, kShared))
        return InodeTrust::Shared;
    return isOneOf(mounts.first().type, kStable) ? InodeTrust::Stable : InodeTrust::MadeUp;
}

bool Volume::isOnOtherDisk(const Mount &mount) const
{
    const QByteArray &own = mounts.first().device;
    return own != mount.device && !own.startsWith("0:") && !mount.device.startsWith("0:");
}

const Mount *Volume::mountFor(const QByteArray &volumePath, const QByteArray &preferredPoint) const
{
    const Mount *best = nullptr;
    for (const Mount &mount : mounts) {
        if (!NativePath::isWithin(volumePath, mount.root))
            continue;
        if (mount.point == preferredPoint)
            return &mount;
        if (!best || mount.root.size() < best->root.size())
            best = &mount;
    }
    return best;
}

const Mount *Volume::mountHolding(const QByteArray &path) const
{
    const Mount *nearest = nullptr;
    for (const Mount &mount : mounts)
        if (NativePath::isWithin(path, mount.point) && (!nearest || mount.point.size() > nearest->point.size()))
            nearest = &mount;
    return nearest;
}

QList<Mount> Volume::widestMounts() const
{
    QList<Mount> widest;
    for (const Mount &mount : mounts) {
        const auto covers = [&](const Mount &other) { return NativePath::isWithin(mount.root, other.root); };
        if (std::any_of(widest.cbegin(), widest.cend(), covers))
            continue;
        widest.removeIf([&](const Mount &other) { return NativePath::isWithin(other.root, mount.root); });
        widest.append(mount);
    }
    return widest;
}

namespace {

/// Undoes the kernel's "\040" for a space, and its like.
QByteArray unescaped(QByteArrayView text)
{
    QByteArray plain;
    plain.reserve(text.size());
    for (qsizetype at = 0; at < text.size(); ++at) {
        bool isNumber = false;
        const bool isEscape = text[at] == '\\' && at + 3 < text.size();
        const uint code = isEscape ? text.sliced(at + 1, 3).toByteArray().toUInt(&isNumber, 8) : 0;
        const bool isCharacter = isNumber && code > 0 && code < 256;
        plain.append(isCharacter ? static_cast<char>(code) : text[at]);
        at += isCharacter ? 3 : 0;
    }
    return plain;
}

/// "36 35 98:0 /root /point rw,noatime master:1 - ext4 /dev/sda1 rw": any number of fields stand before the dash.
std::optional<Mount> mountFromLine(const QByteArray &line)
{
    const QList<QByteArray> fields = line.split(' ');
    const qsizetype dash = fields.indexOf("-", 6);
    if (dash < 0 || dash + 2 >= fields.size())
        return {};
    bool idIsGood = false;
    Mount mount;
    mount.id = fields[0].toULongLong(&idIsGood);
    mount.parentId = fields[1].toULongLong();
    mount.device = fields[2];
    mount.root = unescaped(fields[3]);
    mount.point = unescaped(fields[4]);
    mount.type = unescaped(fields[dash + 1]);
    mount.source = unescaped(fields[dash + 2]);
    if (!idIsGood || !mount.root.startsWith('/') || !mount.point.startsWith('/'))
        return {};
    return mount;
}

}

Volumes::Volumes(const QByteArray &mountInfo, const Identify &identify)
{
    for (const QByteArray &line : mountInfo.split('\n')) {
        const auto mount = mountFromLine(line);
        if (mount)
            m_points.insert(mount->point, *mount); // the last one covers those before it
        if (!mount || isPseudo(mount->type))
            continue;
        const auto identity = identify(*mount);
        if (!identity)
            continue;
        const auto known = std::find_if(m_volumes.begin(), m_volumes.end(), [&](const Volume &volume) {
            return volume.identity == *identity && !volume.isOnOtherDisk(*mount);
        });
        if (known != m_volumes.end())
            known->mounts.append(*mount);
        else
            m_volumes.append({*identity, {*mount}});
    }
}

namespace {

/// The kernel's list of mounts, which tells by poll() whether it changed since it was last read.
class MountTable
{
public:
    std::shared_ptr<const Volumes> volumes()
    {
        const QMutexLocker lock(&m_mutex);
        if (!m_file.isValid())
            m_file = FileDescriptor(::open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC));
        if (!m_volumes || hasChanged())
            m_volumes = std::make_shared<const Volumes>(text(), identifyMount);
        return m_volumes;
    }

private:
    bool hasChanged()
    {
        pollfd question = {m_file.number(), POLLPRI, 0};
        return ::poll(&question, 1, 0) != 0;
    }

    QByteArray text()
    {
        QByteArray text;
        char piece[16 * 1024];
        ::lseek(m_file.number(), 0, SEEK_SET);
        for (;;) {
            const ssize_t got = Posix::retry([&] { return ::read(m_file.number(), piece, sizeof piece); });
            if (got <= 0)
                return text;
            text.append(piece, got);
        }
    }

    QMutex m_mutex;
    FileDescriptor m_file;
    std::shared_ptr<const Volumes> m_volumes;
};

}

std::shared_ptr<const Volumes> Volumes::current()
{
    static MountTable table;
    return table.volumes();
}

const Volume *Volumes::withIdentity(const QByteArray &identity, const QByteArray &preferredPoint) const
{
    const Volume *first = nullptr;
    for (const Volume &volume : m_volumes) {
        if (volume.identity != identity)
            continue;
        if (std::any_of(volume.mounts.cbegin(), volume.mounts.cend(),
                        [&](const Mount &mount) { return mount.point == preferredPoint; }))
            return &volume;
        first = first ? first : &volume;
    }
    return first;
}

Volumes::Place Volumes::withMountId(quint64 mountId) const
{
    for (const Volume &volume : m_volumes)
        for (const Mount &mount : volume.mounts)
            if (mount.id == mountId)
                return {&volume, &mount};
    return {};
}

const Mount *Volumes::mountAt(const QByteArray &path) const
{
    const auto mount = m_points.constFind(path);
    return mount == m_points.cend() ? nullptr : &*mount;
}

bool Volumes::isRemote(const QByteArray &path) const
{
    const Mount *mount = mountAt(path);
    for (QByteArray folder = path; !mount && folder.size() > 1;) {
        folder = NativePath::parent(folder);
        mount = mountAt(folder);
    }
    return mount && (mount->isNetwork() || mount->type == "autofs");
}
