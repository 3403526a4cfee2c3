#pragma once

#include "PhotoEdits.h"
#include "PhotoTrash.h"

#include <QObject>

#include <functional>
#include <memory>

class DateSort;
class Isaac;
class LibraryActions;
class PhotoPasteboard;
class QVUndoManager;
class QWidget;
class ThumbnailGridView;
enum class StepDirection;

/// The commands on the photos of the grid. They act on the selected ones and beep when there is nothing to act on.
class PhotoCommands final : public QObject
{
    Q_OBJECT

public:
    using CurrentPhoto = std::function<std::shared_ptr<PIPhoto>()>;

    /// All outlive it. `currentPhoto` tells which photo the detail pane shows.
    PhotoCommands(LibraryEditor &editor, QVUndoManager &undo, ThumbnailGridView &grid, CurrentPhoto currentPhoto,
                  QWidget &window);
    ~PhotoCommands() override;

    /// Lets the actions run these commands.
    void bind(LibraryActions &actions);

    [[nodiscard]] PhotoEdits &edits() { return m_edits; }
    [[nodiscard]] bool canPaste() const;
    /// Whether the selected photos can go so many places down (up below 0) in their folder.
    [[nodiscard]] bool canMoveBy(int places) const;
    /// Files are still on their way to the trash.
    [[nodiscard]] bool isBusy() const { return m_trash.isBusy(); }

    void copy();
    void cut();
    void paste();
    /// Removes the photos from the folder on show.
    void deletePhotos(const PIGroup::PhotoList &photos);
    /// Asks, and moves to the trash the files of those photos that have one.
    void trash(const PIGroup::PhotoList &among);
    void moveBy(int places);
    void moveToFolder();
    /// Shows the neighbour of the current photo; the grid gets the focus.
    void step(StepDirection direction);

Q_SIGNALS:
    void canPasteChanged();
    /// A folder was made whose name the user will want to choose.
    void folderMade(const std::shared_ptr<PIFolder> &folder);

private:
    void selectMarked();
    void sortFolder(PhotoEdits::Order order);
    void extractFolder(PhotoEdits::Transfer transfer);
    void reveal();
    void editImage();
    [[nodiscard]] QStringList selectedFiles() const;

    LibraryEditor &m_editor;
    ThumbnailGridView &m_grid;
    CurrentPhoto m_currentPhoto;
    QWidget &m_window;
    PhotoEdits m_edits;
    PhotoTrash m_trash;
    PhotoPasteboard *m_pasteboard;
    DateSort *m_dateSort;
    std::unique_ptr<Isaac> m_random; ///< seeded when first needed
};
