#include "BookmarkService.h"

#include "FileBookmark.h"

std::optional<QByteArray> FileBookmarkService::create(const QString &path, QString &reason)
{
    return FileBookmark::create(path, &reason);
}

bool FileBookmarkService::isCurrent(const QByteArray &bookmark, const struct stat &facts)
{
    return FileBookmark::isCurrent(bookmark, facts);
}

BookmarkResolution FileBookmarkService::resolve(const QByteArray &bookmark, const BookmarkOptions &options)
{
    return FileBookmark::resolve(bookmark, options);
}
