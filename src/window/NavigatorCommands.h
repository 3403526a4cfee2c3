#pragma once

#include "TreeEdits.h"

#include <QObject>

/// The commands on the group or folder that is selected in the navigator.
class NavigatorCommands final : public QObject
{
    Q_OBJECT

public:
    /// `editor` outlives it.
    explicit NavigatorCommands(LibraryEditor &editor, QObject *parent = nullptr);

    [[nodiscard]] TreeEdits &edits() { return m_edits; }
    /// Asks, and takes the selected item with all it holds out of the library.
    void deleteItem();
    /// Moves the selected item so many places down (up below 0).
    void moveBy(int places);
    [[nodiscard]] bool canMoveBy(int places) const;

private:
    LibraryEditor &m_editor;
    TreeEdits m_edits;
};
