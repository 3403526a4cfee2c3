#pragma once

#include "LibraryView.h"
#include "PIFolder.h"

/// A window of three facts: what is shown, what is selected, and in the navigator which item.
struct FakeLibraryView final : LibraryView
{
    std::shared_ptr<PIFolder> folder;
    std::shared_ptr<PIGroup> item;
    IndexSet selection;
    int resets = 0;

    std::shared_ptr<PIFolder> shownFolder() const override { return folder; }
    IndexSet selectedIndexes() const override { return selection; }
    std::shared_ptr<PIGroup> selectedItem() const override { return item; }
    void resetList(const std::shared_ptr<PIGroup> &shown) override
    {
        ++resets;
        if (!shown)
            return;
        item = shown;
        folder = shown->asFolder() ? std::static_pointer_cast<PIFolder>(shown) : nullptr;
    }
    void selectIndexes(const IndexSet &indexes) override { selection = indexes; }
};
