#include "LibraryUndo.h"

#include "LibraryNotifications.h"
#include "LibraryView.h"
#include "LogString.h"
#include "PhotoLibrary.h"
#include "UndoNames.h"

#include <QSet>

#include <algorithm>
#include <utility>

bool LibraryUndo::setUndoAction(UndoAction action, UndoName, UndoData &data, const UndoContext &context)
{
    if (!makeSnapshot(action, data, context)) {
        LogString("Can't record a change of kind %d", static_cast<int>(action));
        return false;
    }
    if (const auto shown = m_view.shownFolder()) {
        data.shownFolderGuid = shown->guid();
        data.selection = m_view.selectedIndexes();
    }
    data.dirty = m_library.isDirty();
    m_library.setDirty(true);
    return true;
}

namespace {

template<typename Items>
QList<ContainerState> statesOf(const Items &items)
{
    QList<ContainerState> states;
    states.reserve(items.size());
    for (const auto &item : items)
        states.append(ContainerState(item));
    return states;
}

QList<ContainerState> wholeTree(const PhotoLibrary &library)
{
    QList<ContainerState> states;
    for (const auto &group : library.groups())
        appendTree(states, group);
    return states;
}

/// Where a change of the photo is looked for when it is undone: the folder on show if it is there.
std::shared_ptr<PIFolder> homeOf(const PIPhoto &photo, const PhotoLibrary &library,
                                 const std::shared_ptr<PIFolder> &shown)
{
    return shown && shown->findPhotoByGuid(photo.guid()) ? shown : library.folderForPhoto(photo);
}

}

bool LibraryUndo::makeSnapshot(UndoAction action, UndoData &data, const UndoContext &context) const
{
    PIFolder *folder = context.container ? context.container->asFolder() : nullptr;
    data.containerGuid = context.container ? context.container->guid() : QString();
    switch (action) {
    case UndoAction::Photo: {
        const auto home = context.photo ? homeOf(*context.photo, m_library, m_view.shownFolder()) : nullptr;
        data.photo = home ? context.photo->copy() : nullptr;
        data.containerGuid = home ? home->guid() : QString();
        return home != nullptr;
    }
    case UndoAction::WholeTree:
        data.groups = std::as_const(m_library).groups();
        data.containers = wholeTree(m_library);
        data.moment = std::make_shared<PhotoMoment>();
        return true;
    case UndoAction::FolderList:
        if (context.container) {
            data.folders = std::as_const(*context.container).folders();
            data.containers = statesOf(data.folders);
        }
        return context.container != nullptr;
    case UndoAction::GroupList:
        data.groups = std::as_const(m_library).groups();
        data.containers = statesOf(data.groups);
        return true;
    case UndoAction::PhotoList:
        if (folder) {
            data.photos = std::as_const(*folder).photos();
            data.moment = std::make_shared<PhotoMoment>();
        }
        return folder != nullptr;
    case UndoAction::SingleContainer:
        if (context.container)
            data.containers = {ContainerState(context.container)};
        return context.container != nullptr;
    case UndoAction::EffectSets:
        data.effectSets = m_library.effectSets();
        return true;
    }
    return false;
}

bool LibraryUndo::undoOrRedo(UndoAction action, UndoName, UndoData &data, UndoDirection direction)
{
    if (!exchangeSnapshot(action, data)) {
        LogString("Can't undo or redo a change of kind %d", static_cast<int>(action));
        return false;
    }
    const bool wasDirty = m_library.isDirty();
    m_library.setDirty(std::exchange(data.dirty, wasDirty) || m_library.isDirtyForGood());
    show(action, data, direction);
    return true;
}

bool LibraryUndo::exchangeSnapshot(UndoAction action, UndoData &data)
{
    switch (action) {
    case UndoAction::Photo:
        return exchangePhoto(data);
    case UndoAction::WholeTree:
        return exchangeWholeTree(data);
    case UndoAction::FolderList:
        return exchangeFolderList(data);
    case UndoAction::GroupList:
        return exchangeGroupList(data);
    case UndoAction::PhotoList:
        return exchangePhotoList(data);
    case UndoAction::SingleContainer:
        return exchangeSingleContainer(data);
    case UndoAction::EffectSets:
        return exchangeEffectSets(data);
    }
    return false;
}

/// Makes the photo what it was; whoever shows it takes that up.
void LibraryUndo::takeBack(PIPhoto &photo, const PIPhoto &was)
{
    const bool isOtherPicture = photo.looksDifferent(was);
    photo.takeEdits(was);
    if (isOtherPicture)
        m_library.pictureChanged(photo);
    else
        m_library.notifications().post(kRedrawNotification, &photo);
}

bool LibraryUndo::exchangePhoto(UndoData &data)
{
    const auto folder = folderByGuid(data.containerGuid);
    const auto photo = folder && data.photo ? folder->findPhotoByGuid(data.photo->guid()) : nullptr;
    if (!photo)
        return false;
    const auto stored = std::exchange(data.photo, photo->copy());
    takeBack(*photo, *stored);
    return true;
}

