#pragma once

class LibraryActions;
class QMainWindow;

/// Arranges the commands in the window's menu bar and toolbar.
void buildMainMenu(QMainWindow &window, LibraryActions &actions);
