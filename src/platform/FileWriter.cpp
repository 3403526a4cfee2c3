#include "FileWriter.h"

#include "FileSystemCalls.h"
#include "OpenFile.h"
#include "PosixSupport.h"

#include <QRandomGenerator>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace FileWriter {

namespace {

/// A file being written. Every step answers false with errno set when it fails.
class OutputFile
{
public:
    OutputFile(const QByteArray &path, int flags, mode_t mode)
        : m_number(Posix::retry([&] {
            return ::open(path.constData(), O_WRONLY | O_CREAT | O_NONBLOCK | O_NOCTTY | O_CLOEXEC | flags, mode);
        }))
    {}
    OutputFile(const OutputFile &) = delete;
    OutputFile &operator=(const OutputFile &) = delete;
    ~OutputFile() { (void)close(); }

    [[nodiscard]] bool isOpen() const { return m_number >= 0; }
    [[nodiscard]] bool isRegular() const
    {
        struct stat status = {};
        if (::fstat(m_number, &status) != 0)
            return false;
        errno = EINVAL;
        return S_ISREG(status.st_mode);
    }
    [[nodiscard]] bool setMode(mode_t mode) const { return ::fchmod(m_number, mode) == 0; }

    [[nodiscard]] bool write(QByteArrayView bytes) const
    {
        while (!bytes.isEmpty()) {
            const ssize_t count = Posix::retry(
                [&] { return fileSystemCalls().write(m_number, bytes.data(), static_cast<size_t>(bytes.size())); });
            if (count == 0)
                errno = EIO;
            if (count <= 0)
                return false;
            bytes = bytes.sliced(count);
        }
        return true;
    }
    [[nodiscard]] bool sync() const
    {
        return Posix::retry([&] { return fileSystemCalls().fsync(m_number); }) == 0;
    }
    /// Not to be called again after a failure: the number is free by then and may be another file's.
    [[nodiscard]] bool close()
    {
        const int number = std::exchange(m_number, -1);
        return number < 0 || fileSystemCalls().close(number) == 0 || errno == EINTR;
    }

private:
    int m_number = -1;
};

bool finish(OutputFile &file, Flush flush)
{
    return (flush == Flush::No || file.sync()) && file.close();
}

/// Makes the folder's own record of its names durable. File systems that know nothing of that answer EINVAL.
bool syncFolderOf(const QByteArray &path)
{
    const QByteArray folder = Posix::parentFolder(path);
    const FileDescriptor opened(
        Posix::retry([&] { return ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    if (!opened.isValid())
        return false;
    return Posix::retry([&] { return fileSystemCalls().fsync(opened.number()); }) == 0 || errno == EINVAL;
}

}

bool write(const QString &path, QByteArrayView bytes, Flush flush, QString *reason, std::optional<mode_t> mode)
{
    const QByteArray native = Posix::nativePath(path);
    OutputFile file(native, O_TRUNC, mode.value_or(0666));
    if (!file.isOpen() || !file.isRegular() || (mode && !file.setMode(*mode)) || !file.write(bytes) ||
        !finish(file, flush))
        return Posix::fail(reason, errno);
    if (flush == Flush::ToDisk && !syncFolderOf(native))
        return Posix::fail(reason, errno);
    return true;
}

namespace {

QByteArray temporaryNameBeside(const QByteArray &target)
{
    const quint64 number = QRandomGenerator::system()->generate64();
    return Posix::parentFolder(target) + "/.tamsel-" + QByteArray::number(number, 16) + ".tmp";
}

/// A new file under a name of its own beside `target`, removed again unless it is renamed away.
class TemporaryFile
{
public:
    explicit TemporaryFile(const QByteArray &target)
    {
        for (int attempt = 0; attempt < 16 && !isOpen(); ++attempt) {
            m_path = temporaryNameBeside(target);
            m_file = std::make_unique<OutputFile>(m_path, O_EXCL | O_NOFOLLOW, mode_t(0666));
            if (!isOpen() && errno != EEXIST)
                return;
        }
    }
    TemporaryFile(const TemporaryFile &) = delete;
    TemporaryFile &operator=(const TemporaryFile &) = delete;
    ~TemporaryFile()
    {
        if (!isOpen() && !m_written)
            return;
        const int error = errno;
        ::unlink(m_path.constData());
        errno = error;
    }

    [[nodiscard]] bool write(QByteArrayView bytes, std::optional<mode_t> mode, Flush flush)
    {
        if (!isOpen() || (mode && !m_file->setMode(*mode)) || !m_file->write(bytes))
            return false;
        m_written = true;
        return finish(*m_file, flush);
    }
    [[nodiscard]] bool moveTo(const QByteArray &target)
    {
        if (fileSystemCalls().rename(m_path.constData(), target.constData()) != 0)
            return false;
        m_written = false;
        return true;
    }

private:
    [[nodiscard]] bool isOpen() const { return m_file && m_file->isOpen(); }

    QByteArray m_path;
    std::unique_ptr<OutputFile> m_file;
    bool m_written = false;
};

/// Where a link leads, so that replacing the file leaves the link in place; otherwise the path itself.
QByteArray withoutLinks(const QByteArray &path)
{
    const std::unique_ptr<char, decltype(&std::free)> resolved(::realpath(path.constData(), nullptr), std::free);
    return resolved ? QByteArray(resolved.get()) : path;
}

}

std::optional<mode_t> modeOf(const QString &path)
{
    struct stat status = {};
    if (::stat(Posix::nativePath(path).constData(), &status) != 0)
        return {};
    return status.st_mode & 07777U;
}

bool replace(const QString &path, QByteArrayView bytes, Flush flush, QString *reason,
             const std::function<bool()> &mayReplace)
{
    const QByteArray target = withoutLinks(Posix::nativePath(path));
    if (target.isEmpty())
        return Posix::fail(reason, ENOENT);
    const std::optional<mode_t> mode = modeOf(path);
    TemporaryFile file(target);
    if (!file.write(bytes, mode, flush))
        return Posix::fail(reason, errno);
    if (mayReplace && !mayReplace())
        return Posix::fail(reason, ECANCELED);
    if (!file.moveTo(target))
        return Posix::fail(reason, errno);
    if (flush == Flush::ToDisk && !syncFolderOf(target))
        return Posix::fail(reason, errno);
    return true;
}

namespace {

/// What both paths lead to, when that is one and the same; links not followed.
std::optional<struct stat> factsOfSame(const QByteArray &from, const QByteArray &to)
{
    struct stat a = {};
    struct stat b = {};
    const bool isSame = ::lstat(from.constData(), &a) == 0 && ::lstat(to.constData(), &b) == 0 &&
                        a.st_dev == b.st_dev && a.st_ino == b.st_ino;
    return isSame ? std::optional(a) : std::nullopt;
}

/// The two paths are two spellings of one name, as on file systems that do not tell upper from lower case.
bool nameOneEntry(const QByteArray &from, const QByteArray &to)
{
    const auto same = factsOfSame(from, to);
    return same && (S_ISDIR(same->st_mode) || same->st_nlink == 1);
}

bool areTwoNamesOfOneFile(const QByteArray &from, const QByteArray &to)
{
    const auto same = from != to ? factsOfSame(from, to) : std::nullopt;
    return same && S_ISREG(same->st_mode) && same->st_nlink > 1;
}

bool copyContent(int source, OutputFile &target)
{
    std::vector<char> buffer(std::size_t(256) * 1024);
    for (;;) {
        const ssize_t count = Posix::retry([&] { return ::read(source, buffer.data(), buffer.size()); });
        if (count < 0 || (count > 0 && !target.write(QByteArrayView(buffer.data(), count))))
            return false;
        if (count == 0)
            return finish(target, Flush::ToDisk);
    }
}

/// Whether the path still leads to the file that was opened, and nobody wrote to it since.
bool isUnchanged(const QByteArray &path, const struct stat &opened)
{
    struct stat now = {};
    const bool isSame = ::lstat(path.constData(), &now) == 0 && now.st_dev == opened.st_dev &&
                        now.st_ino == opened.st_ino && now.st_size == opened.st_size &&
                        now.st_mtim.tv_sec == opened.st_mtim.tv_sec && now.st_mtim.tv_nsec == opened.st_mtim.tv_nsec;
    if (!isSame)
        errno = EBUSY;
    return isSame;
}

/// A server that is asked again for what it has done already says that there is no such name.
bool removeName(const QByteArray &path)
{
    return fileSystemCalls().unlink(path.constData()) == 0 || errno == ENOENT;
}

/// For file systems without links: a copy takes the name, which must be free, and then the file goes. To rename over a
/// name that was taken with an empty file would replace what somebody else brought there meanwhile; this never does.
int moveByCopy(const QByteArray &from, const QByteArray &to)
{
    const FileDescriptor source(
        Posix::retry([&] { return ::open(from.constData(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK); }));
    struct stat status = {};
    if (!source.isValid() || ::fstat(source.number(), &status) != 0)
        return errno;
    if (!S_ISREG(status.st_mode))
        return EINVAL;
    OutputFile target(to, O_EXCL | O_NOFOLLOW, status.st_mode & 0777U);
    if (!target.isOpen())
        return errno;
    const timespec times[2] = {status.st_atim, status.st_mtim};
    const bool isCopied = target.setMode(status.st_mode & 0777U) && copyContent(source.number(), target) &&
                          ::utimensat(AT_FDCWD, to.constData(), times, AT_SYMLINK_NOFOLLOW) == 0 && syncFolderOf(to) &&
                          isUnchanged(from, status);
    if (isCopied && removeName(from))
        return 0;
    const int error = errno;
    if (!isCopied || isUnchanged(from, status))
        ::unlink(to.constData());
    return error;
}

/// Takes the former name from a file that has two. What another program put in its place meanwhile stays, and so does
/// then the file under its new name: nobody but the user knows which of the two is the right one.
int leaveName(const QByteArray &from, const QByteArray &to)
{
    struct stat former = {};
    if (::lstat(from.constData(), &former) != 0 && errno == ENOENT)
        return 0;
    if (!factsOfSame(from, to))
        return EBUSY;
    if (removeName(from))
        return 0;
    const int error = errno;
    if (factsOfSame(from, to))
        ::unlink(to.constData());
    return error;
}

int renameByLink(const QByteArray &from, const QByteArray &to, WithoutLinks withoutLinks)
{
    if (fileSystemCalls().link(from.constData(), to.constData()) != 0) {
        const bool hasNoLinks = errno == EPERM || errno == EOPNOTSUPP || errno == ENOSYS;
        if (!hasNoLinks)
            return errno;
        return withoutLinks == WithoutLinks::Copy ? moveByCopy(from, to) : EOPNOTSUPP;
    }
    return leaveName(from, to);
}

}

bool renameNoReplace(const QString &from, const QString &to, QString *reason, WithoutLinks withoutLinks)
{
    const QByteArray source = Posix::nativePath(from);
    const QByteArray target = Posix::nativePath(to);
    if (fileSystemCalls().renameNoReplace(source.constData(), target.constData()) == 0)
        return true;
    int error = errno;
    if (error == EEXIST && nameOneEntry(source, target))
        return renameOver(from, to, reason);
    if (error == EINVAL || error == ENOSYS)
        error = renameByLink(source, target, withoutLinks);
    return error == 0 || Posix::fail(reason, error);
}

bool renameOver(const QString &from, const QString &to, QString *reason)
{
    const QByteArray source = Posix::nativePath(from);
    const QByteArray target = Posix::nativePath(to);
    // Of two names of one file the kernel would keep both and tell of success.
    if (areTwoNamesOfOneFile(source, target))
        return ::unlink(source.constData()) == 0 || Posix::fail(reason, errno);
    if (fileSystemCalls().rename(source.constData(), target.constData()) != 0)
        return Posix::fail(reason, errno);
    return true;
}

bool linkOver(const QString &from, const QString &to, QString *reason)
{
    const QByteArray target = Posix::nativePath(to);
    const QByteArray link = temporaryNameBeside(target);
    if (fileSystemCalls().link(Posix::nativePath(from).constData(), link.constData()) != 0)
        return Posix::fail(reason, errno);
    const bool renamed = fileSystemCalls().rename(link.constData(), target.constData()) == 0;
    const int error = errno;
    ::unlink(link.constData()); // it is still there also when both were names of one file already
    return renamed || Posix::fail(reason, error);
}

bool syncFolder(const QString &path, QString *reason)
{
    return syncFolderOf(Posix::nativePath(path)) || Posix::fail(reason, errno);
}

bool copyNoReplace(const QString &from, const QString &to, QString *reason)
{
    const auto source = openRegularFile(from, reason);
    if (!source)
        return false;
    const QByteArray target = Posix::nativePath(to);
    const mode_t mode = modeOf(from).value_or(0600) & 0777U;
    OutputFile file(target, O_EXCL | O_NOFOLLOW, mode);
    if (!file.isOpen())
        return Posix::fail(reason, errno);
    if (copyContent(source->descriptor.number(), file) && syncFolderOf(target))
        return true;
    const int error = errno;
    ::unlink(target.constData());
    return Posix::fail(reason, error);
}

}
