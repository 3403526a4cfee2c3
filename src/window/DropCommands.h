#pragma once

#include "NavigatorDrop.h"
#include "PhotoEdits.h"
#include "TreeEdits.h"

#include <QStringList>

#include <functional>

class QDropEvent;

/// What drops on the navigator and the grid do to the library.
class DropCommands
{
public:
    /// Brings files and folders into the library, behind the photo at `atIndex`.
    using OpenFiles = std::function<void(const QStringList &paths, const std::shared_ptr<PIFolder> &toFolder,
                                         quint64 atIndex, UndoName undoName)>;

    /// `editor` outlives it.
    DropCommands(LibraryEditor &editor, OpenFiles openFiles);

    void dropOnNavigator(const QDropEvent &event, const NavigatorDrop &place);
    /// Before the photo at position `before` of the folder on show.
    void dropOnGrid(const QDropEvent &event, int before);

private:
    void dropFiles(const QStringList &paths, const std::shared_ptr<PIGroup> &item);

    LibraryEditor &m_editor;
    OpenFiles m_openFiles;
    PhotoEdits m_photoEdits;
    TreeEdits m_treeEdits;
};
