#pragma once

#include "CommandState.h"

#include <QObject>

#include <memory>

class LibraryActions;
class LibraryEditor;
class NavigatorCommands;
class PhotoCommands;
class PIDetailController;
class PIFolder;
class PIOutlineView;
class PIPhoto;
class QVUndoManager;
class ThumbnailGridView;
enum class StepDirection;

/// The commands that change photos, folders and groups: which pane they mean, and what they then do.
class EditCommands final : public QObject
{
    Q_OBJECT

public:
    struct Panes
    {
        PIOutlineView &outline;
        ThumbnailGridView &grid;
        PIDetailController &detail;
    };

    /// Gives the panes their context menus and lets the actions run the commands. All outlive it.
    EditCommands(LibraryEditor &editor, QVUndoManager &undo, LibraryActions &actions, const Panes &panes,
                 QWidget &window);

    /// Tells what is selected, what the commands would act on and what can be undone.
    void describe(CommandState &state) const;
    /// Gives those commands their names whose names depend on what they would act on.
    void showTitles(const CommandState &state);
    /// Files are still on their way to the trash.
    [[nodiscard]] bool isBusy() const;

Q_SIGNALS:
    /// Other commands are enabled now, or have other names.
    void changed();
    /// A folder was made whose name the user will want to choose.
    void folderMade(const std::shared_ptr<PIFolder> &folder);

private:
    /// The selected item of the navigator, the selected photos, or the one shown large.
    enum class Target { Item, Photos, LargePhoto };

    void addContextMenus();
    void bind();
    [[nodiscard]] Target target() const;
    [[nodiscard]] QList<std::shared_ptr<PIPhoto>> targetPhotos() const;
    [[nodiscard]] bool canMoveBy(int places) const;
    void undoOrRedo(void (QVUndoManager::*exchange)());
    void deleteTarget();
    void moveTargetBy(int places);
    void moveTargetToFolder();
    void step(StepDirection direction);

    LibraryEditor &m_editor;
    QVUndoManager &m_undo;
    LibraryActions &m_actions;
    Panes m_panes;
    PhotoCommands *m_photoCommands;
    NavigatorCommands *m_navigatorCommands;
};
