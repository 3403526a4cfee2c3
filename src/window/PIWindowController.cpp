#include "PIWindowController.h"

#include "CommandState.h"
#include "DropCommands.h"
#include "FileFinder.h"
#include "GiveAlert.h"
#include "Housekeeping.h"
#include "ImageFormat.h"
#include "ImportRunner.h"
#include "LibraryActions.h"
#include "LibraryNotifications.h"
#include "LibraryWindow.h"
#include "NavigatorCommands.h"
#include "NavigatorModel.h"
#include "NavigatorPane.h"
#include "PIDetailController.h"
#include "PIFolder.h"
#include "PIOutlineView.h"
#include "PaneSplitter.h"
#include "PhotoCommands.h"
#include "PhotoLibrary.h"
#include "PhotoView.h"
#include "StringUtilities.h"
#include "TextForPeople.h"
#include "ThumbnailGridView.h"
#include "UserDefaults.h"
#include "UserPaths.h"
#include "ViewCommands.h"
#include "WindowPreferences.h"

#include <QAction>
#include <QFileDialog>
#include <QGuiApplication>
#include <QLabel>
#include <QScreen>
#include <QStatusBar>
#include <QTimer>

namespace {

constexpr int kUndoSteps = 50;

/// Opens what stands above the item. Whether it is open itself remains the user's choice.
void openAncestors(const PIGroup &item)
{
    const auto parent = item.asFolder() ? item.asFolder()->parent() : nullptr;
    if (parent)
        parent->enforceVisibility();
}

void alertWhenNothingWasAdded(const PhotoImport::Outcome &outcome)
{
    if (outcome.photosAdded == 0 && !outcome.scan.cancelled)
        GiveAlert(PIWindowController::tr("No photos added."),
                  PIWindowController::tr("The folders or files you specified did not contain any usable images."));
}

/// A title in which nothing of a name is taken for the mark of unsaved changes.
QString titlePart(QString name)
{
    return name.replace(QLatin1String("[*]"), QLatin1String("[*][*]"));
}

}

PIWindowController::PIWindowController(PhotoLibrary &library, UserDefaults &defaults, const QString &databasePath)
    : m_library(library)
    , m_defaults(defaults)
    , m_databasePath(databasePath)
    , m_undo(library, *this)
    , m_editor(library, *this, m_undoManager)
    , m_window(std::make_unique<LibraryWindow>())
    , m_actions(new LibraryActions(*m_window))
    , m_navigatorModel(new NavigatorModel(library, m_editor, m_window.get()))
    , m_outline(new PIOutlineView(*m_navigatorModel, m_window.get()))
    , m_thumbnailView(new ThumbnailGridView(library.thumbnails(), library.notifications(), m_window.get()))
    , m_detailController(new PIDetailController(
          library, defaults, [this] { return shownFolder(); }, m_window.get()))
    , m_paneSplitter(new PaneSplitter(
          defaults, {new NavigatorPane(*m_outline, *m_actions), m_thumbnailView, m_detailController->view()},
          m_window.get()))
    , m_summary(new QLabel(m_window.get()))
    , m_importRunner(new ImportRunner(m_editor, *m_window))
    , m_housekeeping(new Housekeeping(m_editor, *m_importRunner, *m_window))
    , m_photoCommands(new PhotoCommands(
          m_editor, m_undoManager, *m_thumbnailView, [this] { return currentPhoto(); }, *m_window))
    , m_navigatorCommands(new NavigatorCommands(m_editor, *m_window))
{
    buildPanes();
    bindCommands();
    bindEditCommands();
    bindViewCommands(*m_actions, *m_thumbnailView, defaults);
    observe();
    observeDrops();
    QTimer::singleShot(0, m_paneSplitter, &PaneSplitter::setInitialSplit);
    photoWasSelected();
    enableCommands();
}

