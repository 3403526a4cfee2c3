#include "TypedSearch.h"

#include "PIFolder.h"

TypedSearch::TypedSearch(PhotoFinder &finder, QObject *parent)
    : QObject(parent)
    , m_finder(finder)
{
    connect(&m_run, &SearchRun::foundFirst, this, &TypedSearch::show);
    connect(&m_run, &SearchRun::ended, this, &TypedSearch::ended);
}

void TypedSearch::type(const QString &text, const FindCriteria &criteria)
{
    if (!text.startsWith(m_text) && !m_text.startsWith(text))
        m_left.reset(); // it replaces the other
    m_text = text;
    m_isTyped = true;
    m_isShown = false;
    if (const Spot now = behindSelection(); m_left != now) {
        m_start = now;
        m_left = now;
    }
    look(criteria);
}

PhotoFinder::Outcome TypedSearch::accept(const QString &text, const FindCriteria &criteria)
{
    const bool goesOn = m_isTyped && m_text == text && m_left == behindSelection();
    const PhotoWalk::Place from = goesOn ? start() : m_finder.startOf(FindCriteria::Start::Selection);
    if (!goesOn || !m_isShown) {
        m_run.stop();
        m_finder.setCurrentFindCriteria(criteria);
        const auto match = m_finder.search(criteria, from).next();
        if (!match)
            return PhotoFinder::Outcome::NothingFound;
        m_finder.show(*match);
        m_isShown = true;
        m_run.start([this, criteria, from] { return m_finder.search(criteria, from); });
    }
    m_text = text;
    m_isTyped = false;
    m_left.reset();
    return PhotoFinder::Outcome::Found;
}

void TypedSearch::forget()
{
    m_run.stop();
    m_text.clear();
    m_isTyped = false;
    m_left.reset();
}

TypedSearch::Spot TypedSearch::behindSelection() const
{
    const PhotoWalk::Place place = m_finder.startOf(FindCriteria::Start::Selection);
    return {place.folder ? place.folder->guid() : QString(), place.photo};
}

/// Where the typing began; where the selection ends when that is gone.
PhotoWalk::Place TypedSearch::start() const
{
    if (m_start.folder.isEmpty())
        return {};
    const auto folder = m_finder.folder(m_start.folder);
    return folder ? PhotoWalk::Place{folder, m_start.photo} : m_finder.startOf(FindCriteria::Start::Selection);
}

void TypedSearch::look(const FindCriteria &criteria)
{
    m_finder.setCurrentFindCriteria(criteria);
    m_run.start([this, criteria] { return m_finder.search(criteria, start()); });
}

void TypedSearch::show(const PhotoWalk::Place &place)
{
    if (m_isShown)
        return; // it only counts
    if (m_finder.folder(place.folder->guid()) != place.folder)
        return look(m_finder.currentFindCriteria()); // the library has changed meanwhile
    m_finder.show(place);
    m_isShown = true;
    m_left = behindSelection();
}
