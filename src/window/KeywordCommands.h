#pragma once

class LibraryActions;
class LibraryEditor;
class QVUndoManager;
class QWidget;

/// Lets the actions run the commands on keywords, with sheets over the window. All outlive the window.
void bindKeywordCommands(LibraryEditor &editor, QVUndoManager &undo, LibraryActions &actions, QWidget &window);
