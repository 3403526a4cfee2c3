#include "PhotoEdits.h"

#include "LibraryNotifications.h"
#include "LibraryView.h"
#include "PhotoLibrary.h"
#include "PhotoOrder.h"
#include "StringUtilities.h"

#include <QSet>

#include <algorithm>
#include <utility>

namespace {

PIGroup::PhotoList copiesOf(const PIGroup::PhotoList &photos)
{
    PIGroup::PhotoList copies;
    copies.reserve(photos.size());
    for (const auto &photo : photos) {
        copies.append(photo->copy());
        copies.last()->setGuid(QVString::guidString());
    }
    return copies;
}

/// A folder's photos without some of them.
struct Remainder
{
    PIGroup::PhotoList staying;
    qsizetype firstTaken = -1;
    qsizetype lastTaken = -1;
    qsizetype taken = 0;
};

Remainder without(const PIGroup::PhotoList &all, const PIGroup::PhotoList &photos)
{
    const QSet<std::shared_ptr<PIPhoto>> leaving(photos.cbegin(), photos.cend());
    Remainder rest;
    for (qsizetype i = 0; i < all.size(); ++i) {
        if (!leaving.contains(all.at(i))) {
            rest.staying.append(all.at(i));
            continue;
        }
        rest.firstTaken = rest.taken++ == 0 ? i : rest.firstTaken;
        rest.lastTaken = i;
    }
    return rest;
}

bool holdsAll(const PIFolder &folder, const PIGroup::PhotoList &photos)
{
    const QSet<std::shared_ptr<PIPhoto>> held(folder.photos().cbegin(), folder.photos().cend());
    return std::all_of(photos.cbegin(), photos.cend(), [&](const auto &photo) { return held.contains(photo); });
}

/// Shows the folder with its present photos and the one at `index`, or the last, selected.
void showWithSelected(LibraryView &view, const std::shared_ptr<PIFolder> &folder, qsizetype index)
{
    const qsizetype selected = std::min(index, std::as_const(*folder).photos().size() - 1);
    view.resetList(folder);
    view.selectIndexes(selected < 0 ? IndexSet() : IndexSet::single(selected));
}

}

bool PhotoEdits::record(UndoAction action, UndoName name, const std::shared_ptr<PIGroup> &container)
{
    return m_editor.recorder().setUndoAction(action, name, {.container = container, .photo = {}});
}

PIGroup::PhotoList PhotoEdits::selectedPhotos() const
{
    PIGroup::PhotoList selected;
    if (const auto folder = m_editor.view().shownFolder()) {
        const auto &photos = std::as_const(*folder).photos();
        for (const qint64 index : m_editor.view().selectedIndexes().indexes(photos.size()))
            selected.append(photos.at(index));
    }
    return selected;
}

bool PhotoEdits::copyPhotos(const PIGroup::PhotoList &photos, const std::shared_ptr<PIGroup> &toItem, Transfer transfer)
{
    const auto shown = m_editor.view().shownFolder();
    const bool moves = transfer == Transfer::Move;
    if (photos.isEmpty() || !toItem || (moves && !(shown && holdsAll(*shown, photos))))
        return false;
    if (moves && !record(UndoAction::WholeTree, UndoName::AddPhoto))
        return false;
    const bool makesFolder = !toItem->asFolder() && toItem->folders().isEmpty();
    const auto folder = targetIn(toItem, moves);
    if (!folder)
        return false;
    if (moves)
        takeOut(photos);
    const bool isRecorded = moves || makesFolder;
    return m_editor.addPhotos(moves ? photos : copiesOf(photos), folder, kNotFound,
                              isRecorded ? UndoName::AlreadyRecorded : UndoName::AddPhoto);
}

/// The folder, or the last one of a group; null when making one could not be recorded.
std::shared_ptr<PIFolder> PhotoEdits::targetIn(const std::shared_ptr<PIGroup> &item, bool isRecorded)
{
    if (item->asFolder())
        return std::static_pointer_cast<PIFolder>(item);
    const bool makesFolder = item->folders().isEmpty();
    if (makesFolder && !isRecorded && !record(UndoAction::FolderList, UndoName::AddPhoto, item))
        return nullptr;
    if (makesFolder)
        item->setClosed(false);
    return item->lastFolder();
}

/// The photos leave the folder on show, and the one behind them is selected.
void PhotoEdits::takeOut(const PIGroup::PhotoList &photos)
{
    const auto folder = m_editor.view().shownFolder();
    const Remainder rest = without(std::as_const(*folder).photos(), photos);
    folder->photos() = rest.staying;
    showWithSelected(m_editor.view(), folder, rest.lastTaken + 1 - rest.taken);
}

std::shared_ptr<PIFolder> PhotoEdits::extractFolder(Transfer transfer)
{
    const auto shown = m_editor.view().shownFolder();
    const PIGroup::PhotoList photos = selectedPhotos();
    if (photos.isEmpty() || !record(UndoAction::WholeTree, UndoName::AddFolder))
        return nullptr;
    const auto folder = shown->makeNewFolder();
    folder->photos() = transfer == Transfer::Copy ? copiesOf(photos) : photos;
    if (transfer == Transfer::Move)
        takeOut(photos);
    folder->enforceVisibility();
    m_editor.view().resetList(folder);
    return folder;
}

