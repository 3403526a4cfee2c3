#include "PIWindowController.h"

#include "CommandState.h"
#include "CropCommands.h"
#include "EditCommands.h"
#include "EffectCommands.h"
#include "EffectSetMenu.h"
#include "ExportCommands.h"
#include "FileFinder.h"
#include "FindCommands.h"
#include "GiveAlert.h"
#include "Housekeeping.h"
#include "ImageFormat.h"
#include "ImportRunner.h"
#include "KeywordCommands.h"
#include "LargePhotoCommands.h"
#include "LibraryActions.h"
#include "LibraryNotifications.h"
#include "LibraryWindow.h"
#include "NavigatorModel.h"
#include "NavigatorPane.h"
#include "PIDetailController.h"
#include "PIFolder.h"
#include "PIImageView.h"
#include "PIOutlineView.h"
#include "PaneSplitter.h"
#include "PhotoLibrary.h"
#include "PrintCommands.h"
#include "SeriesCommands.h"
#include "StringUtilities.h"
#include "ThumbnailGridModel.h"
#include "ThumbnailGridView.h"
#include "UserDefaults.h"
#include "UserPaths.h"
#include "ViewCommands.h"
#include "WindowPreferences.h"

#include <QAbstractSpinBox>
#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QFileDialog>
#include <QGuiApplication>
#include <QLineEdit>
#include <QScreen>
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

}

PIWindowController::PIWindowController(PhotoLibrary &library, UserDefaults &defaults, const QString &databasePath)
    : m_library(library)
    , m_defaults(defaults)
    , m_databasePath(databasePath)
    , m_undo(library, *this)
    , m_editor(library, *this, m_undoManager)
    , m_filterCatalogue(filterBackEnd())
    , m_window(std::make_unique<LibraryWindow>())
    , m_actions(new LibraryActions(*m_window))
    , m_navigatorModel(new NavigatorModel(library, m_editor, m_window.get()))
    , m_outline(new PIOutlineView(*m_navigatorModel, m_window.get()))
    , m_thumbnailView(new ThumbnailGridView(library, m_window.get()))
    , m_detailController(new PIDetailController(m_editor, m_undoManager, m_filterCatalogue, defaults, m_window.get()))
    , m_paneSplitter(new PaneSplitter(
          defaults, {new NavigatorPane(*m_outline, *m_actions), m_thumbnailView, m_detailController->view()},
          m_window.get()))
    , m_importRunner(new ImportRunner(m_editor, defaults, *m_window))
    , m_housekeeping(new Housekeeping(m_editor, *m_importRunner, *m_window))
    , m_editCommands(new EditCommands(m_editor, m_undoManager, *m_actions,
                                      {*m_outline, *m_thumbnailView, *m_detailController}, *m_window))
    , m_effectCommands(
          new EffectCommands(m_editor, defaults, m_filterCatalogue, *m_actions, *m_detailController, *m_window))
    , m_cropCommands(new CropCommands(m_editor, defaults, *m_actions, *m_thumbnailView, *m_detailController, *m_window))
    , m_largePhotoCommands(new LargePhotoCommands(m_editor, *m_actions, *m_detailController, *m_window))
    , m_printCommands(new PrintCommands(m_editor, defaults, *m_actions, *m_window))
    , m_exportCommands(new ExportCommands(m_editor, defaults, *m_actions, *m_window))
    , m_findCommands(new FindCommands(m_editor, defaults, *m_actions, *m_thumbnailView, *m_detailController, *m_window))
    , m_seriesCommands(new SeriesCommands(m_editor, defaults, *m_actions, *m_window))
    , m_drops(m_editor, [this](const QStringList &paths, const std::shared_ptr<PIFolder> &toFolder, quint64 atIndex,
                               UndoName undoName) { openFiles(paths, toFolder, atIndex, undoName); })
{
    buildPanes();
    bindCommands();
    bindKeywordCommands(m_editor, m_undoManager, *m_actions, *m_window);
    bindViewCommands(*m_actions, *m_thumbnailView, *m_window, defaults);
    observe();
    QTimer::singleShot(0, m_paneSplitter, &PaneSplitter::setInitialSplit);
    photoWasSelected();
    enableCommands();
}

PIWindowController::~PIWindowController()
{
    m_library.setDirtyListener({});
    m_undoManager.setChangeListener({});
    const auto sheets = m_window->findChildren<QDialog *>();
    for (QDialog *sheet : sheets)
        sheet->hide();                        // what is being typed there is given up first
    m_window->hide();                         // whoever has the focus gives it up while everything is still there
    disconnect(qApp, nullptr, this, nullptr); // but a sheet that is open does when it goes
    m_window.reset();                         // its children refer to members that end after it
}

void PIWindowController::buildPanes()
{
    m_window->setCentralWidget(m_paneSplitter);
    m_window->setShouldClose([this] { return windowShouldClose(); });
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
    m_actions->setChecked(Command::TakeOverWords, m_defaults.value(WindowPreferences::kReadMetadata));
    m_actions->bind(Command::TakeOverWords,
                    [this](bool on) { m_defaults.setValue(WindowPreferences::kReadMetadata, on); });
    m_actions->setChecked(Command::ShowDetail, m_defaults.value(WindowPreferences::kShowDetail));
    m_actions->bind(Command::ShowDetail, [this](bool on) { toggleDetail(on); });
}

