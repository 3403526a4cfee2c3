#pragma once

#include "BookmarkResolution.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

class Volumes;
struct FileIdentity;

/// What locators ask of bookmarks, so that tests can answer in their place.
class BookmarkService
{
public:
    virtual ~BookmarkService() = default;

    /// A bookmark of what stands at the path; nothing on failure, and then `reason` tells why.
    [[nodiscard]] virtual std::optional<QByteArray> create(const QString &path, QString &reason) = 0;
    /// Whether the bookmark holds these facts of a file. Asks nothing of the system but what is mounted, and that only
    /// if need be and unless `volumes` are given. False for what is no bookmark.
    [[nodiscard]] virtual bool isCurrent(const QByteArray &bookmark, const FileIdentity &present,
                                         const Volumes *volumes) = 0;
    /// Finds one file; may take long.
    [[nodiscard]] virtual BookmarkResolution resolve(const QByteArray &bookmark, const BookmarkOptions &options) = 0;
};

/// Bookmarks of the file system.
class FileBookmarkService final : public BookmarkService
{
public:
    /// What is mounted, for who asks much; without, the system is asked each time.
    explicit FileBookmarkService(std::shared_ptr<const Volumes> volumes = {});

    std::optional<QByteArray> create(const QString &path, QString &reason) override;
    bool isCurrent(const QByteArray &bookmark, const FileIdentity &present, const Volumes *volumes) override;
    BookmarkResolution resolve(const QByteArray &bookmark, const BookmarkOptions &options) override;

private:
    std::shared_ptr<const Volumes> m_volumes;
};

/// The same options for photos: a copy may have the extension of any picture.
[[nodiscard]] BookmarkOptions forPictures(BookmarkOptions options);