PIWindowController::~PIWindowController()
{
    m_library.setDirtyListener({});
    m_undoManager.setChangeListener({});
    m_window->hide(); // whoever has the focus gives it up while everything is still there
    m_window.reset(); // its children refer to members that end after it
}

void PIWindowController::buildPanes()
{
    addContextMenus();
    m_window->setCentralWidget(m_paneSplitter);
    m_summary->setContentsMargins(0, 0, 6, 0); // clear of the screen's edge
    m_window->statusBar()->addPermanentWidget(m_summary);
    m_window->statusBar()->setSizeGripEnabled(false);
    m_window->setMinimumSize(700, 420);
    m_window->setShouldClose([this] { return windowShouldClose(); });
}

void PIWindowController::addContextMenus()
{
    m_actions->addContextMenu(*m_outline, {Command::NewFolder, Command::NewGroup, Command::AddFolder, std::nullopt,
                                           Command::Rename, Command::MoveToFolder, Command::MoveUp, Command::MoveDown,
                                           std::nullopt, Command::Paste, std::nullopt, Command::Delete});
    const QList<std::optional<Command>> photoCommands = {
        Command::ToggleMark,   Command::ClearCrop,     std::nullopt,  Command::Reveal, Command::EditImage,
        std::nullopt,          Command::Cut,           Command::Copy, Command::Paste,  std::nullopt,
        Command::MoveToFolder, Command::ExtractFolder, std::nullopt,  Command::Delete, Command::Trash};
    m_actions->addContextMenu(*m_thumbnailView,
                              photoCommands + QList<std::optional<Command>>{std::nullopt, Command::SelectAll,
                                                                            Command::AddFiles, Command::AddFolder});
    m_actions->addContextMenu(m_detailController->photoView(), photoCommands);
}

void PIWindowController::bindCommands()
{
    m_actions->bind(Command::AddFiles, [this](bool) { addFiles(); });
    m_actions->bind(Command::AddFolder, [this](bool) { addFolder(); });
    m_actions->bind(Command::FindOrphans, [this](bool) { findOrphans(); });
    m_actions->bind(Command::ClearCaches, [this](bool) { clearCaches(); });
    m_actions->bind(Command::NewGroup, [this](bool) { newGroup(); });
    m_actions->bind(Command::NewFolder, [this](bool) { newFolder(); });
    m_actions->bind(Command::Save, [this](bool) { saveDocument(); });
    m_actions->bind(Command::Quit, [this](bool) { m_window->close(); });
    m_actions->bind(Command::SelectAll, [this](bool) { m_thumbnailView->selectAll(); });
    m_actions->bind(Command::Rename, [this](bool) { m_outline->editName(m_outline->selectedItem()); });
    m_actions->bind(Command::ShowSelection, [this](bool) { m_thumbnailView->scrollToSelection(); });
    m_actions->bind(Command::Back, [this](bool) { navigateFolders(m_history.goBack()); });
    m_actions->bind(Command::Forward, [this](bool) { navigateFolders(m_history.goForward()); });
    m_actions->setChecked(Command::ShowDetail, m_defaults.value(WindowPreferences::kShowDetail));
    m_actions->bind(Command::ShowDetail, [this](bool on) { toggleDetail(on); });
    m_actions->bind(Command::FullScreen, [this](bool on) {
        m_window->setWindowState(m_window->windowState().setFlag(Qt::WindowFullScreen, on));
    });
}

