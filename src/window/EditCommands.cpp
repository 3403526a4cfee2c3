#include "EditCommands.h"

#include "LibraryActions.h"
#include "LibraryEditor.h"
#include "LibraryNotifications.h"
#include "NavigatorCommands.h"
#include "PIDetailController.h"
#include "PIDetailWordsVC.h"
#include "PIFolder.h"
#include "PIImageView.h"
#include "PIOutlineView.h"
#include "PhotoCommands.h"
#include "PhotoLibrary.h"
#include "PhotoStep.h"
#include "QVUndoManager.h"
#include "ThumbnailGridView.h"

#include <QAction>

EditCommands::EditCommands(LibraryEditor &editor, QVUndoManager &undo, LibraryActions &actions, const Panes &panes,
                           QWidget &window)
    : QObject(&window)
    , m_editor(editor)
    , m_undo(undo)
    , m_actions(actions)
    , m_panes(panes)
    , m_photoCommands(new PhotoCommands(
          editor, undo, panes.grid, [this] { return m_panes.detail.photo(); }, window))
    , m_navigatorCommands(new NavigatorCommands(editor, window))
{
    addContextMenus();
    bind();
    connect(m_photoCommands, &PhotoCommands::canPasteChanged, this, &EditCommands::changed);
    connect(m_photoCommands, &PhotoCommands::folderMade, this, &EditCommands::folderMade);
    connect(&actions, &LibraryActions::contextChanged, this, &EditCommands::changed);
}

void EditCommands::addContextMenus()
{
    m_actions.addContextMenu(m_panes.outline,
                             {Command::NewFolder, Command::NewGroup, Command::AddFolder, std::nullopt, Command::Rename,
                              Command::MoveToFolder, Command::MoveUp, Command::MoveDown, std::nullopt, Command::Paste,
                              std::nullopt, Command::Delete});
    m_actions.addContextMenu(m_panes.grid, {Command::PreviewSelection,
                                            std::nullopt,
                                            Command::ToggleMark,
                                            Command::AddKeyword,
                                            Command::Crop,
                                            Command::ClearCrop,
                                            Command::EditEffects,
                                            std::nullopt,
                                            Command::Reveal,
                                            Command::EditImage,
                                            Command::RenameFiles,
                                            Command::IncrementDate,
                                            std::nullopt,
                                            Command::Cut,
                                            Command::Copy,
                                            Command::Paste,
                                            std::nullopt,
                                            Command::MoveToFolder,
                                            Command::ExtractFolder,
                                            std::nullopt,
                                            Command::Delete,
                                            Command::Trash,
                                            std::nullopt,
                                            Command::SelectAll,
                                            Command::AddFiles,
                                            Command::AddFolder});
    m_actions.addContextMenu(m_panes.detail.photoView(),
                             {Command::PreviousPhoto, Command::NextPhoto, std::nullopt, Command::FitPhoto,
                              Command::PhotoAtFullSize, Command::PreviewSelection, std::nullopt, Command::Crop,
                              Command::ClearCrop, Command::EditEffects, std::nullopt, Command::Delete, Command::Trash});
}

void EditCommands::bind()
{
    m_photoCommands->bind(m_actions);
    m_actions.bind(Command::Undo, [this](bool) { undoOrRedo(&QVUndoManager::undo); });
    m_actions.bind(Command::Redo, [this](bool) { undoOrRedo(&QVUndoManager::redo); });
    m_actions.bind(Command::Delete, [this](bool) { deleteTarget(); });
    m_actions.bind(Command::Trash, [this](bool) { m_photoCommands->trash(targetPhotos()); });
    m_actions.bind(Command::MoveToFolder, [this](bool) { moveTargetToFolder(); });
    m_actions.bind(Command::MoveUp, [this](bool) { moveTargetBy(-1); });
    m_actions.bind(Command::MoveDown, [this](bool) { moveTargetBy(1); });
    m_actions.bind(Command::NextPhoto, [this](bool) { step(StepDirection::Next); });
    m_actions.bind(Command::PreviousPhoto, [this](bool) { step(StepDirection::Previous); });
    m_panes.detail.addStepControl(*m_actions.action(Command::PreviousPhoto), *m_actions.action(Command::NextPhoto));
}

/// What is being drawn becomes the newest step first.
void EditCommands::undoOrRedo(void (QVUndoManager::*exchange)())
{
    m_editor.library().notifications().post(kNormalizeNotification);
    (m_undo.*exchange)();
}

/// Who goes through the photos typing their words goes on typing.
void EditCommands::step(StepDirection direction)
{
    PIDetailWordsVC &words = m_panes.detail.wordController();
    const auto field = words.activeWordField();
    m_photoCommands->step(direction);
    words.setActiveWordField(field);
}

/// A context menu means the pane that it belongs to, everything else the pane with the focus.
EditCommands::Target EditCommands::target() const
{
    const QWidget *menu = m_actions.contextMenuWidget();
    if (menu == &m_panes.detail.photoView())
        return Target::LargePhoto;
    const bool isOutline = menu ? menu == &m_panes.outline : m_panes.outline.hasFocus();
    return isOutline ? Target::Item : Target::Photos;
}

QList<std::shared_ptr<PIPhoto>> EditCommands::targetPhotos() const
{
    if (target() != Target::LargePhoto)
        return m_photoCommands->edits().selectedPhotos();
    const auto &photo = m_panes.detail.photo();
    return photo ? QList<std::shared_ptr<PIPhoto>>{photo} : QList<std::shared_ptr<PIPhoto>>();
}

bool EditCommands::canMoveBy(int places) const
{
    return target() == Target::Item ? m_navigatorCommands->canMoveBy(places) : m_photoCommands->canMoveBy(places);
}

void EditCommands::deleteTarget()
{
    if (target() == Target::Item)
        m_navigatorCommands->deleteItem();
    else
        m_photoCommands->deletePhotos(targetPhotos());
}

void EditCommands::moveTargetBy(int places)
{
    if (target() == Target::Item)
        m_navigatorCommands->moveBy(places);
    else
        m_photoCommands->moveBy(places);
}

void EditCommands::moveTargetToFolder()
{
    if (target() == Target::Item)
        m_navigatorCommands->moveToFolder();
    else
        m_photoCommands->moveToFolder();
}

void EditCommands::describe(CommandState &state) const
{
    const auto item = m_panes.outline.selectedItem();
    state.selectedPhotos = static_cast<int>(m_panes.grid.selectedPositions().count());
    state.isFolderShown = m_panes.grid.folder() != nullptr;
    state.canPaste = m_photoCommands->canPaste();
    state.canUndo = m_undo.isUndoAvailable();
    state.canRedo = m_undo.isRedoAvailable();
    state.isItemMeant = target() == Target::Item;
    state.isItemSelected = item != nullptr;
    state.isItemFolder = item && item->asFolder();
    state.canRenameItem = item && LibraryEditor::canRename(*item);
    state.canMoveUp = canMoveBy(-1);
    state.canMoveDown = canMoveBy(1);
}

void EditCommands::showTitles(const CommandState &state)
{
    m_actions.action(Command::Delete)->setText(state.deleteTitle());
    m_actions.action(Command::Undo)->setText(m_undo.validateState(UndoDirection::Undo).title);
    m_actions.action(Command::Redo)->setText(m_undo.validateState(UndoDirection::Redo).title);
}

bool EditCommands::isBusy() const
{
    return m_photoCommands->isBusy();
}
