#pragma once

#include "FileIdentity.h"

#include <QByteArray>
#include <QHash>
#include <QList>

#include <functional>
#include <memory>
#include <optional>

/// One place where (a part of) a volume can be seen, from a line of /proc/self/mountinfo.
struct Mount
{
    quint64 id = 0;
    quint64 parentId = 0;
    QByteArray root;  ///< the folder of the volume that is seen at `point`: "/" for all of it
    QByteArray point; ///< where
    QByteArray type;  ///< of the file system
    QByteArray source;
    QByteArray device = {}; ///< its number; begins with "0:" where the kernel makes one up
    bool operator==(const Mount &) const = default;

    /// Reached over a network, or through a program that may be waiting for one. Looking at it may take forever.
    [[nodiscard]] bool isNetwork() const;
    /// Made up by the kernel (/proc), or part of the running system rather than a place for the user's files.
    [[nodiscard]] bool isSystem() const;

    /// Whether a path of the volume can be seen here, and what it then is.
    [[nodiscard]] std::optional<QByteArray> pathFor(const QByteArray &volumePath) const;
    /// The path of the volume that `path`, within `point`, leads to.
    [[nodiscard]] QByteArray volumePathFor(const QByteArray &path) const;
};

/// A file system that is mounted, in one place or several.
struct Volume
{
    /// The UUID of the file system, or the nearest to it that there is; the same after the next mount.
    QByteArray identity;
    QList<Mount> mounts; ///< never empty

    [[nodiscard]] bool isNetwork() const { return mounts.first().isNetwork(); }
    [[nodiscard]] InodeTrust inodeTrust() const;
    /// Whether the mount shows another disk, which may have the same identity when one was cloned.
    [[nodiscard]] bool isOnOtherDisk(const Mount &mount) const;
    /// The place where a path of the volume can be seen, that at `preferredPoint` if possible; null when none.
    [[nodiscard]] const Mount *mountFor(const QByteArray &volumePath, const QByteArray &preferredPoint) const;
    /// The place through which `path` leads; null when through none.
    [[nodiscard]] const Mount *mountHolding(const QByteArray &path) const;
    /// The mounts without those that show only part of what another shows.
    [[nodiscard]] QList<Mount> widestMounts() const;
};

/// What is mounted at one moment, pseudo file systems left out.
class Volumes
{
public:
    /// What is mounted now. Cheap: the list is read again only after the kernel told of a change. Any thread.
    [[nodiscard]] static std::shared_ptr<const Volumes> current();

    /// Tells a mount's volume; nothing when the mount cannot be reached by its path.
    using Identify = std::function<std::optional<QByteArray>(const Mount &)>;
    /// From text of the form of /proc/self/mountinfo; lines that make no sense are passed over.
    Volumes(const QByteArray &mountInfo, const Identify &identify);

    [[nodiscard]] const QList<Volume> &all() const { return m_volumes; }
    /// Null when that volume is not mounted. Of a disk and its clone, which have one identity, the one that is mounted
    /// at `preferredPoint`, else the first.
    [[nodiscard]] const Volume *withIdentity(const QByteArray &identity, const QByteArray &preferredPoint = {}) const;

    struct Place
    {
        const Volume *volume = nullptr;
        const Mount *mount = nullptr;
    };
    /// Both null for a mount that is not of a volume listed here.
    [[nodiscard]] Place withMountId(quint64 mountId) const;

    /// What is mounted right at this path, pseudo file systems included; null when nothing is. Does not touch the path.
    [[nodiscard]] const Mount *mountAt(const QByteArray &path) const;
    /// Whether a look at the path may take forever, as on a network or where something is mounted by being looked at.
    /// Told without such a look, so links are not seen through.
    [[nodiscard]] bool isRemote(const QByteArray &path) const;

private:
    QList<Volume> m_volumes;
    QHash<QByteArray, Mount> m_points;
};

/// Asks the system which volume a mount shows.
[[nodiscard]] std::optional<QByteArray> identifyMount(const Mount &mount);
