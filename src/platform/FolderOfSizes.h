#pragma once

#include "LostFile.h"

#include <QMultiHash>

#include <optional>

/// The files of one folder by their sizes, to find one by its content where inode numbers tell nothing. Each is looked
/// at once, however many are asked for.
class FolderOfSizes
{
public:
    FolderOfSizes(const QByteArray &folder, const Volume &volume);

    /// Where the file stands with the content and time of birth that it had. Nothing when it does not.
    [[nodiscard]] std::optional<FoundPlace> placeOf(const BookmarkView &stored) const;

private:
    QMultiHash<quint64, FoundPlace> m_places;
};