void PIWindowController::bindEditCommands()
{
    m_photoCommands->bind(*m_actions);
    m_actions->bind(Command::Undo, [this](bool) { m_undoManager.undo(); });
    m_actions->bind(Command::Redo, [this](bool) { m_undoManager.redo(); });
    m_actions->bind(Command::Delete, [this](bool) {
        if (m_outline->hasFocus())
            m_navigatorCommands->deleteItem();
        else
            m_photoCommands->deletePhotos();
    });
    const auto moveBy = [this](int places) {
        if (m_outline->hasFocus())
            m_navigatorCommands->moveBy(places);
        else
            m_photoCommands->moveBy(places);
    };
    m_actions->bind(Command::MoveToFolder, [this](bool) {
        if (m_outline->hasFocus())
            m_navigatorCommands->moveToFolder();
        else
            m_photoCommands->moveToFolder();
    });
    m_actions->bind(Command::MoveUp, [moveBy](bool) { moveBy(-1); });
    m_actions->bind(Command::MoveDown, [moveBy](bool) { moveBy(1); });
}

void PIWindowController::observe()
{
    connect(m_outline, &PIOutlineView::selectedItemChanged, this, &PIWindowController::outlineViewSelectionDidChange);
    connect(m_navigatorModel, &NavigatorModel::renamed, this, &PIWindowController::photoWasSelected);
    connect(m_thumbnailView, &ThumbnailGridView::selectedPhotosChanged, this,
            &PIWindowController::gridSelectionDidChange);
    connect(m_thumbnailView, &ThumbnailGridView::photoActivated, this, [this] {
        m_actions->setChecked(Command::ShowDetail, true);
        toggleDetail(true);
    });
    connect(m_thumbnailView, &ThumbnailGridView::columnsLaidOut, this, &PIWindowController::enableCommands);
    connect(m_window.get(), &LibraryWindow::didResignKey, this, &PIWindowController::windowDidResignKey);
    connect(m_window.get(), &LibraryWindow::fullScreenChanged, this,
            [this](bool on) { m_actions->setChecked(Command::FullScreen, on); });
    connect(m_importRunner, &ImportRunner::runningChanged, this, &PIWindowController::enableCommands);
    connect(m_photoCommands, &PhotoCommands::canPasteChanged, this, &PIWindowController::enableCommands);
    connect(m_photoCommands, &PhotoCommands::folderMade, this,
            [this](const std::shared_ptr<PIFolder> &folder) { m_outline->editName(folder); });
    // What the commands mean depends on which pane has the focus.
    connect(qApp, &QApplication::focusChanged, this, &PIWindowController::enableCommands);

    m_library.setDirtyListener([this](bool dirty) {
        m_window->setWindowModified(dirty);
        enableCommands();
    });
    m_undoManager.setDelegate(&m_undo);
    m_undoManager.setCapacity(kUndoSteps);
    m_undoManager.setBeep(&Beep);
    m_undoManager.setChangeListener([this] { enableCommands(); });
    NotificationCenter &center = m_library.notifications();
    m_selectObserver = center.observe(kSelectNotification, [this](const NotificationObject &) { photoWasSelected(); });
    const auto retitle = [this](const NotificationObject &photo) {
        if (photo.isSameAs(m_detailController->photo()))
            photoWasSelected();
    };
    m_redrawObserver = center.observe(kRedrawNotification, retitle);
    m_thumbnailObserver = center.observe(kThumbnailNotification, retitle);
}

void PIWindowController::observeDrops()
{
    const auto add = [this](const QStringList &paths, const std::shared_ptr<PIFolder> &toFolder, quint64 atIndex,
                            UndoName undoName) { openFiles(paths, toFolder, atIndex, undoName); };
    const auto drops = std::make_shared<DropCommands>(m_editor, add);
    connect(m_outline, &PIOutlineView::dropped, this,
            [drops](const QDropEvent &event, const NavigatorDrop &place) { drops->dropOnNavigator(event, place); });
    connect(m_thumbnailView, &ThumbnailGridView::dropped, this,
            [drops](const QDropEvent &event, int before) { drops->dropOnGrid(event, before); });
    connect(m_window.get(), &LibraryWindow::filesDropped, this,
            [add](const QStringList &paths) { add(paths, nullptr, kNotFound, UndoName::AddPhoto); });
}

