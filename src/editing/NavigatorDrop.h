#pragma once

#include <memory>

class PIGroup;
class PhotoLibrary;

/// A place in the navigator where something may be dropped.
struct NavigatorDrop
{
    enum class Kind { Folder, Group, Photos, Files };
    enum class Effect { Refused, Move, Copy };
    static constexpr int kOntoItem = -1;

    std::shared_ptr<PIGroup> item; ///< null: the top level, between the groups
    int childIndex = kOntoItem;    ///< before which child of the item; kOntoItem: onto the item as a whole
    Effect effect = Effect::Refused;

    /// Where a drop at the proposed place really goes, and whether it may: groups stay at the top level, photos and
    /// files go into the item as a whole, folders anywhere.
    [[nodiscard]] static NavigatorDrop validate(const PhotoLibrary &library, Kind kind,
                                                const std::shared_ptr<PIGroup> &proposedItem, int proposedChildIndex);
};
