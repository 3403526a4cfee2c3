#include "GridSelection.h"

#include <algorithm>
#include <vector>

IndexSet GridSelection::choose(const IndexSet &current, int index, Mode mode)
{
    const int from = m_anchor < 0 ? index : m_anchor;
    const IndexSet range = IndexSet::range(std::min(from, index), std::abs(index - from) + 1);
    switch (mode) {
    case Mode::Extend:
        m_anchor = from;
        return range;
    case Mode::Add:
        m_anchor = from;
        return united(current, range);
    case Mode::Toggle:
        m_anchor = index;
        return difference(current, IndexSet::single(index));
    case Mode::Replace:
        m_anchor = index;
        break;
    }
    return IndexSet::single(index);
}

void GridSelection::beginBand(const IndexSet &current, Mode mode)
{
    m_bandBase = mode == Mode::Replace ? IndexSet() : current;
    m_bandMode = mode;
}

IndexSet GridSelection::band(const IndexSet &covered) const
{
    return m_bandMode == Mode::Toggle ? difference(m_bandBase, covered) : united(m_bandBase, covered);
}

qint64 nearest(const IndexSet &indexes, qint64 index)
{
    qint64 best = -1;
    for (const auto &range : indexes.ranges()) {
        const qint64 candidate = std::clamp(index, range.first, range.last);
        if (best < 0 || std::abs(candidate - index) < std::abs(best - index))
            best = candidate;
    }
    return best;
}

namespace {

/// Walks both sets' boundaries in order; `wanted(inOne, inOther)` tells which stretches belong to the result.
template<typename Wanted>
IndexSet combined(const IndexSet &one, const IndexSet &other, Wanted wanted)
{
    struct Boundary
    {
        qint64 at;
        bool ofOne;
    };
    std::vector<Boundary> boundaries;
    boundaries.reserve(size_t(2 * (one.ranges().size() + other.ranges().size())));
    for (const auto &range : one.ranges())
        boundaries.insert(boundaries.end(), {{range.first, true}, {range.last + 1, true}});
    for (const auto &range : other.ranges())
        boundaries.insert(boundaries.end(), {{range.first, false}, {range.last + 1, false}});
    std::sort(boundaries.begin(), boundaries.end(), [](const auto &a, const auto &b) { return a.at < b.at; });

    IndexSet result;
    bool inOne = false;
    bool inOther = false;
    qint64 start = 0;
    for (const Boundary &boundary : boundaries) {
        if (wanted(inOne, inOther) && start < boundary.at)
            result.add(start, boundary.at - 1);
        bool &inside = boundary.ofOne ? inOne : inOther;
        inside = !inside;
        start = boundary.at;
    }
    return result;
}

}

IndexSet united(const IndexSet &one, const IndexSet &other)
{
    return combined(one, other, [](bool inOne, bool inOther) { return inOne || inOther; });
}

IndexSet difference(const IndexSet &one, const IndexSet &other)
{
    return combined(one, other, [](bool inOne, bool inOther) { return inOne != inOther; });
}