void PIWindowController::showWindow(bool zoomed)
{
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    const bool restored =
        !zoomed && m_window->restoreGeometry(m_defaults.data(QLatin1String(WindowPreferences::kGeometry)));
    if (!restored)
        m_window->setGeometry(screen);
    if (zoomed)
        m_window->setWindowState(m_window->windowState() | Qt::WindowMaximized);
    m_window->show();
    m_window->raise();
    m_window->activateWindow();
    m_thumbnailView->setFocus();
}

void PIWindowController::restoreState(const WindowRestoreRecord &record)
{
    m_window->setWindowModified(m_library.isDirty());
    if (!record.folder)
        return;
    resetList(record.folder);
    selectIndexes(record.selection.value_or(IndexSet()));
    if (record.photo && m_thumbnailView->makeCurrent(*record.photo))
        m_library.notifications().post(kSelectNotification, record.photo);
}

bool PIWindowController::SaveLibrary()
{
    if (!LibraryFile::save(m_databasePath, m_library, saveState()))
        return false;
    m_undoManager.clearUndo();
    return true;
}

bool PIWindowController::windowShouldClose()
{
    if (isImporting() || m_photoCommands->isBusy()) {
        m_importRunner->cancelAll();
        constexpr int kLookAgain = 50; // milliseconds
        QTimer::singleShot(kLookAgain, m_window.get(), &QWidget::close);
        return false;
    }
    m_thumbnailView->setFocus(); // ends text editing elsewhere, which may change the library
    m_library.fileFinder().save();
    m_defaults.setData(QLatin1String(WindowPreferences::kGeometry), m_window->saveGeometry());
    if (!m_library.isDirty())
        return true;

    const int answer = GiveAlert(tr("Do you want to save the changes you made to the photo library?"),
                                 tr("Your changes will be lost if you don't save them."),
                                 {tr("Save"), tr("Cancel"), tr("Don't Save")}, /*escapeButton=*/1);
    if (answer == 1)
        return false;
    if (answer == 2) {
        m_library.setDirty(false);
        return true;
    }
    if (SaveLibrary())
        return true;
    GiveAlert(tr("Save failed."), tr("I can't save the photo library. Your changes will be lost if you quit. Please "
                                     "check that your hard disk is not full."));
    return false;
}

bool PIWindowController::openFiles(const QStringList &paths, const std::shared_ptr<PIFolder> &toFolder, quint64 atIndex,
                                   UndoName undoName, const ImportFinished &finished)
{
    if (paths.isEmpty())
        return false;
    m_importRunner->run({paths, toFolder, atIndex, undoName}, finished);
    return true;
}

void PIWindowController::importFolder(const QString &path, UndoName undoName, IfEmpty alertIfEmpty)
{
    m_importRunner->run({{path}, nullptr, kNotFound, undoName},
                        [this, alertIfEmpty](const PhotoImport::Outcome &outcome) {
                            if (outcome.firstFolder) {
                                resetList(outcome.firstFolder);
                                selectIndexes(IndexSet::range(0, outcome.firstFolder->photos().size()));
                            }
                            if (alertIfEmpty == IfEmpty::Alert)
                                alertWhenNothingWasAdded(outcome);
                        });
}

bool PIWindowController::isImporting() const
{
    return m_importRunner->isRunning();
}

std::shared_ptr<PIFolder> PIWindowController::shownFolder() const
{
    return m_thumbnailView->folder();
}

IndexSet PIWindowController::selectedIndexes() const
{
    return m_thumbnailView->selectedPositions();
}

std::shared_ptr<PIGroup> PIWindowController::selectedItem() const
{
    return m_outline->selectedItem();
}

std::shared_ptr<PIPhoto> PIWindowController::currentPhoto() const
{
    return m_detailController->photo();
}

void PIWindowController::resetList(const std::shared_ptr<PIGroup> &item)
{
    if (item)
        openAncestors(*item);
    m_outline->resetList(item);
    m_thumbnailView->reload();
    showSummary();
    Q_EMIT folderShown(shownFolder());
}

