#include "PhotoMoment.h"

#include "PIPhoto.h"

#include <map>
#include <utility>

namespace {

/// What was put aside, by the moment that was the newest then. A photo that a moment does not hold was, at that moment,
/// what the next one says.
std::map<quint64, PhotoMoment::Changes> &lasting()
{
    static std::map<quint64, PhotoMoment::Changes> moments;
    return moments;
}

void addMissing(PhotoMoment::Changes &changes, const PhotoMoment::Changes &later)
{
    for (auto change = later.cbegin(); change != later.cend(); ++change) {
        if (!changes.contains(change.key()))
            changes.insert(change.key(), change.value());
    }
}

}

PhotoMoment::PhotoMoment()
{
    static quint64 last = 0;
    m_number = ++last;
    lasting().try_emplace(m_number);
    s_newest = m_number;
}

PhotoMoment::~PhotoMoment()
{
    auto &moments = lasting();
    const auto ended = moments.find(m_number);
    const Changes changes = std::move(ended->second);
    if (ended != moments.begin())
        addMissing(std::prev(ended)->second, changes);
    moments.erase(ended);
    s_newest = moments.empty() ? 0 : moments.rbegin()->first;
}

PhotoMoment::Changes PhotoMoment::changes() const
{
    const auto &moments = lasting();
    auto moment = moments.find(m_number);
    Changes all = moment->second;
    while (++moment != moments.end())
        addMissing(all, moment->second);
    return all;
}

void PhotoMoment::note(PIPhoto &photo)
{
    if (auto held = photo.weak_from_this().lock())
        lasting().rbegin()->second.insert(held, photo.copy());
}
