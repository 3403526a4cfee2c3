#pragma once

#include "LibraryEditor.h"

/// Changes to the order and place of groups and folders, as the navigator offers them. Main thread.
class TreeEdits
{
public:
    explicit TreeEdits(LibraryEditor &editor)
        : m_editor(editor)
    {}

    /// Moves the folder into `toItem`, before what stands at `childIndex` there; to the end when there is no such
    /// place. Without an item it goes to the end of the group at `childIndex`, or of the last one. False when refused,
    /// as for a folder dropped onto itself or into what is beneath it.
    bool moveFolder(const std::shared_ptr<PIFolder> &folder, const std::shared_ptr<PIGroup> &toItem, int childIndex);
    /// A folder cannot go into itself or anything beneath it: it would be cut off from the library.
    [[nodiscard]] static bool canMoveInto(const std::shared_ptr<PIGroup> &item, const PIFolder &folder);
    /// Moves a group before the one at `childIndex`; to the end when there is none. False when refused.
    bool moveGroup(const std::shared_ptr<PIGroup> &group, int childIndex);
    /// Moves the group or folder so many places down (up below 0) among its neighbours; false at either end.
    bool moveBy(const std::shared_ptr<PIGroup> &item, int places);
    [[nodiscard]] bool canMoveBy(const std::shared_ptr<PIGroup> &item, int places) const;
    /// Takes the group or folder with all it holds out of the library; the photos' files stay. A neighbour is selected
    /// if what was selected is gone. False when refused.
    bool deleteItem(const std::shared_ptr<PIGroup> &item);

private:
    /// What may be selected now that it is gone; null for nothing. Nothing at all when refused.
    using Neighbour = std::optional<std::shared_ptr<PIGroup>>;
    [[nodiscard]] Neighbour removeFolder(const std::shared_ptr<PIFolder> &folder);
    [[nodiscard]] Neighbour removeGroup(const std::shared_ptr<PIGroup> &group);
    [[nodiscard]] bool record(UndoAction action, UndoName name, const std::shared_ptr<PIGroup> &container = nullptr);

    LibraryEditor &m_editor;
};
