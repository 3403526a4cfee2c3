#include "PhotoOrder.h"

#include "PIPhoto.h"
#include "StringUtilities.h"

#include <algorithm>
#include <bit>
#include <utility>
#include <vector>

namespace {

/// Each key is made once.
template<typename Key>
PIGroup::PhotoList sortedBy(const PIGroup::PhotoList &photos, const std::function<Key(PIPhoto &)> &keyOf)
{
    std::vector<std::pair<Key, std::shared_ptr<PIPhoto>>> keyed;
    keyed.reserve(static_cast<size_t>(photos.size()));
    for (const auto &photo : photos)
        keyed.emplace_back(keyOf(*photo), photo);
    std::stable_sort(keyed.begin(), keyed.end(), [](const auto &a, const auto &b) { return a.first < b.first; });
    PIGroup::PhotoList sorted;
    sorted.reserve(photos.size());
    for (const auto &[key, photo] : keyed)
        sorted.append(photo);
    return sorted;
}

}

PIGroup::PhotoList PhotoOrder::byName(const PIGroup::PhotoList &photos)
{
    return sortedBy<QString>(photos, [](const PIPhoto &photo) {
        return photo.fileRef() ? QVString::fileNameMinusExtension(photo.fileRef()->path()).toCaseFolded() : QString();
    });
}

PIGroup::PhotoList PhotoOrder::byDate(const PIGroup::PhotoList &photos)
{
    return sortedBy<double>(
        photos, [](const PIPhoto &photo) { return photo.fileRef() ? photo.fileRef()->knownCreationTime() : 0.0; });
}

namespace {

/// Positions of which one after the other is taken, each found by its number among those left. Counts of ranges of
/// positions, each a power of two long, lead to it without passing the others.
class PositionsLeft
{
public:
    explicit PositionsLeft(size_t count)
        : m_counts(count + 1)
    {
        for (size_t i = 1; i <= count; ++i)
            m_counts[i] = i & (~i + 1);
    }

    size_t take(size_t number)
    {
        size_t position = 0;
        for (size_t step = std::bit_floor(m_counts.size()); step > 0; step /= 2) {
            const size_t next = position + step;
            if (next >= m_counts.size())
                continue;
            if (m_counts[next] <= number) {
                number -= m_counts[next];
                position = next;
            } else {
                --m_counts[next];
            }
        }
        return position;
    }

private:
    std::vector<size_t> m_counts; ///< from 1 on; each of as many positions up to it as its lowest bit says
};

}

PIGroup::PhotoList PhotoOrder::shuffled(const PIGroup::PhotoList &photos, const std::function<quint32()> &random)
{
    PIGroup::PhotoList drawn;
    drawn.reserve(photos.size());
    PositionsLeft left(static_cast<size_t>(photos.size()));
    for (qsizetype remaining = photos.size(); remaining > 0; --remaining) {
        const size_t number = remaining > 1 ? random() % static_cast<size_t>(remaining) : 0;
        drawn.append(photos.at(static_cast<qsizetype>(left.take(number))));
    }
    return drawn;
}
