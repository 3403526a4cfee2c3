#include "FileBookmark.h"

#include "BookmarkData.h"
#include "BookmarkResolver.h"
#include "BookmarkView.h"
#include "NativePath.h"
#include "OpenFile.h"
#include "PosixSupport.h"
#include "Volumes.h"

#include <fcntl.h>
#include <unistd.h>

#include <climits>

namespace {

/// For reading when that is allowed; else so that its facts can be asked for, which is always allowed.
FileDescriptor openForFacts(const QByteArray &path, bool *isReadable)
{
    FileDescriptor file(
        Posix::retry([&] { return ::open(path.constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC); }));
    *isReadable = file.isValid();
    if (!file.isValid())
        file = FileDescriptor(::open(path.constData(), O_PATH | O_CLOEXEC));
    return file;
}

/// The path of something open, free of links. Empty when it has none, as after it was deleted.
QByteArray pathOf(int descriptor)
{
    char path[PATH_MAX];
    const QByteArray link = "/proc/self/fd/" + QByteArray::number(descriptor);
    const ssize_t length = ::readlink(link.constData(), path, sizeof path);
    if (length <= 0 || length == static_cast<ssize_t>(sizeof path) || path[0] != '/')
        return {};
    return QByteArray(path, length);
}

/// Nothing when it is no file or folder, or stands where no volume is.
std::optional<BookmarkData> dataOf(int descriptor, const QByteArray &givenPath, const Volumes &volumes)
{
    const auto present = examineOpenFile(descriptor);
    const QByteArray path = pathOf(descriptor);
    const Volumes::Place place = present ? volumes.withMountId(present->mountId) : Volumes::Place{};
    if (!place.mount || path.isEmpty() || !NativePath::isWithin(path, place.mount->point))
        return {};
    BookmarkData data;
    data.file = present->identity;
    data.file.handle = readOpenHandle(descriptor);
    data.volume = place.volume->identity;
    data.volumePath = place.mount->volumePathFor(path);
    data.mountPoint = place.mount->point;
    if (path != givenPath)
        data.givenPath = givenPath;
    return data;
}

}

std::optional<QByteArray> FileBookmark::create(const QString &path, QString *reason)
{
    return create(path, *Volumes::current(), reason);
}

std::optional<QByteArray> FileBookmark::create(const QString &path, const Volumes &volumes, QString *reason)
{
    const QByteArray native = Posix::nativePath(path);
    bool isReadable = false;
    const FileDescriptor file = openForFacts(native, &isReadable);
    if (!native.startsWith('/') || !file.isValid()) {
        Posix::fail(reason, native.startsWith('/') ? errno : EINVAL);
        return {};
    }
    auto data = dataOf(file.number(), native, volumes);
    if (!data) {
        if (reason)
            *reason = QStringLiteral("It is neither a file nor a folder of a mounted volume");
        return {};
    }
    if (isReadable && data->file.kind == FileKind::File)
        data->fingerprint = readFingerprint(file.number(), data->file.size);
    return data->encode();
}

namespace {

enum class Holding { All, AllButNumber, No };

/// How much of the facts the bookmark holds.
Holding holdingOf(const FileIdentity &stored, const FileIdentity &present)
{
    const bool isReborn = stored.birth && present.birth && stored.birth != present.birth;
    if (isReborn || stored.kind != present.kind)
        return Holding::No;
    if (stored.kind == FileKind::File && (stored.size != present.size || stored.modified != present.modified))
        return Holding::No;
    return stored.inode == present.inode ? Holding::All : Holding::AllButNumber;
}

bool hasMadeUpNumbers(const BookmarkView &stored, const Volumes &volumes)
{
    const Volume *volume = volumes.withIdentity(stored.volume().toByteArray());
    return volume && volume->inodeTrust() == InodeTrust::MadeUp;
}

}

bool FileBookmark::isCurrent(const QByteArray &bookmark, const FileIdentity &present, const Volumes *volumes)
{
    const auto stored = BookmarkView::of(bookmark);
    const Holding holding = stored ? holdingOf(stored->file(), present) : Holding::No;
    if (holding != Holding::AllButNumber)
        return holding == Holding::All;
    return hasMadeUpNumbers(*stored, volumes ? *volumes : *Volumes::current());
}

bool FileBookmark::isOlderThan(const QByteArray &bookmark, const FileIdentity &present)
{
    const auto stored = BookmarkView::of(bookmark);
    return stored && stored->modified() < present.modified;
}

bool FileBookmark::isNewerThan(const QByteArray &bookmark, const FileIdentity &present)
{
    const auto stored = BookmarkView::of(bookmark);
    return stored && present.modified < stored->modified();
}

quint64 FileBookmark::fileSize(const QByteArray &bookmark)
{
    const auto stored = BookmarkView::of(bookmark);
    return stored ? stored->size() : 0;
}

bool FileBookmark::haveSameContent(const QByteArray &left, const QByteArray &right)
{
    const auto one = BookmarkView::of(left);
    const auto other = BookmarkView::of(right);
    return one && other && one->fingerprint() && one->size() == other->size() &&
           one->fingerprint() == other->fingerprint();
}

QString FileBookmark::mountPoint(const QByteArray &bookmark)
{
    const auto stored = BookmarkView::of(bookmark);
    return stored ? QString::fromUtf8(stored->mountPoint()) : QString();
}

BookmarkResolution FileBookmark::resolve(const QByteArray &bookmark, const BookmarkOptions &options)
{
    BookmarkResolution result;
    BookmarkOptions one = options;
    one.resolved = [&](const QList<BookmarkResolution> &resolved) { result = resolved.first(); };
    resolveMany({bookmark}, one);
    return result;
}

void FileBookmark::resolveMany(const QList<QByteArray> &bookmarks, const BookmarkOptions &options)
{
    BookmarkResolver(bookmarks, options).run();
}
