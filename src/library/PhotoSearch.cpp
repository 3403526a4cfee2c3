#include "PhotoSearch.h"

#include "PhotoLibrary.h"

#include <QDeadlineTimer>

#include <utility>

namespace {

constexpr int kPhotosBetweenLooksAtTheClock = 64;

}

PhotoSearch::PhotoSearch(const FindCriteria &criteria, const PhotoLibrary &library, PhotoWalk walk)
    : m_matcher(criteria, library.keywords())
    , m_walk(std::move(walk))
{}

PhotoSearch::Pause PhotoSearch::goOn(const QDeadlineTimer &deadline)
{
    bool isMatch = false;
    int untilLook = kPhotosBetweenLooksAtTheClock;
    const auto place = m_walk.next([&](const PIPhoto &photo) {
        isMatch = m_matcher.matches(photo);
        if (isMatch || --untilLook > 0)
            return isMatch;
        untilLook = kPhotosBetweenLooksAtTheClock;
        return deadline.hasExpired();
    });
    if (!place)
        return Pause::End;
    if (!isMatch)
        return Pause::TimeIsUp;
    m_place = *place;
    return Pause::Match;
}

std::optional<PhotoWalk::Place> PhotoSearch::next()
{
    if (goOn(QDeadlineTimer(QDeadlineTimer::Forever)) == Pause::End)
        return {};
    return m_place;
}
