#include "PhotoFinder.h"

#include "LibraryEditor.h"
#include "LibraryView.h"
#include "PhotoLibrary.h"

PhotoFinder::PhotoFinder(LibraryEditor &editor)
    : m_editor(editor)
{}

PhotoFinder::Outcome PhotoFinder::find()
{
    return m_criteria.makeFolder ? storeAll() : showNext(startOf(m_criteria.startOption));
}

PhotoFinder::Outcome PhotoFinder::findAgain()
{
    return showNext(startOf(FindCriteria::Start::Selection));
}

PhotoFinder::Outcome PhotoFinder::findPrevious()
{
    PhotoWalk walk(m_editor.library().groups());
    if (const auto folder = searchedFolder())
        walk.endBefore({folder, m_editor.view().selectedIndexes().first().value_or(0)});
    PhotoSearch before(m_criteria, m_editor.library(), std::move(walk));
    std::optional<PhotoWalk::Place> last;
    while (const auto match = before.next())
        last = match;
    if (!last)
        return Outcome::NothingFound;
    show(*last);
    return Outcome::Found;
}

/// The one on show; null when it holds results.
std::shared_ptr<PIFolder> PhotoFinder::searchedFolder() const
{
    const auto folder = m_editor.view().shownFolder();
    const auto group = PhotoLibrary::groupForFolder(folder);
    return group && group->groupType() != GroupType::Search ? folder : nullptr;
}

PhotoWalk::Place PhotoFinder::startOf(FindCriteria::Start start) const
{
    const auto folder = searchedFolder();
    if (start == FindCriteria::Start::Library || !folder)
        return {};
    const auto last = m_editor.view().selectedIndexes().last();
    return {folder, start == FindCriteria::Start::Selection && last ? *last + 1 : 0};
}

PhotoSearch PhotoFinder::search(const FindCriteria &criteria, const PhotoWalk::Place &start) const
{
    return {criteria, m_editor.library(), PhotoWalk(m_editor.library().groups(), start)};
}

void PhotoFinder::show(const PhotoWalk::Place &place)
{
    if (place.folder != m_editor.view().shownFolder()) {
        place.folder->enforceVisibility();
        m_editor.view().resetList(place.folder);
    }
    m_editor.view().selectIndexes(IndexSet::single(place.photo));
}

std::shared_ptr<PIFolder> PhotoFinder::folder(const QString &guid) const
{
    const auto found = m_editor.library().findContainerByGuid(guid);
    return found && found->asFolder() ? std::static_pointer_cast<PIFolder>(found) : nullptr;
}

PhotoFinder::Outcome PhotoFinder::showNext(const PhotoWalk::Place &start)
{
    const auto match = search(m_criteria, start).next();
    if (!match)
        return Outcome::NothingFound;
    show(*match);
    return Outcome::Found;
}

/// The results are copies of the photos that keep their guids, and so their thumbnails.
PhotoFinder::Outcome PhotoFinder::storeAll()
{
    const auto results = m_editor.makeSpecialGroupFolder(GroupType::Search);
    if (!results)
        return Outcome::Refused;
    PhotoSearch all = search(m_criteria, startOf(m_criteria.startOption));
    PIGroup::PhotoList found;
    while (const auto match = all.next())
        found << match->folder->photos().at(match->photo)->copy();
    results->photos() = found;
    results->enforceVisibility();
    m_editor.view().resetList(results);
    return Outcome::Found;
}
