#pragma once

#include "PIGroup.h"

#include <functional>
#include <optional>
#include <vector>

/// Goes through a library's photos in the order in which people see them: a folder's photos, then its subfolders, then
/// the folders after it, group after group. Groups of search results are passed over, unless it begins in one. Good as
/// long as the tree stays as it is.
class PhotoWalk
{
public:
    using Groups = QList<std::shared_ptr<PIGroup>>;

    /// From the first photo on.
    explicit PhotoWalk(const Groups &groups);
    /// From the photo at that place of a folder of the groups on.
    PhotoWalk(const Groups &groups, const std::shared_ptr<PIFolder> &folder, qsizetype photo);

    struct Place
    {
        std::shared_ptr<PIFolder> folder;
        qsizetype photo = 0;
    };
    /// The next photo that is wanted; nothing after the last one, and then for good.
    [[nodiscard]] std::optional<Place> next(const std::function<bool(const PIPhoto &)> &isWanted);

private:
    void goOn();
    void enterGroup();

    const Groups &m_groups;
    qsizetype m_group = 0;
    /// The way from the group down to the present folder, by their places among their siblings; empty at the end.
    std::vector<std::pair<std::shared_ptr<PIFolder>, qsizetype>> m_way;
    qsizetype m_photo = 0;
};
