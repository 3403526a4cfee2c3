#pragma once

class LibraryActions;
class LibraryWindow;
class ThumbnailGridView;
class UserDefaults;

/// Lets the commands for what the grid shows, and how large, change the grid and the user's preferences, and brings the
/// grid to what the preferences say; lets the window fill the screen. All outlive the window that they belong to.
void bindViewCommands(LibraryActions &actions, ThumbnailGridView &grid, LibraryWindow &window, UserDefaults &defaults);
