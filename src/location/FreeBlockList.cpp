#include "FreeBlockList.h"

#include <algorithm>
#include <vector>

void FreeBlockList::append(const Block &block)
{
    m_entries[block.capacity].push_back({m_nextPosition++, block});
}

namespace {

constexpr quint64 kSavesBeforeReuse = 5;

}

std::optional<FreeBlockList::Block> FreeBlockList::find(quint32 length, quint32 sequenceID) const
{
    const Entry *best = nullptr;
    for (auto group = m_entries.lower_bound(length); group != m_entries.end(); ++group) {
        // Sequence numbers never fall, so that no block of a group is older than its first.
        const Entry &first = group->second.front();
        const bool isOldEnough = first.block.freedAt + kSavesBeforeReuse <= sequenceID;
        if (isOldEnough && (!best || first.position < best->position))
            best = &first;
    }
    return best ? std::optional(best->block) : std::nullopt;
}

void FreeBlockList::remove(const Block &block)
{
    const auto group = m_entries.find(block.capacity);
    Q_ASSERT(group != m_entries.end() && group->second.front().block == block);
    group->second.pop_front();
    if (group->second.empty())
        m_entries.erase(group);
}

QList<FreeBlockList::Block> FreeBlockList::blocks() const
{
    std::vector<Entry> all;
    for (const auto &[capacity, group] : m_entries)
        all.insert(all.end(), group.cbegin(), group.cend());
    std::sort(all.begin(), all.end(), [](const Entry &a, const Entry &b) { return a.position < b.position; });
    QList<Block> result;
    result.reserve(static_cast<qsizetype>(all.size()));
    for (const Entry &entry : all)
        result.append(entry.block);
    return result;
}
