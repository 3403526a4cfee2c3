#include "DirectoryWalk.h"

#include "NativePath.h"
#include "OpenFile.h"
#include "PosixSupport.h"
#include "Volumes.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <cstring>

DirectoryWalk::DirectoryWalk(Visitor visitor, Limits limits)
    : m_visitor(std::move(visitor))
    , m_limits(std::move(limits))
    , m_volumes(m_limits.volumes ? m_limits.volumes : Volumes::current())
    , m_room(128 * 1024)
{}

DirectoryWalk::End DirectoryWalk::readFolder(const QByteArray &path)
{
    Names subfolders;
    const End end = visitFolder({path, {}}, subfolders);
    if (!subfolders.empty())
        m_readAlone.insert(m_current, std::move(subfolders));
    return end;
}

DirectoryWalk::End DirectoryWalk::walk(const QByteArray &path)
{
    m_pending.insert(m_pending.begin(), {path, {}});
    while (!m_pending.empty()) {
        const Pending pending = std::move(m_pending.back());
        m_pending.pop_back();
        Names subfolders;
        const End end = visitFolder(pending, subfolders);
        const Names earlier = m_readAlone.take(m_current);
        for (const Names *names : {&earlier, &std::as_const(subfolders)})
            for (const QByteArray &name : *names)
                m_pending.push_back({NativePath::join(pending.path, name), m_current.first});
        if (end != End::Complete)
            return end;
    }
    return End::Complete;
}

bool DirectoryWalk::isCutShort()
{
    m_cutShort = m_cutShort || m_limits.stop.stop_requested() || m_walked.size() >= m_limits.maxFolders ||
                 std::chrono::steady_clock::now() >= m_limits.deadline;
    return m_cutShort;
}

/// Whether something is mounted at the folder that is not walked. To open it may mount yet another, or take forever.
bool DirectoryWalk::isBarred(const QByteArray &path) const
{
    const Mount *mount = m_volumes->mountAt(path);
    return mount && (m_limits.borders == Borders::Kept || mount->isSystem());
}

/// Whether a folder of another file system than the one above it is walked.
bool DirectoryWalk::mayEnter(int folder) const
{
    if (m_limits.borders == Borders::Kept)
        return false;
    const auto volumes = Volumes::current(); // it may have been mounted a moment ago
    const auto present = examineOpenFile(folder);
    const Mount *mount = present ? volumes->withMountId(present->mountId).mount : nullptr;
    return mount && !mount->isSystem();
}

void DirectoryWalk::noteUnreadable(const QByteArray &path, int error)
{
    ++m_unreadableFolders;
    QString reason;
    if (m_limits.unreadable && !Posix::fail(&reason, error))
        m_limits.unreadable(path, reason);
}

/// Leaves the folder's key in m_current, also when it has been read before.
DirectoryWalk::End DirectoryWalk::visitFolder(const Pending &pending, Names &subfolders)
{
    m_current = {};
    if (isCutShort())
        return End::CutShort;
    if (pending.device && isBarred(pending.path))
        return End::Complete;
    const FileDescriptor descriptor(Posix::retry([&] {
        return ::open(pending.path.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    }));
    struct stat status = {};
    if (!descriptor.isValid() || ::fstat(descriptor.number(), &status) != 0) {
        noteUnreadable(pending.path, errno);
        return End::Complete;
    }
    if (pending.device.value_or(status.st_dev) != status.st_dev && !mayEnter(descriptor.number()))
        return End::Complete;
    m_current = {status.st_dev, status.st_ino};
    if (m_walked.contains(m_current))
        return End::Complete;
    m_walked.insert(m_current);
    ++m_foldersRead;
    return readOpenFolder({pending.path, descriptor.number(), status.st_dev}, subfolders);
}

DirectoryWalk::End DirectoryWalk::readOpenFolder(const Folder &folder, Names &subfolders)
{
    End end = End::Complete;
    for (;;) {
        const ssize_t got = ::getdents64(folder.descriptor, m_room.data(), m_room.size());
        if (got < 0)
            noteUnreadable(folder.path, errno);
        if (got <= 0)
            return end;
        if (visitPiece(folder, {m_room.data(), static_cast<std::size_t>(got)}, subfolders) == Visit::Stop)
            end = End::Stopped;
        if (isCutShort())
            return End::CutShort;
    }
}

DirectoryWalk::Visit DirectoryWalk::visitPiece(const Folder &folder, std::span<const char> piece, Names &subfolders)
{
    m_entries.clear();
    collect(folder, piece, subfolders);
    m_entriesSeen += static_cast<qsizetype>(m_entries.size());
    return m_visitor(folder, m_entries);
}

namespace {

EntryType typeFromMode(mode_t mode)
{
    if (S_ISREG(mode))
        return EntryType::File;
    if (S_ISDIR(mode))
        return EntryType::Folder;
    return S_ISLNK(mode) ? EntryType::Link : EntryType::Other;
}

EntryType typeOf(unsigned char reported, int folder, const char *name)
{
    if (reported != DT_UNKNOWN)
        return typeFromMode(static_cast<mode_t>(DTTOIF(reported)));
    struct stat status = {};
    if (::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) != 0)
        return EntryType::Other;
    return typeFromMode(status.st_mode);
}

bool isSelfOrParent(const char *name)
{
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

}

void DirectoryWalk::collect(const Folder &folder, std::span<const char> piece, Names &subfolders)
{
    for (std::size_t at = 0; at < piece.size();) {
        const auto *record = reinterpret_cast<const dirent64 *>(piece.data() + at);
        at += record->d_reclen;
        if (isSelfOrParent(record->d_name))
            continue;
        const EntryType type = typeOf(record->d_type, folder.descriptor, record->d_name);
        m_entries.push_back({record->d_name, record->d_ino, type});
        if (type == EntryType::Folder)
            subfolders.emplace_back(record->d_name);
    }
}
