#pragma once

#include "DropCommands.h"
#include "FilterCatalogue.h"
#include "FolderHistory.h"
#include "LibraryEditor.h"
#include "LibraryFile.h"
#include "LibraryUndo.h"
#include "LibraryView.h"
#include "NotificationCenter.h"
#include "PhotoImport.h"

#include <QObject>
#include <QStringList>

#include <functional>
#include <memory>

class CropCommands;
class EditCommands;
class EffectCommands;
class ExportCommands;
class FindCommands;
class Housekeeping;
class ImportRunner;
class LibraryActions;
class LargePhotoCommands;
class LibraryWindow;
class NavigatorModel;
class PIDetailController;
class PIOutlineView;
class PaneSplitter;
class PrintCommands;
class QMenu;
class SeriesCommands;
class ThumbnailGridView;
class UserDefaults;
struct WindowRestoreRecord;

/// Owns the one library window: the navigator at the left, the grid of thumbnails in the middle, the current photo at
/// the right. It turns the user's actions into calls on the model and shows the result; it keeps no model of its own.
class PIWindowController final : public QObject, public LibraryView
{
    Q_OBJECT

public:
    /// `databasePath` is where saving writes. All references outlive the controller.
    PIWindowController(PhotoLibrary &library, UserDefaults &defaults, const QString &databasePath);
    ~PIWindowController() override;

    [[nodiscard]] LibraryWindow &window() const { return *m_window; }
    [[nodiscard]] LibraryActions &actions() const { return *m_actions; }
    [[nodiscard]] PIDetailController &detailController() const { return *m_detailController; }
    [[nodiscard]] ThumbnailGridView &thumbnailView() const { return *m_thumbnailView; }
    /// The sizes that crops may be held to, for the menu bar.
    [[nodiscard]] QMenu &cropSizesMenu() const;
    /// The library's effect sets, for the menu bar.
    [[nodiscard]] QMenu &effectSetsMenu() const;
    [[nodiscard]] LibraryEditor &editor() { return m_editor; }
    [[nodiscard]] QVUndoManager &undoManager() { return m_undoManager; }

    /// Shows the window; `zoomed` fills the screen, else it takes the place it had.
    void showWindow(bool zoomed);
    /// Shows the folder, selection and photo that the library file tells of.
    void restoreState(const WindowRestoreRecord &record);
    /// Writes the library; true when it is on disk. What was changed before cannot be undone then.
    [[nodiscard]] bool SaveLibrary();
    /// Whether the window may close: asks about unsaved changes and saves when told to.
    [[nodiscard]] bool windowShouldClose();
    enum class IfBusy { Ask, Stop };
    /// Ends a running import, print or export and waits a while for files on their way to the trash. False when the
    /// user, asked, would rather go on with it. A crop that is being drawn is not part of it.
    [[nodiscard]] bool finishWork(IfBusy ifBusy);
    /// The program goes on although it was to end: changes that the user then did not want to save are unsaved again.
    void keepDiscardedChanges();

    using ImportFinished = PhotoImport::Finished;
    /// Brings files and folders into the library in the background. Folders become folders of `toFolder`, loose files
    /// join it and are shown; without one the place is chosen now. False when there is nothing to bring in; otherwise
    /// `finished` comes on the main thread and tells whether it was accepted.
    bool openFiles(const QStringList &paths, const std::shared_ptr<PIFolder> &toFolder, quint64 atIndex,
                   UndoName undoName, const ImportFinished &finished = {});
    enum class IfEmpty { Alert, Quiet };
    /// Brings one folder in and shows what came.
    void importFolder(const QString &path, UndoName undoName, IfEmpty alertIfEmpty);
    [[nodiscard]] bool isImporting() const;

    // LibraryView
    [[nodiscard]] std::shared_ptr<PIFolder> shownFolder() const override;
    [[nodiscard]] IndexSet selectedIndexes() const override;
    [[nodiscard]] std::shared_ptr<PIGroup> selectedItem() const override;
    [[nodiscard]] std::shared_ptr<PIPhoto> currentPhoto() const override;
    void resetList(const std::shared_ptr<PIGroup> &item) override;
    void selectIndexes(const IndexSet &indexes) override;
    void selectRow(const std::shared_ptr<PIGroup> &item) override;
    void abortEditing() override;
    void forgetFolder(const std::shared_ptr<PIFolder> &folder) override;
    void forgetLostFolders() override;

    // Commands
    void addFiles();
    void addFolder();
    void findOrphans();
    void clearCaches();
    void newGroup();
    void newFolder();
    void saveDocument();

Q_SIGNALS:
    /// The grid shows another folder, or this one with other photos.
    void folderShown(const std::shared_ptr<PIFolder> &folder);

private:
    void buildPanes();
    void bindCommands();
    void observe();

    void outlineViewSelectionDidChange();
    void gridSelectionDidChange();
    void windowDidResignKey();
    [[nodiscard]] bool saveOrTell();
    void navigateFolders(const std::shared_ptr<PIFolder> &target);
    void photoWasSelected();
    void forcePhotoSelected(const PIPhoto &photo);
    void enableCommands();
    void showSummary();
    void toggleDetail(bool shown);
    void showDetail();
    [[nodiscard]] LibraryFile::WindowState saveState() const;

    PhotoLibrary &m_library;
    UserDefaults &m_defaults;
    QString m_databasePath;
    LibraryUndo m_undo;
    QVUndoManager m_undoManager;
    LibraryEditor m_editor;
    FilterCatalogue m_filterCatalogue;
    std::unique_ptr<LibraryWindow> m_window;
    LibraryActions *m_actions;
    NavigatorModel *m_navigatorModel;
    PIOutlineView *m_outline;
    ThumbnailGridView *m_thumbnailView;
    PIDetailController *m_detailController;
    PaneSplitter *m_paneSplitter;
    ImportRunner *m_importRunner;
    Housekeeping *m_housekeeping;
    EditCommands *m_editCommands;
    EffectCommands *m_effectCommands;
    CropCommands *m_cropCommands;
    LargePhotoCommands *m_largePhotoCommands;
    PrintCommands *m_printCommands;
    ExportCommands *m_exportCommands;
    FindCommands *m_findCommands;
    SeriesCommands *m_seriesCommands;
    DropCommands m_drops;
    FolderHistory m_history;
    bool m_preserveForwardStack = false;
    bool m_hasDiscardedChanges = false;
    NotificationCenter::Observer m_selectObserver;
    NotificationCenter::Observer m_forcePhotoObserver;
    NotificationCenter::Observer m_redrawObserver; ///< the file may have another name
    NotificationCenter::Observer m_effectSetsObserver;
    NotificationCenter::Observer m_thumbnailObserver; ///< the file may have been found elsewhere
};
