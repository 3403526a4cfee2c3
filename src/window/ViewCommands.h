#pragma once

class LibraryActions;
class ThumbnailGridView;
class UserDefaults;

/// Lets the commands for what the grid shows, and how large, change the grid and the user's preferences; brings the
/// grid to what the preferences say. All outlive the window that they belong to.
void bindViewCommands(LibraryActions &actions, ThumbnailGridView &grid, UserDefaults &defaults);
