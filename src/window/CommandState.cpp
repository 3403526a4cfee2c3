#include "CommandState.h"

#include <QCoreApplication>

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("Command", text);
}

}

bool CommandState::isEnabled(EnabledWhen when) const
{
    const bool photosAreSelected = selectedPhotos > 0;
    switch (when) {
    case EnabledWhen::Always:
        return true;
    case EnabledWhen::NothingIsImported:
        return !isImporting;
    case EnabledWhen::LibraryIsDirty:
        return isDirty && !isImporting;
    case EnabledWhen::CanUndo:
        return canUndo && !isImporting;
    case EnabledWhen::CanRedo:
        return canRedo && !isImporting;
    case EnabledWhen::PhotosAreSelected:
        return photosAreSelected;
    case EnabledWhen::OnePhotoIsSelected:
        return selectedPhotos == 1;
    case EnabledWhen::SeveralPhotosAreSelected:
        return selectedPhotos > 1;
    case EnabledWhen::PhotoIsCurrent:
        return isPhotoCurrent;
    case EnabledWhen::CanCrop:
        return selectedPhotos == 1 && canCropPhoto;
    case EnabledWhen::CanZoomPhoto:
        return canZoomPhoto;
    case EnabledWhen::CropSizeIsChosen:
        return isFolderShown && isCropSizeChosen;
    case EnabledWhen::PhotoHasEffects:
        return hasPhotoEffects;
    case EnabledWhen::ThereAreEffectSets:
        return hasEffectSets;
    case EnabledWhen::CanPaste:
        return canPaste;
    case EnabledWhen::CanFindAgain:
        return canFindAgain;
    case EnabledWhen::FolderIsShown:
        return isFolderShown;
    case EnabledWhen::ItemCanBeRenamed:
        return canRenameItem;
    case EnabledWhen::CanDelete:
        return isItemMeant ? isItemSelected && !isImporting : photosAreSelected;
    case EnabledWhen::CanMoveToFolder:
        return isItemMeant ? isItemFolder && !isImporting : photosAreSelected;
    case EnabledWhen::CanMoveUp:
        return canMoveUp;
    case EnabledWhen::CanMoveDown:
        return canMoveDown;
    case EnabledWhen::HasRoomForLargerTiles:
        return hasRoomForLargerTiles;
    case EnabledWhen::HasRoomForSmallerTiles:
        return hasRoomForSmallerTiles;
    case EnabledWhen::CanGoBack:
        return canGoBack;
    case EnabledWhen::CanGoForward:
        return canGoForward;
    }
    return false;
}

QString CommandState::deleteTitle() const
{
    if (!isItemMeant)
        return tr("Delete Photo");
    return isItemFolder || !isItemSelected ? tr("Delete Folder") : tr("Delete Group");
}

QString CommandState::cropTitle() const
{
    return isCropping ? tr("Cancel Crop") : tr("Crop");
}