void PIWindowController::selectIndexes(const IndexSet &indexes)
{
    m_thumbnailView->selectIndexes(indexes);
    m_thumbnailView->scrollToSelection();
}

void PIWindowController::selectRow(const std::shared_ptr<PIGroup> &item)
{
    if (item)
        m_outline->selectAndCenter(item);
    m_outline->viewport()->update(); // any folder may hold more or fewer photos now
    m_thumbnailView->reload();
    showSummary();
    Q_EMIT folderShown(shownFolder());
}

void PIWindowController::abortEditing()
{
    m_outline->abortEditing();
}

void PIWindowController::forgetFolder(const std::shared_ptr<PIFolder> &folder)
{
    m_history.deleteFolderFromNavigator(folder);
    enableCommands();
}

void PIWindowController::forgetLostFolders()
{
    m_history.keepOnly([this](const std::shared_ptr<PIFolder> &folder) {
        return m_library.groups().contains(PhotoLibrary::groupForFolder(folder));
    });
    enableCommands();
}

void PIWindowController::addFiles()
{
    const QStringList paths = QFileDialog::getOpenFileNames(
        m_window.get(), tr("Select one or more files to import"), m_defaults.value(WindowPreferences::kLastFolder),
        tr("Images (%1)").arg(readableImageNameFilters().join(u' ')));
    if (paths.isEmpty())
        return;
    m_defaults.setValue(WindowPreferences::kLastFolder, QVString::deletingLastPathComponent(paths.first()));
    const auto last = selectedIndexes().last();
    openFiles(paths, shownFolder(), last ? static_cast<quint64>(*last) : kNotFound, UndoName::AddPhoto,
              alertWhenNothingWasAdded);
}

void PIWindowController::addFolder()
{
    const QString path = QFileDialog::getExistingDirectory(m_window.get(), tr("Select one or more folders to import"),
                                                           m_defaults.value(WindowPreferences::kLastFolder));
    if (path.isEmpty())
        return;
    m_defaults.setValue(WindowPreferences::kLastFolder, QVString::deletingLastPathComponent(path));
    importFolder(path, UndoName::AddFolder, IfEmpty::Alert);
}

void PIWindowController::findOrphans()
{
    const QString path =
        QFileDialog::getExistingDirectory(m_window.get(), tr("Select a folder in which to search for orphan files"),
                                          m_defaults.value(WindowPreferences::kLastFolder));
    m_housekeeping->findOrphansCore(path);
}

void PIWindowController::clearCaches()
{
    m_housekeeping->clearCaches();
}

void PIWindowController::newGroup()
{
    if (const auto group = m_editor.newGroup())
        m_outline->editName(group);
}

void PIWindowController::newFolder()
{
    if (const auto item = m_editor.newFolder())
        m_outline->editName(item);
}

void PIWindowController::saveDocument()
{
    m_library.fileFinder().save(); // a crash after it costs nothing: files that the library does not name are let go
    if (!SaveLibrary())
        GiveAlert(tr("Save failed."), tr("I can't save the photo library. Your changes will be lost if you quit. "
                                         "Please check that your hard disk is not full."));
    m_window->setWindowModified(m_library.isDirty());
}

void PIWindowController::outlineViewSelectionDidChange()
{
    const auto item = m_outline->selectedItem();
    const auto folder = item && item->asFolder() ? std::static_pointer_cast<PIFolder>(item) : nullptr;
    if (folder != m_thumbnailView->folder()) {
        m_thumbnailView->setFolder(folder);
        m_thumbnailView->scrollToSelection();
        if (folder && !m_preserveForwardStack)
            m_history.addFolderToNavigator(folder);
        Q_EMIT folderShown(folder);
    }
    if (folder && !folder->photos().isEmpty() && m_outline->hasFocus())
        m_thumbnailView->setFocus();
    enableCommands();
    showSummary();
}

