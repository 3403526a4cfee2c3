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
    FindOrphans,
    NewGroup,
    NewFolder,
    Save,
    ClearCaches,
    Quit,
    Undo,
    Redo,
    SelectAll,
    Rename,
    ShowSelection,
    ShowCaptions,
    ShowDates,
    ShowFileNames,
    FewerColumns,
    MoreColumns,
    ShowDetail,
    FullScreen,
    Back,
    Forward,
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
    bool checkable = false;

    /// The keys as they are on this desktop, the one to be shown first.
    [[nodiscard]] QList<QKeySequence> shortcuts() const;
};

/// All commands with their standard shortcuts, in one place.
[[nodiscard]] std::span<const CommandInfo> commandTable();
