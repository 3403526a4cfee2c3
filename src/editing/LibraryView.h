#pragma once

#include "IndexSet.h"

#include <memory>

class PIFolder;
class PIGroup;
class PIPhoto;

/// How changes to the library see the window, and what they ask of it. Main thread.
class LibraryView
{
public:
    virtual ~LibraryView() = default;

    /// The folder whose photos the grid shows; null when none.
    [[nodiscard]] virtual std::shared_ptr<PIFolder> shownFolder() const = 0;
    /// Positions selected in the grid.
    [[nodiscard]] virtual IndexSet selectedIndexes() const = 0;
    /// The group or folder selected in the navigator; null when none.
    [[nodiscard]] virtual std::shared_ptr<PIGroup> selectedItem() const = 0;
    /// The photo in the detail pane; null when none.
    [[nodiscard]] virtual std::shared_ptr<PIPhoto> currentPhoto() const = 0;

    /// Rebuilds the navigator from the library; selects, centres and shows the item when one is given.
    virtual void resetList(const std::shared_ptr<PIGroup> &item) = 0;
    /// Selects exactly these positions in the grid and scrolls to them.
    virtual void selectIndexes(const IndexSet &indexes) = 0;
    /// Selects the item's row in the navigator (none when null: the selection stays) and reloads the grid.
    virtual void selectRow(const std::shared_ptr<PIGroup> &item) = 0;
    /// Gives up a name that is being edited in the navigator.
    virtual void abortEditing() = 0;
    /// The folder is about to be deleted with all beneath it: it leaves the history of folders visited.
    virtual void forgetFolder(const std::shared_ptr<PIFolder> &folder) = 0;
    /// Folders may have left the library: they leave the history of folders visited.
    virtual void forgetLostFolders() = 0;
};
