#pragma once

#include <QByteArray>

/// Tells by the path alone what has been put away in a trash: the user's own or that of a volume, which is named for
/// the user's number. Files in there are neither lost nor in use. A value that knows the user's trash as it was when it
/// was made.
class TrashFolders
{
public:
    TrashFolders();

    /// Whether the path is that of a trash or leads into one.
    [[nodiscard]] bool hold(const QByteArray &path) const;

private:
    QByteArray m_own;
    QByteArray m_ownWithoutLinks;
};
