#pragma once

#include "LibraryView.h"
#include "PhotoLibrary.h"

/// A window of three facts: what is shown, what is selected, and in the navigator which item.
struct FakeLibraryView final : LibraryView
{
    const PhotoLibrary &library;
    explicit FakeLibraryView(const PhotoLibrary &shown)
        : library(shown)
    {}
    std::shared_ptr<PIFolder> folder;
    std::shared_ptr<PIGroup> item;
    IndexSet selection;
    int resets = 0;
    QStringList forgotten;
    std::function<void(const IndexSet &)> selected; ///< told of every selection that is asked for

    std::shared_ptr<PIFolder> shownFolder() const override { return folder; }
    IndexSet selectedIndexes() const override { return selection; }
    std::shared_ptr<PIGroup> selectedItem() const override { return item; }
    void resetList(const std::shared_ptr<PIGroup> &shown) override
    {
        ++resets;
        if (shown)
            item = shown;
        else if (!item || library.findContainerByGuid(item->guid()))
            return;
        else
            item = nullptr; // it has left the library
        folder = item && item->asFolder() ? std::static_pointer_cast<PIFolder>(item) : nullptr;
    }
    void selectIndexes(const IndexSet &indexes) override
    {
        selection = indexes;
        if (selected)
            selected(indexes);
    }
    std::shared_ptr<PIPhoto> currentPhoto() const override
    {
        const auto first = selection.first();
        return folder && first && *first < folder->photos().size() ? folder->photos().at(*first) : nullptr;
    }
    void selectRow(const std::shared_ptr<PIGroup> &shown) override { resetList(shown); }
    void abortEditing() override {}
    void forgetFolder(const std::shared_ptr<PIFolder> &gone) override { forgotten << gone->name(); }
    void forgetLostFolders() override {}
};
