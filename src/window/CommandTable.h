#pragma once

#include <QKeySequence>
#include <QList>

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
    QList<QKeySequence> shortcuts;
    bool checkable = false;
};

/// All commands with their standard shortcuts, in one place.
[[nodiscard]] const QList<CommandInfo> &commandTable();
