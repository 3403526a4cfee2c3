#pragma once

#include "TreeEdits.h"

#include <QObject>

class QWidget;

/// The commands on the group or folder that is selected in the navigator.
class NavigatorCommands final : public QObject
{
    Q_OBJECT

public:
    /// Both outlive it.
    NavigatorCommands(LibraryEditor &editor, QWidget &window);

    [[nodiscard]] TreeEdits &edits() { return m_edits; }
    /// Asks, and takes the selected item with all it holds out of the library.
    void deleteItem();
    /// Asks where the selected folder is to stand, and moves it there.
    void moveToFolder();
    /// Moves the selected item so many places down (up below 0).
    void moveBy(int places);
    [[nodiscard]] bool canMoveBy(int places) const;

private:
    LibraryEditor &m_editor;
    QWidget &m_window;
    TreeEdits m_edits;
};