bool PhotoEdits::paste(const PIGroup::PhotoList &photos)
{
    const auto last = m_editor.view().selectedIndexes().last();
    return m_editor.addPhotos(photos, m_editor.view().shownFolder(), last ? static_cast<quint64>(*last) : kNotFound,
                              UndoName::Paste);
}

bool PhotoEdits::deletePhotos(const PIGroup::PhotoList &photos)
{
    const auto folder = m_editor.view().shownFolder();
    if (!folder || photos.isEmpty())
        return false;
    const Remainder rest = without(std::as_const(*folder).photos(), photos);
    if (rest.taken == 0 || !record(UndoAction::PhotoList, UndoName::DeletePhoto, folder))
        return false;
    folder->photos() = rest.staying;
    for (const auto &photo : photos)
        m_editor.library().thumbnails().deleteThumbnail(*photo);
    showWithSelected(m_editor.view(), folder, rest.firstTaken);
    return true;
}

bool PhotoEdits::reorderPhotos(const IndexSet &positions, qint64 before)
{
    const auto folder = m_editor.view().shownFolder();
    if (!folder || before < 0)
        return false;
    const PIGroup::PhotoList photos = std::as_const(*folder).photos();
    PIGroup::PhotoList moved;
    PIGroup::PhotoList above;
    PIGroup::PhotoList below;
    for (qsizetype i = 0; i < photos.size(); ++i)
        (positions.contains(i) ? moved : i < before ? above : below).append(photos.at(i));
    const IndexSet places = IndexSet::range(above.size(), moved.size());
    const PIGroup::PhotoList ordered = above + moved + below;
    if (ordered == photos || !record(UndoAction::PhotoList, UndoName::SortFolder, folder))
        return false;
    folder->photos() = ordered;
    m_editor.view().selectRow(folder);
    m_editor.view().selectIndexes(places);
    return true;
}

bool PhotoEdits::moveSelectedBy(int places)
{
    const IndexSet selected = m_editor.view().selectedIndexes();
    if (selected.isEmpty() || places == 0)
        return false;
    return reorderPhotos(selected,
                         places < 0 ? std::max<qint64>(*selected.first() + places, 0) : *selected.last() + 1 + places);
}

bool PhotoEdits::toggleMark()
{
    const auto folder = m_editor.view().shownFolder();
    const PIGroup::PhotoList photos = selectedPhotos();
    if (photos.isEmpty() || !record(UndoAction::PhotoList, UndoName::SortFolder, folder))
        return false;
    for (const auto &photo : photos) {
        photo->setMarked(!photo->isMarked());
        m_editor.library().notifications().post(kThumbnailNotification, photo);
    }
    return true;
}

bool PhotoEdits::clearCrop()
{
    const auto folder = m_editor.view().shownFolder();
    if (!folder)
        return false;
    const auto &photos = std::as_const(*folder).photos();
    const IndexSet selected = m_editor.view().selectedIndexes();
    IndexSet cropped;
    for (const qint64 index : selected.indexes(photos.size())) {
        if (!photos.at(index)->cropRect().isEmpty())
            cropped.add(index);
    }
    if (cropped.isEmpty())
        return false;
    const bool isOne = selected.count() == 1;
    const UndoContext context{.container = folder, .photo = isOne ? photos.at(*selected.first()) : nullptr};
    if (!m_editor.recorder().setUndoAction(isOne ? UndoAction::Photo : UndoAction::PhotoList, UndoName::Crop, context))
        return false;
    for (const qint64 index : cropped.indexes(photos.size())) {
        photos.at(index)->setCropRect({});
        m_editor.library().pictureChanged(*photos.at(index));
    }
    m_editor.view().selectIndexes(cropped);
    return true;
}

bool PhotoEdits::sortFolder(Order order, const std::function<quint32()> &random)
{
    const auto folder = m_editor.view().shownFolder();
    if (!folder || !record(UndoAction::PhotoList, UndoName::SortFolder, folder))
        return false;
    PIGroup::PhotoList &photos = folder->photos();
    switch (order) {
    case Order::Name:
        photos = PhotoOrder::byName(photos);
        break;
    case Order::Date:
        photos = PhotoOrder::byDate(photos);
        break;
    case Order::Random:
        photos = PhotoOrder::shuffled(photos, random);
        break;
    }
    m_editor.view().selectRow(folder);
    return true;
}

void PhotoEdits::setEffects(const PIGroup::PhotoList &photos, const EffectChain &chain)
{
    for (const auto &photo : photos) {
        photo->setFilterDicts(chain);
        m_editor.library().pictureChanged(*photo);
    }
    m_editor.library().notifications().post(kSelectNotification, m_editor.view().currentPhoto());
}

bool PhotoEdits::applyEffectSet(const QString &name)
{
    const EffectSetStore &sets = m_editor.library().effectSets();
    const auto set = sets.constFind(name);
    const PIGroup::PhotoList photos = selectedPhotos();
    if (set == sets.cend() || photos.isEmpty() ||
        !record(UndoAction::PhotoList, UndoName::Effects, m_editor.view().shownFolder()))
        return false;
    setEffects(photos, *set);
    return true;
}

bool PhotoEdits::clearEffects()
{
    PIGroup::PhotoList photos = selectedPhotos();
    photos.removeIf([](const auto &photo) { return photo->filterDicts().isEmpty(); });
    if (photos.isEmpty() || !record(UndoAction::PhotoList, UndoName::Effects, m_editor.view().shownFolder()))
        return false;
    setEffects(photos, {});
    return true;
}
