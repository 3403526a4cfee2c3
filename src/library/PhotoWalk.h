#pragma once

#include "PIGroup.h"

#include <functional>
#include <optional>
#include <vector>

/// Goes through a library's photos in the order in which people see them: a folder's photos, then its subfolders, then
/// the folders after it, group after group. Groups of search results are passed over. When the tree changes meanwhile
/// it goes on from where it is.
class PhotoWalk
{
public:
    using Groups = QList<std::shared_ptr<PIGroup>>;

    struct Place
    {
        std::shared_ptr<PIFolder> folder;
        qsizetype photo = 0; ///< its position there
        friend bool operator==(const Place &, const Place &) = default;
    };

    /// From the first photo on. The list outlives it.
    explicit PhotoWalk(const Groups &groups);
    explicit PhotoWalk(Groups &&) = delete;
    /// From that place in a folder on; without a folder from the first photo. Ends at once where the folder is not in
    /// the groups.
    PhotoWalk(const Groups &groups, const Place &start);
    PhotoWalk(Groups &&, const Place &) = delete;

    /// It ends there, without coming to that photo.
    void endBefore(const Place &place) { m_end = place; }
    /// The next photo that is wanted; nothing after the last one, and then for good.
    [[nodiscard]] std::optional<Place> next(const std::function<bool(const PIPhoto &)> &isWanted);

private:
    void goOn();
    void enterGroup();
    void leaveGroup();

    const Groups &m_groups;
    qsizetype m_group = 0;
    /// The way from the group down to the present folder, by their places among their siblings; empty at the end.
    std::vector<std::pair<std::shared_ptr<PIFolder>, qsizetype>> m_way;
    qsizetype m_photo = 0;
    std::optional<Place> m_end;
};
