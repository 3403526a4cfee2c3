#pragma once

#include "IndexSet.h"

#include <memory>

class PIFolder;
class PIGroup;

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

    /// Rebuilds the navigator from the library; selects, centres and shows the item when one is given.
    virtual void resetList(const std::shared_ptr<PIGroup> &item) = 0;
    /// Selects exactly these positions in the grid and scrolls to them.
    virtual void selectIndexes(const IndexSet &indexes) = 0;
};
