#include "BookmarkService.h"

#include "FileBookmark.h"
#include "ImageFormat.h"

#include <utility>

FileBookmarkService::FileBookmarkService(std::shared_ptr<const Volumes> volumes)
    : m_volumes(std::move(volumes))
{}

std::optional<QByteArray> FileBookmarkService::create(const QString &path, QString &reason)
{
    return m_volumes ? FileBookmark::create(path, *m_volumes, &reason) : FileBookmark::create(path, &reason);
}

bool FileBookmarkService::isCurrent(const QByteArray &bookmark, const FileIdentity &present, const Volumes *volumes)
{
    return FileBookmark::isCurrent(bookmark, present, volumes ? volumes : m_volumes.get());
}

BookmarkResolution FileBookmarkService::resolve(const QByteArray &bookmark, const BookmarkOptions &options)
{
    BookmarkOptions wanted = forPictures(options);
    if (!wanted.volumes)
        wanted.volumes = m_volumes;
    return FileBookmark::resolve(bookmark, wanted);
}

BookmarkOptions forPictures(BookmarkOptions options)
{
    static const QSet<QByteArray> extensions = [] {
        QSet<QByteArray> set;
        for (const QString &extension : readableImageExtensions())
            set.insert(extension.toUtf8());
        return set;
    }();
    options.copyExtensions = extensions;
    return options;
}
