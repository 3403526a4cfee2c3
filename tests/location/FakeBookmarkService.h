#pragma once

#include "BookmarkService.h"

#include <QFile>
#include <QHash>
#include <QSet>
#include <QStringList>

/// Bookmarks that lead where a test tells them to.
class FakeBookmarkService final : public BookmarkService
{
public:
    /// The path itself, after "mark:".
    std::optional<QByteArray> create(const QString &path, QString &reason) override
    {
        created.append(path);
        if (QFile::exists(path))
            return "mark:" + path.toUtf8();
        reason = QStringLiteral("It is gone.");
        return {};
    }
    bool isCurrent(const QByteArray &bookmark, const FileIdentity &, const Volumes *) override
    {
        return bookmark.startsWith("mark:") && !outdated.contains(bookmark);
    }
    BookmarkResolution resolve(const QByteArray &bookmark, const BookmarkOptions &options) override
    {
        resolved.append(bookmark);
        lastOptions = options;
        return answers.value(bookmark);
    }

    QStringList created;
    QList<QByteArray> resolved;
    BookmarkOptions lastOptions;
    QSet<QByteArray> outdated;
    QHash<QByteArray, BookmarkResolution> answers; ///< "missing" when not told
};
