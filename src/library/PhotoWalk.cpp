#include "PhotoWalk.h"

#include "PIFolder.h"

#include <algorithm>
#include <utility>

PhotoWalk::PhotoWalk(const Groups &groups)
    : m_groups(groups)
{
    enterGroup();
}

PhotoWalk::PhotoWalk(const Groups &groups, const Place &start)
    : m_groups(groups)
    , m_photo(start.photo)
{
    if (!start.folder) {
        enterGroup();
        return;
    }
    std::shared_ptr<PIGroup> above = start.folder;
    for (std::shared_ptr<PIFolder> at = start.folder; at;) {
        above = at->parent();
        const qsizetype place = above ? above->folders().indexOf(at) : -1;
        if (place < 0) { // it is no longer there
            m_way.clear();
            return;
        }
        m_way.emplace_back(at, place);
        at = above->asFolder() ? std::static_pointer_cast<PIFolder>(above) : nullptr;
    }
    std::reverse(m_way.begin(), m_way.end());
    m_group = groups.indexOf(above);
    if (m_group < 0)
        m_way.clear();
    else if (above->groupType() == GroupType::Search)
        leaveGroup();
}

void PhotoWalk::leaveGroup()
{
    m_way.clear();
    m_photo = 0;
    ++m_group;
    enterGroup();
}

/// The first folder of this group, or of the next that has any and holds no search results.
void PhotoWalk::enterGroup()
{
    for (; m_group < m_groups.size(); ++m_group) {
        const auto &folders = std::as_const(*m_groups.at(m_group)).folders();
        if (m_groups.at(m_group)->groupType() == GroupType::Search || folders.isEmpty())
            continue;
        m_way.emplace_back(folders.first(), 0);
        return;
    }
}

void PhotoWalk::goOn()
{
    m_photo = 0;
    const auto &subfolders = std::as_const(*m_way.back().first).folders();
    if (!subfolders.isEmpty()) {
        m_way.emplace_back(subfolders.first(), 0);
        return;
    }
    while (!m_way.empty()) {
        const qsizetype following = m_way.back().second + 1;
        m_way.pop_back();
        if (m_way.empty() && m_group >= m_groups.size())
            return;
        const PIGroup &above = m_way.empty() ? *m_groups.at(m_group) : *m_way.back().first;
        if (following < above.folders().size()) {
            m_way.emplace_back(above.folders().at(following), following);
            return;
        }
    }
    leaveGroup();
}

std::optional<PhotoWalk::Place> PhotoWalk::next(const std::function<bool(const PIPhoto &)> &isWanted)
{
    while (!m_way.empty()) {
        const std::shared_ptr<PIFolder> &folder = m_way.back().first;
        const PIGroup::PhotoList &photos = std::as_const(*folder).photos();
        const bool isLast = m_end && m_end->folder == folder;
        const qsizetype end = isLast ? std::min(m_end->photo, photos.size()) : photos.size();
        for (; m_photo < end; ++m_photo) {
            if (isWanted(*photos.at(m_photo)))
                return Place{folder, m_photo++};
        }
        if (isLast)
            m_way.clear();
        else
            goOn();
    }
    return {};
}
