#include "NavigatorDrop.h"

#include "PIFolder.h"
#include "PhotoLibrary.h"

namespace {

NavigatorDrop groupDrop(const PhotoLibrary &library, const std::shared_ptr<PIGroup> &item, int childIndex)
{
    const auto &groups = library.groups();
    const auto toTopLevel = [](qsizetype index) {
        return NavigatorDrop{nullptr, static_cast<int>(index), NavigatorDrop::Effect::Move};
    };
    if (item) {
        const auto top = PhotoLibrary::groupForFolder(item);
        const bool isOntoGroup = item == top && childIndex == NavigatorDrop::kOntoItem;
        return toTopLevel(groups.indexOf(top) + (isOntoGroup ? 0 : 1));
    }
    if (childIndex == NavigatorDrop::kOntoItem || childIndex > groups.size())
        return {};
    // Between two groups means behind the lower one; at the end means last.
    return toTopLevel(childIndex == groups.size() ? childIndex : childIndex + 1);
}

}

NavigatorDrop NavigatorDrop::validate(const PhotoLibrary &library, Kind kind,
                                      const std::shared_ptr<PIGroup> &proposedItem, int proposedChildIndex)
{
    switch (kind) {
    case Kind::Folder:
        return {proposedItem, proposedChildIndex, Effect::Move};
    case Kind::Group:
        return groupDrop(library, proposedItem, proposedChildIndex);
    case Kind::Photos:
        return {proposedItem, kOntoItem, proposedItem ? Effect::Copy : Effect::Refused};
    case Kind::Files:
        return {proposedItem, kOntoItem, Effect::Copy};
    }
    return {};
}
