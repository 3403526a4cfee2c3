#include "TreeEdits.h"

#include "LibraryView.h"
#include "PIFolder.h"
#include "PhotoLibrary.h"

#include <optional>
#include <utility>

namespace {

struct Place
{
    std::shared_ptr<PIGroup> container;
    qsizetype index = 0;
};

std::optional<Place> placeFor(const PhotoLibrary &library, const std::shared_ptr<PIGroup> &toItem, int childIndex)
{
    const auto &groups = library.groups();
    if (!toItem && groups.isEmpty())
        return std::nullopt;
    const auto isIn = [childIndex](const auto &list) { return childIndex >= 0 && childIndex < list.size(); };
    const auto container = toItem ? toItem : isIn(groups) ? groups[childIndex] : groups.last();
    const auto &folders = std::as_const(*container).folders();
    return Place{container, toItem && isIn(folders) ? childIndex : folders.size()};
}

/// Whether `item` is `ancestor` or stands beneath it.
bool isWithin(std::shared_ptr<PIGroup> item, const PIGroup *ancestor)
{
    while (item && item.get() != ancestor)
        item = item->asFolder() ? item->asFolder()->parent() : nullptr;
    return item != nullptr;
}

/// The one behind it, else the one before it; null when there is no other.
template<typename Item>
std::shared_ptr<PIGroup> neighbourIn(const QList<std::shared_ptr<Item>> &list, qsizetype index)
{
    if (index + 1 < list.size())
        return list[index + 1];
    return index > 0 ? list[index - 1] : nullptr;
}

qsizetype indexOf(const QList<std::shared_ptr<PIFolder>> &list, const PIGroup *item)
{
    qsizetype index = 0;
    while (index < list.size() && list[index].get() != item)
        ++index;
    return index < list.size() ? index : -1;
}

}

bool TreeEdits::record(UndoAction action, UndoName name, const std::shared_ptr<PIGroup> &container)
{
    return m_editor.recorder().setUndoAction(action, name, {.container = container, .photo = {}});
}

bool TreeEdits::canMoveInto(const std::shared_ptr<PIGroup> &item, const PIFolder &folder)
{
    return !isWithin(item, &folder);
}

bool TreeEdits::moveFolder(const std::shared_ptr<PIFolder> &folder, const std::shared_ptr<PIGroup> &toItem,
                           int childIndex)
{
    const auto parent = folder->parent();
    if (!parent || !canMoveInto(toItem, *folder))
        return false;
    auto to = placeFor(m_editor.library(), toItem, childIndex);
    if (!to)
        return false;
    const bool staysInList = to->container == parent;
    const bool recorded = staysInList ? record(UndoAction::FolderList, UndoName::MoveFolder, parent)
                                      : record(UndoAction::WholeTree, UndoName::MoveFolder);
    if (!recorded)
        return false;
    const qsizetype oldIndex = parent->folders().indexOf(folder);
    parent->folders().removeAt(oldIndex);
    if (staysInList && oldIndex < to->index)
        --to->index;
    folder->setParent(to->container);
    to->container->folders().insert(to->index, folder);
    folder->enforceVisibility();
    m_editor.view().resetList(folder);
    return true;
}

bool TreeEdits::moveGroup(const std::shared_ptr<PIGroup> &group, int childIndex)
{
    auto &groups = m_editor.library().groups();
    const qsizetype oldIndex = groups.indexOf(group);
    if (oldIndex < 0 || !record(UndoAction::GroupList, UndoName::MoveGroup))
        return false;
    const bool toEnd = childIndex < 0 || childIndex >= groups.size();
    groups.removeAt(oldIndex);
    const qsizetype index = toEnd ? groups.size() : oldIndex < childIndex ? childIndex - 1 : childIndex;
    groups.insert(index, group);
    const auto selected = m_editor.view().selectedItem();
    m_editor.view().resetList(PhotoLibrary::groupForFolder(selected) == group ? selected : group);
    return true;
}

namespace {

/// Where the item stands among how many.
std::pair<qsizetype, qsizetype> rank(PhotoLibrary &library, const std::shared_ptr<PIGroup> &item)
{
    if (const PIFolder *folder = item->asFolder()) {
        const auto parent = folder->parent();
        return parent ? std::pair(indexOf(parent->folders(), folder), parent->folders().size())
                      : std::pair<qsizetype, qsizetype>(-1, 0);
    }
    return {library.groups().indexOf(item), library.groups().size()};
}

}

bool TreeEdits::canMoveBy(const std::shared_ptr<PIGroup> &item, int places) const
{
    if (!item || places == 0)
        return false;
    const auto [index, count] = rank(m_editor.library(), item);
    return index >= 0 && index + places >= 0 && index + places < count;
}

bool TreeEdits::moveBy(const std::shared_ptr<PIGroup> &item, int places)
{
    if (!canMoveBy(item, places))
        return false;
    // Drops are told by what they go before, and moving down the item itself still counts.
    const auto before = static_cast<int>(rank(m_editor.library(), item).first) + places + (places > 0 ? 1 : 0);
    const PIFolder *folder = item->asFolder();
    return folder ? moveFolder(std::static_pointer_cast<PIFolder>(item), folder->parent(), before)
                  : moveGroup(item, before);
}

bool TreeEdits::deleteItem(const std::shared_ptr<PIGroup> &item)
{
    LibraryView &view = m_editor.view();
    const bool takesSelected = isWithin(view.selectedItem(), item.get());
    const Neighbour neighbour =
        item->asFolder() ? removeFolder(std::static_pointer_cast<PIFolder>(item)) : removeGroup(item);
    if (!neighbour)
        return false;
    view.resetList(takesSelected ? *neighbour : nullptr);
    return true;
}

TreeEdits::Neighbour TreeEdits::removeFolder(const std::shared_ptr<PIFolder> &folder)
{
    const auto parent = folder->parent();
    if (!parent || !record(UndoAction::FolderList, UndoName::DeleteFolder, parent))
        return std::nullopt;
    auto &folders = parent->folders();
    const qsizetype index = folders.indexOf(folder);
    const auto neighbour = neighbourIn(folders, index);
    m_editor.view().forgetFolder(folder);
    folders.removeAt(index);
    folder->setParent(nullptr);
    return neighbour ? neighbour : parent;
}

TreeEdits::Neighbour TreeEdits::removeGroup(const std::shared_ptr<PIGroup> &group)
{
    auto &groups = m_editor.library().groups();
    const qsizetype index = groups.indexOf(group);
    if (index < 0 || !record(UndoAction::GroupList, UndoName::DeleteGroup))
        return std::nullopt;
    const auto neighbour = neighbourIn(groups, index);
    for (const auto &folder : std::as_const(group->folders()))
        m_editor.view().forgetFolder(folder);
    groups.removeAt(index);
    return neighbour;
}
