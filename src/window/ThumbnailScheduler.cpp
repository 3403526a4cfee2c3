#include "ThumbnailScheduler.h"

#include <algorithm>
#include <utility>

ThumbnailScheduler::ThumbnailScheduler(TileSource &source, int visibleJobs, int idleJobs)
    : m_source(source)
    , m_visibleJobs(visibleJobs)
    , m_idleJobs(idleJobs)
{}

void ThumbnailScheduler::reset(int count)
{
    m_count = count;
    m_allVisited = false;
    setVisible({});
}

void ThumbnailScheduler::setVisible(GridLayout::Span visible)
{
    m_visible = {std::max(0, visible.first), std::min(visible.last, m_count - 1)};
    m_below = m_visible.last + 1;
    m_above = m_visible.first - 1;
    m_downNext = true;
    m_held = -1;
    recheckVisible();
}

void ThumbnailScheduler::recheckVisible()
{
    m_nextVisible = m_visible.first;
    m_preparedTold = false;
    m_lacking.clear();
    m_nextLacking = 0;
}

ThumbnailScheduler::Outcome ThumbnailScheduler::advance(const std::function<bool()> &timeIsUp)
{
    do {
        Step step = prepareVisible();
        if (step == Step::Finished)
            step = requestVisible();
        if (step == Step::Finished)
            step = visitNext();
        if (step == Step::Finished)
            step = lookOnceMore();
        if (step == Step::Finished)
            return Outcome::Done;
        if (step == Step::Blocked)
            return Outcome::Blocked;
    } while (!timeIsUp());
    return Outcome::More;
}

ThumbnailScheduler::Step ThumbnailScheduler::prepareVisible()
{
    if (m_nextVisible <= m_visible.last) {
        if (m_source.prepare(m_nextVisible))
            m_lacking.push_back(m_nextVisible);
        ++m_nextVisible;
        return Step::Went;
    }
    if (!m_preparedTold) {
        m_preparedTold = true;
        m_source.visiblePrepared();
    }
    return Step::Finished;
}

ThumbnailScheduler::Step ThumbnailScheduler::requestVisible()
{
    if (m_nextLacking == m_lacking.size())
        return Step::Finished;
    if (m_source.pendingJobs() >= m_visibleJobs)
        return Step::Blocked;
    m_requested = true;
    m_source.request(m_lacking[m_nextLacking++]);
    return Step::Went;
}

/// One step outward. The first page either side is prepared for painting; beyond it only what was never made counts,
/// so that the walk through a big folder neither reads the disk nor drives other pictures out of memory.
ThumbnailScheduler::Step ThumbnailScheduler::visitNext()
{
    if (m_held < 0) {
        const int page = m_visible.count();
        const int index = nextOutward();
        if (index < 0)
            return Step::Finished;
        const bool isNear = index >= m_visible.first - page && index <= m_visible.last + page;
        if (!(isNear ? m_source.prepare(index) : !m_allVisited && m_source.lacksThumbnail(index)))
            return Step::Went;
        m_held = index;
    }
    if (m_source.pendingJobs() >= m_idleJobs)
        return Step::Blocked;
    m_requested = true;
    m_source.request(std::exchange(m_held, -1));
    return Step::Went;
}

int ThumbnailScheduler::nextOutward()
{
    const int page = m_visible.count();
    const bool canGoDown = m_below < (m_allVisited ? std::min(m_count, m_visible.last + 1 + page) : m_count);
    const bool canGoUp = m_above >= (m_allVisited ? std::max(0, m_visible.first - page) : 0);
    if (!canGoDown && !canGoUp) {
        m_allVisited = true;
        return -1;
    }
    const bool down = canGoDown && (m_downNext || !canGoUp);
    m_downNext = !down;
    return down ? m_below++ : m_above--;
}

/// When the last job has ended, the visible tiles are looked at a last time: those of failed jobs were not announced.
ThumbnailScheduler::Step ThumbnailScheduler::lookOnceMore()
{
    if (!m_requested)
        return Step::Finished;
    if (m_source.pendingJobs() > 0)
        return Step::Blocked;
    m_requested = false;
    recheckVisible();
    return Step::Went;
}
