#pragma once

#include "GridLayout.h"
#include "GridSelection.h"
#include "NotificationCenter.h"
#include "TileText.h"

#include <QAbstractItemView>

#include <functional>
#include <memory>
#include <optional>

class PIFolder;
class PIPhoto;
class PhotoLibrary;
class QTimer;
class RubberBand;
class ThumbnailDelegate;
class ThumbnailGridModel;
class TileFetcher;

/// The photos of one folder as a grid of thumbnails. Layout is arithmetic and only visible tiles are painted, so that
/// a folder of 100,000 photos costs no more than one of a hundred. Pictures are fetched between events by a scheduler.
/// The folder remembers the selection while it is shown here.
class ThumbnailGridView final : public QAbstractItemView
{
    Q_OBJECT

public:
    /// Both outlive the view.
    explicit ThumbnailGridView(PhotoLibrary &library, QWidget *parent = nullptr);
    ~ThumbnailGridView() override;

    /// Shows the folder with the selection it remembers, or its first photo selected; null empties the grid.
    void setFolder(const std::shared_ptr<PIFolder> &folder);
    [[nodiscard]] std::shared_ptr<PIFolder> folder() const;
    /// Takes up changes of the folder's photos. Photos that are still there stay selected.
    void reload();

    /// The selected photos. (The base class has taken the name `selectedIndexes` for something else.)
    [[nodiscard]] const IndexSet &selectedPositions() const { return m_selected; }
    /// Selects exactly these; positions beyond the last photo are dropped. The first becomes current.
    void selectIndexes(const IndexSet &indexes);
    void scrollToSelection();
    /// Selects the photos that are like that, and shows them.
    void selectWhere(const std::function<bool(const PIPhoto &)> &isWanted);
    /// The photo with the keyboard cursor; null when there is none.
    [[nodiscard]] std::shared_ptr<PIPhoto> currentPhoto() const;
    /// Of the selected photos the one with the keyboard cursor, else the nearest to it; null when none is selected.
    [[nodiscard]] std::shared_ptr<PIPhoto> leadingPhoto() const;
    /// Moves the keyboard cursor to the photo; the selection stays. False when it is not in the folder.
    bool makeCurrent(const PIPhoto &photo);
    /// The photo's texts, marks or picture changed.
    void redraw(const PIPhoto &photo);

    [[nodiscard]] int columnCount() const { return m_columns; }
    /// Clamped to 1 … 20. A view too narrow for so many shows fewer.
    void setColumnCount(int columns);
    /// So many more columns (fewer below 0) than are seen now, within what the view has room for.
    void addColumns(int more);
    [[nodiscard]] bool canAddColumns(int more) const { return columnsWith(more) != m_layout.columns(); }
    [[nodiscard]] TileText shown() const;
    void setShown(TileText lines);

    // QAbstractItemView
    [[nodiscard]] QRect visualRect(const QModelIndex &index) const override;
    void scrollTo(const QModelIndex &index, ScrollHint hint = EnsureVisible) override;
    void keyboardSearch(const QString &search) override;
    [[nodiscard]] QModelIndex indexAt(const QPoint &point) const override;

Q_SIGNALS:
    /// The set of selected photos changed, also by `setFolder` and `reload`.
    void selectedPhotosChanged();
    /// Enter or a double click.
    void photoActivated(int index);
    void columnCountChanged(int columns);
    /// Other columns are seen, or there is room for more or fewer.
    void columnsLaidOut();
    /// Something that DragData knows was dropped; it is to stand before the photo at `before`. The signal's receiver
    /// takes it at once.
    void dropped(const QDropEvent &event, int before);

protected:
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    [[nodiscard]] int horizontalOffset() const override;
    [[nodiscard]] int verticalOffset() const override;
    [[nodiscard]] bool isIndexHidden(const QModelIndex &index) const override;
    void setSelection(const QRect &rect, QItemSelectionModel::SelectionFlags flags) override;
    [[nodiscard]] QRegion visualRegionForSelection(const QItemSelection &selection) const override;
    void updateGeometries() override;
    void selectionChanged(const QItemSelection &selected, const QItemSelection &deselected) override;
    void currentChanged(const QModelIndex &current, const QModelIndex &previous) override;
    void scrollContentsBy(int dx, int dy) override;

    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void startDrag(Qt::DropActions supportedActions) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    /// What stays where it is on the screen when the layout changes.
    enum class Anchor { TopRow, CurrentPhoto };
    struct Place
    {
        int row = -1;
        double fraction = 0; ///< of the tile's height
        int y = 0;
        bool inSight = false; ///< the whole tile is to be in sight
    };

    void exchangePhotos(const std::function<void()> &exchange);
    void relayout(Anchor anchor);
    [[nodiscard]] Place placeOf(Anchor anchor) const;
    void goBackTo(const Place &place);
    [[nodiscard]] bool applySelection(IndexSet rows);
    [[nodiscard]] bool takeUpSelection();
    void setCurrentAndAnchor(int row);
    [[nodiscard]] int columnsWith(int more) const;
    void choose(int row, GridSelection::Mode mode);
    void moveTo(int row, Qt::KeyboardModifiers modifiers);
    void toggleCurrent(Qt::KeyboardModifiers modifiers);
    [[nodiscard]] bool handleZoomKey(const QKeyEvent &event);
    void pressTile(int row, const QMouseEvent &event);
    void beginBand(const QMouseEvent &event);
    void takeUpBand(const QRect &contentRect);
    void takeUpDrag(QDragMoveEvent &event);
    [[nodiscard]] std::optional<GridLayout::Gap> gapFor(const QDropEvent &event) const;
    void setDropGap(const std::optional<GridLayout::Gap> &gap);
    void endDrop();
    [[nodiscard]] QPixmap dragPixmap() const;
    void updateTile(int row);
    void scrollToRow(int row, ScrollHint hint);
    void showVisible();
    [[nodiscard]] QRect tileRect(int row) const;
    [[nodiscard]] int rowAt(QPoint position) const;
    [[nodiscard]] int currentRow() const;

    ThumbnailGridModel *m_model;
    TileFetcher *m_fetcher;
    ThumbnailDelegate *m_delegate;
    RubberBand *m_band;
    GridLayout m_layout;
    int m_columns = 4;
    IndexSet m_selected; // what the selection model holds, as a set
    GridSelection m_gestures;
    bool m_applying = false; // changes of the selection model are our own
    struct Press
    {
        int row = -1;
        QPoint position;
        Qt::KeyboardModifiers modifiers;
        bool choosesOnRelease = false; ///< it was selected: the others stay, in case that they are dragged along
    };
    std::optional<Press> m_press; // of the left button on a tile
    std::optional<GridLayout::Gap> m_dropGap;
    QTimer *m_dropScroll;
    int m_dropScrollStep = 0;
    int m_wheelRest = 0; // part of a notch, from fine-grained wheels
    NotificationCenter::Observer m_thumbnailObserver;
    NotificationCenter::Observer m_redrawObserver;
    NotificationCenter::Observer m_factsObserver;
};
