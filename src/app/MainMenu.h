#pragma once

class LibraryActions;
class QMenu;
class QMainWindow;

/// Arranges the commands, and the menus of crop sizes and effect sets, in the window's menu bar and toolbar.
void buildMainMenu(QMainWindow &window, LibraryActions &actions, QMenu &cropSizes, QMenu &effectSets);