/// Those photos that changed since the snapshot and are meant become what they were; the snapshot's moment is now.
void LibraryUndo::takePhotosBack(UndoData &data, const std::function<bool(const std::shared_ptr<PIPhoto> &)> &isMeant)
{
    const auto changes = data.moment->changes();
    data.moment = std::make_shared<PhotoMoment>();
    for (auto change = changes.cbegin(); change != changes.cend(); ++change) {
        if (isMeant(change.key()))
            takeBack(*change.key(), *change.value());
    }
}

bool LibraryUndo::exchangeWholeTree(UndoData &data)
{
    const QList<ContainerState> stored = std::exchange(data.containers, wholeTree(m_library));
    m_library.groups().swap(data.groups);
    for (const ContainerState &state : stored)
        state.restore();
    QSet<const PIPhoto *> held;
    const auto isHeld = [&](const std::shared_ptr<PIPhoto> &photo) {
        if (held.isEmpty()) // only now: mostly, no photo changed
            m_library.forEachPhoto([&](const std::shared_ptr<PIPhoto> &each) { held.insert(each.get()); });
        return held.contains(photo.get());
    };
    takePhotosBack(data, isHeld);
    return true;
}

bool LibraryUndo::exchangeFolderList(UndoData &data)
{
    const auto container = m_library.findContainerByGuid(data.containerGuid);
    if (!container)
        return false;
    const auto present = std::as_const(*container).folders();
    const QList<ContainerState> stored = std::exchange(data.containers, statesOf(present));
    setFolders(container, std::exchange(data.folders, present));
    for (const ContainerState &state : stored)
        state.restore();
    return true;
}

bool LibraryUndo::exchangeGroupList(UndoData &data)
{
    const auto present = std::as_const(m_library).groups();
    const QList<ContainerState> stored = std::exchange(data.containers, statesOf(present));
    m_library.groups() = std::exchange(data.groups, present);
    for (const ContainerState &state : stored)
        state.restore();
    return true;
}

bool LibraryUndo::exchangePhotoList(UndoData &data)
{
    const auto folder = folderByGuid(data.containerGuid);
    if (!folder)
        return false;
    folder->photos().swap(data.photos);
    const auto &photos = std::as_const(*folder).photos();
    QSet<std::shared_ptr<PIPhoto>> held;
    takePhotosBack(data, [&](const std::shared_ptr<PIPhoto> &photo) {
        if (held.isEmpty()) // only now: mostly, no photo changed
            held = {photos.cbegin(), photos.cend()};
        return held.contains(photo);
    });
    return true;
}

bool LibraryUndo::exchangeSingleContainer(UndoData &data)
{
    const auto item = m_library.findContainerByGuid(data.containerGuid);
    if (!item || item != data.containers.first().item())
        return false;
    const ContainerState stored = std::exchange(data.containers.first(), ContainerState(item));
    stored.restore();
    return true;
}

bool LibraryUndo::exchangeEffectSets(UndoData &data)
{
    m_library.effectSets().swap(data.effectSets);
    m_library.notifications().post(kEffectSetsNotification);
    return true;
}

void LibraryUndo::show(UndoAction action, const UndoData &data, UndoDirection direction)
{
    m_view.abortEditing();
    m_view.forgetLostFolders();
    const auto shown = direction == UndoDirection::Undo ? folderByGuid(data.shownFolderGuid) : nullptr;
    const auto container = m_library.findContainerByGuid(data.containerGuid);
    const std::shared_ptr<PIGroup> item = shown ? shown : container;
    const bool isList =
        action == UndoAction::Photo || action == UndoAction::PhotoList || action == UndoAction::EffectSets;
    if (isList)
        m_view.selectRow(item);
    else
        m_view.resetList(item);
    const auto photos = action == UndoAction::Photo ? m_view.shownFolder() : nullptr;
    const auto photo = photos && data.photo ? photos->findPhotoByGuid(data.photo->guid()) : nullptr;
    if (photo)
        m_view.selectIndexes(IndexSet::single(photos->photos().indexOf(photo)));
    else if (shown)
        m_view.selectIndexes(data.selection);
    m_library.notifications().post(kSelectNotification, m_view.currentPhoto());
}

std::shared_ptr<PIFolder> LibraryUndo::folderByGuid(const QString &guid) const
{
    const auto found = guid.isEmpty() ? nullptr : m_library.findContainerByGuid(guid);
    return found && found->asFolder() ? std::static_pointer_cast<PIFolder>(found) : nullptr;
}

QString LibraryUndo::undoActionName(UndoName descriptor, const UndoData &) const
{
    return undoName(descriptor);
}

bool LibraryUndo::coalesceUndoAction(UndoAction action, UndoName descriptor, const UndoData &data,
                                     const UndoContext &context) const
{
    if (action == UndoAction::SingleContainer)
        return context.container && context.container->guid() == data.containerGuid;
    const bool isTyped =
        descriptor == UndoName::Crop || descriptor == UndoName::Caption || descriptor == UndoName::Keywords;
    return action == UndoAction::Photo && isTyped && context.photo && data.photo &&
           context.photo->guid() == data.photo->guid();
}

/// Nothing was changed, so that the library is as clean as it was.
void LibraryUndo::didPopUndoAction(UndoAction, UndoName, const UndoData &data)
{
    m_library.setDirty(data.dirty || m_library.isDirtyForGood());
}
