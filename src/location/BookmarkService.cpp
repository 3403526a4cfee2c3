#include "BookmarkService.h"

#include "FileBookmark.h"
#include "ImageFormat.h"

std::optional<QByteArray> FileBookmarkService::create(const QString &path, QString &reason)
{
    return FileBookmark::create(path, &reason);
}

bool FileBookmarkService::isCurrent(const QByteArray &bookmark, const FileIdentity &present, const Volumes *volumes)
{
    return FileBookmark::isCurrent(bookmark, present, volumes);
}

BookmarkResolution FileBookmarkService::resolve(const QByteArray &bookmark, const BookmarkOptions &options)
{
    return FileBookmark::resolve(bookmark, forPictures(options));
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
