#pragma once

#include <QByteArray>
#include <QHash>

/// Keeps the user's own way to a file. Where the Pictures folder is a link to another disk, a photo that was renamed
/// there is told as a file of the Pictures folder, not of the disk.
class LinkedPaths
{
public:
    /// `path`, free of links, as seen from the deepest folder of `givenPath` that leads to it still.
    [[nodiscard]] QByteArray asSeenFrom(const QByteArray &givenPath, const QByteArray &path);
    /// `path` with the links of its folder followed, those of its last name not.
    [[nodiscard]] QByteArray withoutLinkedFolders(const QByteArray &path);

private:
    const QByteArray &resolved(const QByteArray &folder);

    QHash<QByteArray, QByteArray> m_resolved;
};