void PIWindowController::gridSelectionDidChange()
{
    m_library.notifications().post(kSelectNotification, m_thumbnailView->leadingPhoto());
    enableCommands();
    showSummary();
}

/// Text that is being edited in the detail pane is taken as it stands.
void PIWindowController::windowDidResignKey()
{
    if (m_detailController->view()->isAncestorOf(m_window->focusWidget()))
        m_thumbnailView->setFocus();
}

void PIWindowController::navigateFolders(const std::shared_ptr<PIFolder> &target)
{
    if (!target)
        return;
    m_preserveForwardStack = true;
    target->enforceVisibility();
    resetList(target);
    m_preserveForwardStack = false;
    enableCommands();
}

void PIWindowController::photoWasSelected()
{
    const auto &photo = m_detailController->photo();
    const auto folder = shownFolder();
    QString title = tr("Photo");
    if (photo && folder && photo->fileRef())
        title =
            tr("Photo — %1 — %2")
                .arg(titlePart(folder->name()), titlePart(QVString::fileNameMinusExtension(photo->fileRef()->path())));
    m_window->setWindowTitle(title + QStringLiteral("[*]"));
}

CommandState PIWindowController::commandState() const
{
    const auto item = selectedItem();
    const bool isOutline = m_outline->hasFocus();
    const auto canMoveBy = [&](int places) {
        return isOutline ? m_navigatorCommands->canMoveBy(places) : m_photoCommands->canMoveBy(places);
    };
    return {
        .selectedPhotos = static_cast<int>(selectedIndexes().count()),
        .isFolderShown = shownFolder() != nullptr,
        .isDirty = m_library.isDirty(),
        .isImporting = isImporting(),
        .canPaste = m_photoCommands->canPaste(),
        .canUndo = m_undoManager.isUndoAvailable(),
        .canRedo = m_undoManager.isRedoAvailable(),
        .canGoBack = m_history.canGoBack(),
        .canGoForward = m_history.canGoForward(),
        .hasRoomForLargerTiles = m_thumbnailView->canAddColumns(-1),
        .hasRoomForSmallerTiles = m_thumbnailView->canAddColumns(1),
        .focus = isOutline ? CommandState::Focus::Outline : CommandState::Focus::Elsewhere,
        .isItemSelected = item != nullptr,
        .isItemFolder = item && item->asFolder(),
        .canRenameItem = item && LibraryEditor::canRename(*item),
        .canMoveUp = canMoveBy(-1),
        .canMoveDown = canMoveBy(1),
    };
}

void PIWindowController::enableCommands()
{
    const CommandState state = commandState();
    for (const CommandInfo &info : commandTable())
        m_actions->setEnabled(info.command, state.isEnabled(info.enabledWhen));
    m_actions->action(Command::Delete)->setText(state.deleteTitle());
    m_actions->action(Command::Undo)->setText(m_undoManager.validateState(UndoDirection::Undo).title);
    m_actions->action(Command::Redo)->setText(m_undoManager.validateState(UndoDirection::Redo).title);
}

void PIWindowController::showSummary()
{
    const auto folder = shownFolder();
    if (!folder) {
        m_summary->clear();
        return;
    }
    const int count = static_cast<int>(folder->photos().size());
    const int selected = static_cast<int>(selectedIndexes().count());
    QString text = CountText(count, tr("%n photo"), tr("%n photos"));
    if (selected > 1)
        text = tr("%1, %n selected", nullptr, selected).arg(text);
    m_summary->setText(text);
}

void PIWindowController::toggleDetail(bool shown)
{
    m_paneSplitter->setDetailShown(shown);
}

LibraryFile::WindowState PIWindowController::saveState() const
{
    return {shownFolder(), m_detailController->photo(), selectedIndexes()};
}