void PIWindowController::observe()
{
    connect(m_outline, &PIOutlineView::selectedItemChanged, this, &PIWindowController::outlineViewSelectionDidChange);
    connect(m_navigatorModel, &NavigatorModel::renamed, this, &PIWindowController::photoWasSelected);
    connect(m_thumbnailView, &ThumbnailGridView::selectedPhotosChanged, this,
            &PIWindowController::gridSelectionDidChange);
    connect(m_thumbnailView, &ThumbnailGridView::photoActivated, this, &PIWindowController::showDetail);
    connect(m_cropCommands, &CropCommands::largePhotoWanted, this, &PIWindowController::showDetail);
    connect(m_largePhotoCommands, &LargePhotoCommands::largePhotoWanted, this, &PIWindowController::showDetail);
    connect(m_cropCommands, &CropCommands::changed, this, &PIWindowController::enableCommands);
    connect(m_thumbnailView, &ThumbnailGridView::columnsLaidOut, this, &PIWindowController::enableCommands);
    connect(m_window.get(), &LibraryWindow::didResignKey, this, &PIWindowController::windowDidResignKey);
    connect(m_importRunner, &ImportRunner::runningChanged, this, &PIWindowController::enableCommands);
    connect(m_outline, &PIOutlineView::dropped, this,
            [this](const QDropEvent &event, const NavigatorDrop &place) { m_drops.dropOnNavigator(event, place); });
    connect(m_thumbnailView, &ThumbnailGridView::dropped, this,
            [this](const QDropEvent &event, int before) { m_drops.dropOnGrid(event, before); });
    connect(m_window.get(), &LibraryWindow::filesDropped, this,
            [this](const QStringList &paths) { openFiles(paths, nullptr, kNotFound, UndoName::AddPhoto); });
    connect(m_findCommands, &FindCommands::changed, this, &PIWindowController::enableCommands);
    connect(m_findCommands, &FindCommands::told, m_window.get(), &LibraryWindow::tell);
    connect(m_findCommands, &FindCommands::quickSearchWanted, this, &PIWindowController::showDetail);
    connect(m_editCommands, &EditCommands::changed, this, &PIWindowController::enableCommands);
    connect(m_editCommands, &EditCommands::folderMade, this,
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
    m_forcePhotoObserver = center.observe(kForcePhotoNotification, [this](const NotificationObject &object) {
        if (const auto *photo = object.as<PIPhoto>())
            forcePhotoSelected(*photo);
    });
    m_effectSetsObserver =
        center.observe(kEffectSetsNotification, [this](const NotificationObject &) { enableCommands(); });
    const auto retitle = [this](const NotificationObject &photo) {
        if (!photo.isSameAs(m_detailController->photo()))
            return;
        photoWasSelected();
        enableCommands(); // it may have effects now, or none
    };
    m_redrawObserver = center.observe(kRedrawNotification, retitle);
    m_thumbnailObserver = center.observe(kThumbnailNotification, retitle);
}

void PIWindowController::forcePhotoSelected(const PIPhoto &photo)
{
    const auto folder = m_library.folderForPhoto(photo);
    if (!folder)
        return;
    folder->enforceVisibility();
    resetList(folder);
    selectIndexes(IndexSet::single(rowOfSame(photo, folder->photos())));
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

QMenu &PIWindowController::cropSizesMenu() const
{
    return m_cropCommands->sizesMenu();
}

QMenu &PIWindowController::effectSetsMenu() const
{
    return m_effectCommands->effectSetsMenu();
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
    m_library.notifications().post(kNormalizeNotification); // a crop that is being drawn is saved too
    m_library.fileFinder().save(); // a crash after it costs nothing: files that the library does not name are let go
    static_cast<void>(saveOrTell());
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
    QWidget *field = m_window->focusWidget();
    const PIImageView &photoView = m_detailController->photoView();
    if (!m_detailController->view()->isAncestorOf(field) || (field == &photoView && photoView.isCropping()) ||
        m_findCommands->isQuickSearch(field))
        return; // cropping keeps its keys, and what is searched for changes nothing
    m_thumbnailView->setFocus();
    if (QApplication::activeModalWidget())
        return; // perhaps the alert about this very field
    // Fields do not end their editing for another window's sake.
    if (auto *line = qobject_cast<QLineEdit *>(field))
        Q_EMIT line->editingFinished();
    else if (auto *box = qobject_cast<QAbstractSpinBox *>(field))
        Q_EMIT box->editingFinished();
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
    m_window->showTitle(shownFolder().get(), m_detailController->photo().get());
}

void PIWindowController::enableCommands()
{
    CommandState state;
    m_editCommands->describe(state);
    m_effectCommands->describe(state);
    m_cropCommands->describe(state);
    m_largePhotoCommands->describe(state);
    m_findCommands->describe(state);
    state.isDirty = m_library.isDirty();
    state.isImporting = isImporting();
    state.canGoBack = m_history.canGoBack();
    state.canGoForward = m_history.canGoForward();
    state.hasRoomForLargerTiles = m_thumbnailView->canAddColumns(-1);
    state.hasRoomForSmallerTiles = m_thumbnailView->canAddColumns(1);
    for (const CommandInfo &info : commandTable())
        m_actions->setEnabled(info.command, state.isEnabled(info.enabledWhen));
    m_editCommands->showTitles(state);
    m_effectCommands->enable(state);
    m_cropCommands->showTitle(state);
}

void PIWindowController::showSummary()
{
    m_window->showSummary(shownFolder().get(), selectedIndexes().count());
}

void PIWindowController::toggleDetail(bool shown)
{
    m_paneSplitter->setDetailShown(shown);
}

void PIWindowController::showDetail()
{
    m_actions->setChecked(Command::ShowDetail, true);
    toggleDetail(true);
}

LibraryFile::WindowState PIWindowController::saveState() const
{
    return {shownFolder(), m_detailController->photo(), selectedIndexes()};
}
