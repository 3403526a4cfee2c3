#pragma once

#include "CommandTable.h"

#include <QString>

/// What decides which commands are enabled and what they are called, as it is at one moment.
struct CommandState
{
    int selectedPhotos = 0;
    bool isPhotoCurrent = false;
    bool canCropPhoto = false; ///< the current one, whose file can be shown
    bool canZoomPhoto = false; ///< the current one
    bool isCropping = false;
    bool isCropSizeChosen = false;
    bool hasPhotoEffects = false; ///< the current one
    bool hasEffectSets = false;
    bool isFolderShown = false;
    bool isDirty = false;
    bool isImporting = false;
    bool canPaste = false;
    bool canFindAgain = false;
    bool canUndo = false;
    bool canRedo = false;
    bool canGoBack = false;
    bool canGoForward = false;
    bool hasRoomForLargerTiles = false;
    bool hasRoomForSmallerTiles = false;
    bool isItemMeant = false; ///< the item selected in the navigator, else photos
    bool isItemSelected = false;
    bool isItemFolder = false;
    bool canRenameItem = false;
    bool canMoveUp = false; ///< what is meant
    bool canMoveDown = false;

    [[nodiscard]] bool isEnabled(EnabledWhen when) const;
    /// What the delete command removes now.
    [[nodiscard]] QString deleteTitle() const;
    /// What the crop command does now.
    [[nodiscard]] QString cropTitle() const;
};
