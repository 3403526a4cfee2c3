#pragma once

#include <QKeySequence>
#include <QList>

#include <array>
#include <span>
#include <variant>

/// Every command of the library window.
enum class Command {
    AddFiles,
    AddFolder,
    TakeOverWords,
    FindOrphans,
    SearchAgain,
    NewGroup,
    NewFolder,
    Save,
    ClearCaches,
    SaveImageAs,
    ExportPhotos,
    EmailPhotos,
    PageSetup,
    PrintSelected,
    PrintFolder,
    Quit,
    Undo,
    Redo,
    Cut,
    Copy,
    Paste,
    Delete,
    Trash,
    SelectAll,
    SelectMarked,
    SelectUncropped,
    Find,
    FindAgain,
    FindPrevious,
    QuickSearch,
    Rename,
    ToggleMark,
    RenameFiles,
    IncrementDate,
    AddKeyword,
    ManageKeywords,
    ExtractFolder,
    CopyToNewFolder,
    MoveToFolder,
    MoveUp,
    MoveDown,
    Crop,
    ClearCrop,
    EditEffects,
    ClearEffects,
    SaveEffectSet,
    ManageEffectSets,
    SortByName,
    SortByDate,
    SortAtRandom,
    Reveal,
    EditImage,
    ShowSelection,
    ShowCaptions,
    ShowDates,
    ShowFileNames,
    PreviewSelection,
    PreviewFolder,
    FewerColumns,
    MoreColumns,
    ZoomPhotoIn,
    ZoomPhotoOut,
    FitPhoto,
    PhotoAtFullSize,
    ShowDetail,
    FullScreen,
    Back,
    Forward,
    NextPhoto,
    PreviousPhoto,
};

/// What must be so for a command to be enabled.
enum class EnabledWhen {
    Always,
    NothingIsImported,
    LibraryIsDirty,
    CanUndo,
    CanRedo,
    PhotosAreSelected,
    OnePhotoIsSelected,
    SeveralPhotosAreSelected,
    PhotoIsCurrent,
    CanCrop,
    CanZoomPhoto,
    CropSizeIsChosen, ///< and a folder is shown
    PhotoHasEffects,  ///< the current one
    ThereAreEffectSets,
    CanPaste,
    CanFindAgain,
    FolderIsShown,
    ItemCanBeRenamed,
    CanDelete,
    CanMoveToFolder,
    CanMoveUp,
    CanMoveDown,
    HasRoomForLargerTiles,
    HasRoomForSmallerTiles,
    CanGoBack,
    CanGoForward,
};

/// What a menu, a toolbar and a tool tip need to know of a command. Texts are translated where they are shown.
struct CommandInfo
{
    Command command;
    const char *text;
    const char *toolTip;
    const char *iconName; ///< of the icon theme, and of our own set where the theme has none; may be empty
    using Shortcut = std::variant<std::monostate, QKeySequence::StandardKey, QKeyCombination>;
    std::array<Shortcut, 2> keys = {};
    EnabledWhen enabledWhen = EnabledWhen::Always;
    bool checkable = false;

    /// The keys as they are on this desktop, the one to be shown first.
    [[nodiscard]] QList<QKeySequence> shortcuts() const;
};

/// All commands with their standard shortcuts, in one place.
[[nodiscard]] std::span<const CommandInfo> commandTable();
