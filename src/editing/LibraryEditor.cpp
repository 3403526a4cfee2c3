#include "LibraryEditor.h"

#include "FormatMessage.h"
#include "IndexSet.h"
#include "LibraryView.h"
#include "PIFolder.h"
#include "PhotoLibrary.h"
#include "QVDayIndexFormatter.h"

#include <QCoreApplication>
#include <QDateTime>

#include <algorithm>

LibraryEditor::LibraryEditor(PhotoLibrary &library, LibraryView &view, UndoRecorder &recorder)
    : m_library(library)
    , m_view(view)
    , m_recorder(recorder)
{}

bool LibraryEditor::addPhotos(const PIGroup::PhotoList &photos, std::shared_ptr<PIFolder> toFolder, quint64 atIndex,
                              UndoName undoName)
{
    if (photos.isEmpty())
        return false;
    if (!toFolder) {
        const auto target = selectOrCreateFolder(undoName);
        if (!target)
            return false;
        toFolder = target->folder;
        atIndex = target->insertIndex;
    }
    if (undoName != UndoName::AlreadyRecorded &&
        !m_recorder.setUndoAction(UndoAction::PhotoList, undoName, {.container = toFolder, .photo = {}}))
        return false;

    PIGroup::PhotoList &list = toFolder->photos();
    const bool inside = atIndex < static_cast<quint64>(list.size());
    const qsizetype first = inside ? static_cast<qsizetype>(atIndex) + 1 : list.size();
    list.insert(first, photos.size(), nullptr);
    std::copy(photos.begin(), photos.end(), list.begin() + first);

    m_view.resetList(toFolder);
    m_view.selectIndexes(IndexSet::range(first, photos.size()));
    return true;
}

namespace {

/// The library's last group; a new one when there is none.
std::shared_ptr<PIGroup> lastOrNewGroup(PhotoLibrary &library, UndoRecorder &recorder, UndoName &undoName)
{
    if (!library.groups().isEmpty())
        return library.groups().last();
    if (undoName != UndoName::AlreadyRecorded && !recorder.setUndoAction(UndoAction::GroupList, undoName, {}))
        return nullptr;
    undoName = UndoName::AlreadyRecorded;
    auto group = std::make_shared<PIGroup>(QCoreApplication::translate("LibraryEditor", "New Group"));
    library.groups().append(group);
    return group;
}

}

std::optional<LibraryEditor::Target> LibraryEditor::selectOrCreateFolder(UndoName &undoName)
{
    if (const auto shown = m_view.shownFolder()) {
        const auto first = m_view.selectedIndexes().first();
        return Target{shown, first ? static_cast<quint64>(*first) : kNotFound, false};
    }
    std::shared_ptr<PIGroup> group = m_view.selectedItem();
    if (group && group->asFolder())
        return Target{std::static_pointer_cast<PIFolder>(group), kNotFound, false};
    if (!group)
        group = lastOrNewGroup(m_library, m_recorder, undoName);
    if (!group)
        return std::nullopt;

    const bool created = group->folders().isEmpty();
    if (created && undoName != UndoName::AlreadyRecorded) {
        if (!m_recorder.setUndoAction(UndoAction::FolderList, undoName, {.container = group, .photo = {}}))
            return std::nullopt;
        undoName = UndoName::AlreadyRecorded;
    }
    return Target{group->lastFolder(), kNotFound, created};
}

std::shared_ptr<PIGroup> LibraryEditor::newGroup()
{
    if (!m_recorder.setUndoAction(UndoAction::GroupList, UndoName::AddGroup, {}))
        return nullptr;
    auto group = std::make_shared<PIGroup>(QCoreApplication::translate("LibraryEditor", "New Group"));
    group->makeNewFolder();
    m_library.groups().append(group);
    m_view.resetList(group);
    return group;
}

std::shared_ptr<PIGroup> LibraryEditor::newFolder()
{
    std::shared_ptr<PIGroup> container = m_view.selectedItem();
    if (!container) {
        if (m_library.groups().isEmpty())
            return newGroup();
        container = m_library.groups().last();
    }
    if (!m_recorder.setUndoAction(UndoAction::FolderList, UndoName::AddFolder, {.container = container, .photo = {}}))
        return nullptr;
    container->enforceVisibility();
    const auto folder = container->makeNewFolder();
    m_view.resetList(folder);
    return folder;
}

namespace {

QString specialGroupName(GroupType type)
{
    return type == GroupType::Search ? QCoreApplication::translate("LibraryEditor", "Search Results")
                                     : QCoreApplication::translate("LibraryEditor", "Undeleted Files");
}

}

std::shared_ptr<PIFolder> LibraryEditor::makeSpecialGroupFolder(GroupType type)
{
    if (type == GroupType::Normal)
        return nullptr;
    QList<std::shared_ptr<PIGroup>> &groups = m_library.groups();
    const auto found = std::find_if(groups.cbegin(), groups.cend(),
                                    [type](const auto &candidate) { return candidate->groupType() == type; });
    std::shared_ptr<PIGroup> group = found == groups.cend() ? nullptr : *found;
    if (!m_recorder.setUndoAction(group ? UndoAction::FolderList : UndoAction::GroupList, UndoName::AddSearchResults,
                                  {.container = group, .photo = {}}))
        return nullptr;
    if (!group) {
        group = std::make_shared<PIGroup>(specialGroupName(type));
        group->setGroupType(type);
        groups.append(group);
    }
    const DayIndex today = DayIndexForDate(QDateTime::currentDateTime());
    const auto folder = group->makeNewFolder();
    folder->setName(FormatMessage(QStringLiteral("%4d/%02d/%02d-%d"),
                                  {today / 10000, today / 100 % 100, today % 100, ++m_specialFolders[type]}));
    return folder;
}

bool LibraryEditor::rename(const std::shared_ptr<PIGroup> &item, const QString &name)
{
    if (name.trimmed().isEmpty() || name == item->name() || !canRename(*item))
        return false;
    const UndoName undoName = item->asFolder() ? UndoName::RenameFolder : UndoName::RenameGroup;
    if (!m_recorder.setUndoAction(UndoAction::SingleContainer, undoName, {.container = item, .photo = {}}))
        return false;
    item->setName(name);
    return true;
}

bool LibraryEditor::canRename(const PIGroup &item)
{
    return item.asFolder() || item.groupType() == GroupType::Normal;
}
