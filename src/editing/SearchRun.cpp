#include "SearchRun.h"

#include <QDeadlineTimer>

#include <utility>

namespace {

using namespace std::chrono_literals;

constexpr auto kPauseInTyping = 200ms;

}

SearchRun::SearchRun(QObject *parent, std::chrono::milliseconds slice)
    : QObject(parent)
    , m_slice(slice)
{
    connect(&m_timer, &QTimer::timeout, this, &SearchRun::goOn);
}

void SearchRun::start(const MakeSearch &makeSearch)
{
    m_search.reset();
    m_makeSearch = makeSearch;
    m_timer.start(kPauseInTyping);
}

void SearchRun::stop()
{
    m_timer.stop();
    m_search.reset();
    m_makeSearch = {};
}

void SearchRun::goOn()
{
    if (m_makeSearch) {
        m_search.emplace(std::exchange(m_makeSearch, {})());
        m_matches = 0;
        m_timer.start(0);
    }
    const QDeadlineTimer deadline(m_slice);
    PhotoSearch::Pause pause = PhotoSearch::Pause::Match;
    do {
        pause = m_search->goOn(deadline);
        if (pause != PhotoSearch::Pause::Match || ++m_matches > 1)
            continue;
        Q_EMIT foundFirst(PhotoWalk::Place(m_search->place()));
        if (!m_search)
            return; // whoever was told has stopped it, or begun another
    } while (pause == PhotoSearch::Pause::Match && !deadline.hasExpired());
    if (pause != PhotoSearch::Pause::End)
        return;
    stop();
    Q_EMIT ended(m_matches);
}
