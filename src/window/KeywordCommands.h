#pragma once

#include <QObject>

class LibraryActions;
class LibraryEditor;
class QVUndoManager;
class QWidget;

/// The commands on keywords.
class KeywordCommands final : public QObject
{
    Q_OBJECT

public:
    /// Lets the actions run the commands. All outlive it; `window` becomes its parent.
    KeywordCommands(LibraryEditor &editor, QVUndoManager &undo, LibraryActions &actions, QWidget &window);
};
