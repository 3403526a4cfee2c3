#include "ThumbnailGridView.h"

#include "AccessibleGrid.h"
#include "FileNotifications.h"
#include "LibraryNotifications.h"
#include "PIFolder.h"
#include "PIPhoto.h"
#include "PhotoLibrary.h"
#include "RubberBand.h"
#include "ThumbnailDelegate.h"
#include "ThumbnailGridModel.h"
#include "ThumbnailMaker.h"
#include "TileFetcher.h"

#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QTimer>

#include <algorithm>
#include <utility>

ThumbnailGridView::ThumbnailGridView(PhotoLibrary &library, QWidget *parent)
    : QAbstractItemView(parent)
    , m_model(new ThumbnailGridModel(this))
    , m_fetcher(new TileFetcher(library.thumbnails(), library.fileFacts(), *m_model, this))
    , m_delegate(new ThumbnailDelegate(m_fetcher->pictures(), library.thumbnails().placeholder(), this))
    , m_band(new RubberBand(*this))
    , m_dropScroll(new QTimer(this))
{
    AccessibleGrid::install(); // before anybody can ask for the interface, which is kept
    setModel(m_model);
    setItemDelegate(m_delegate);
    setSelectionMode(ExtendedSelection);
    setAutoScroll(false); // a timer of our own scrolls under drags
    setAcceptDrops(true);
    setDragEnabled(true);
    setEditTriggers(NoEditTriggers);
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setAccessibleName(tr("Photos"));
    connect(this, &ThumbnailGridView::selectedPhotosChanged, this,
            [this] { AccessibleGrid::announceSelection(*this); });
    connect(m_fetcher, &TileFetcher::tileChanged, this, &ThumbnailGridView::updateTile);
    connect(m_band, &RubberBand::stretched, this, &ThumbnailGridView::takeUpBand);
    connect(m_dropScroll, &QTimer::timeout, this, [this] {
        verticalScrollBar()->setValue(verticalOffset() + m_dropScrollStep);
        setDropGap({}); // until the pointer moves again
    });

    const auto changed = [this](const NotificationObject &object) {
        if (const auto *photo = object.as<PIPhoto>())
            redraw(*photo);
    };
    NotificationCenter &center = library.notifications();
    m_thumbnailObserver = center.observe(kThumbnailNotification, changed);
    m_redrawObserver = center.observe(kRedrawNotification, changed);
    m_factsObserver = center.observe(kFileFactsNotification, [this](const NotificationObject &object) {
        if (const auto *file = object.as<PIFileRef>())
            m_fetcher->factsTold(*file);
    });
}

ThumbnailGridView::~ThumbnailGridView() = default;

void ThumbnailGridView::setFolder(const std::shared_ptr<PIFolder> &folder)
{
    if (folder && folder == m_model->folder()) {
        reload();
        return;
    }
    IndexSet wanted = folder ? folder->selection() : IndexSet();
    const int count = folder ? int(folder->photos().size()) : 0;
    wanted.clampTo(count);
    if (wanted.isEmpty() && count > 0)
        wanted = IndexSet::single(0);

    exchangePhotos([&] { m_model->setFolder(folder); });
    verticalScrollBar()->setValue(0);
    static_cast<void>(applySelection(wanted));
    setCurrentAndAnchor(int(wanted.first().value_or(-1)));
    scrollToSelection();
    Q_EMIT selectedPhotosChanged();
}

std::shared_ptr<PIFolder> ThumbnailGridView::folder() const
{
    return m_model->folder();
}

void ThumbnailGridView::reload()
{
    const auto before = m_model->photos();
    const IndexSet selectedBefore = m_selected;
    const auto current = currentPhoto();
    exchangePhotos([this] { m_model->reload(); });

    const auto &now = m_model->photos();
    static_cast<void>(applySelection(rowsOfSame(before, selectedBefore, now)));
    int row = current ? rowOfSame(*current, now) : -1;
    if (row < 0)
        row = int(m_selected.first().value_or(now.isEmpty() ? -1 : 0));
    setCurrentAndAnchor(row);
    if (before != now || selectedBefore != m_selected)
        Q_EMIT selectedPhotosChanged();
}

void ThumbnailGridView::selectIndexes(const IndexSet &indexes)
{
    const bool changed = applySelection(indexes);
    if (const auto first = m_selected.first())
        setCurrentAndAnchor(int(*first));
    if (changed)
        Q_EMIT selectedPhotosChanged();
}

void ThumbnailGridView::selectWhere(const std::function<bool(const PIPhoto &)> &isWanted)
{
    IndexSet wanted;
    const std::shared_ptr<const PIFolder> shown = folder();
    for (qsizetype i = 0; shown && i < shown->photos().size(); ++i) {
        if (isWanted(*shown->photos().at(i)))
            wanted.add(i);
    }
    selectIndexes(wanted);
    scrollToSelection();
}

/// As much of the selection as fits, from its first photo on.
void ThumbnailGridView::scrollToSelection()
{
    if (const auto last = m_selected.last())
        scrollToRow(int(*last), EnsureVisible);
    if (const auto first = m_selected.first())
        scrollToRow(int(*first), EnsureVisible);
}

std::shared_ptr<PIPhoto> ThumbnailGridView::currentPhoto() const
{
    return m_model->photo(currentRow());
}

std::shared_ptr<PIPhoto> ThumbnailGridView::leadingPhoto() const
{
    return m_model->photo(int(nearest(m_selected, currentRow())));
}

bool ThumbnailGridView::makeCurrent(const PIPhoto &photo)
{
    const int row = rowOfSame(photo, m_model->photos());
    if (row >= 0)
        setCurrentAndAnchor(row);
    return row >= 0;
}

void ThumbnailGridView::redraw(const PIPhoto &photo)
{
    m_fetcher->photoChanged(photo);
    const auto visible = m_layout.visible(verticalOffset(), viewport()->height());
    for (int row = visible.first; row <= visible.last; ++row) {
        if (m_model->photo(row).get() == &photo)
            updateTile(row);
    }
}

void ThumbnailGridView::setColumnCount(int columns)
{
    columns = std::clamp(columns, GridLayout::kMinColumns, GridLayout::kMaxColumns);
    if (columns == m_columns)
        return;
    m_columns = columns;
    relayout(Anchor::CurrentPhoto);
    Q_EMIT columnCountChanged(columns);
}

void ThumbnailGridView::addColumns(int more)
{
    if (canAddColumns(more))
        setColumnCount(columnsWith(more));
}

int ThumbnailGridView::columnsWith(int more) const
{
    return std::clamp(m_layout.columns() + more, GridLayout::kMinColumns, m_layout.maxColumns());
}

TileText ThumbnailGridView::shown() const
{
    return m_delegate->shown();
}

void ThumbnailGridView::setShown(TileText lines)
{
    if (lines == shown())
        return;
    m_delegate->setShown(lines);
    m_fetcher->setDatesWanted(lines.testFlag(TileLine::Date));
    relayout(Anchor::CurrentPhoto);
}

QRect ThumbnailGridView::visualRect(const QModelIndex &index) const
{
    return index.isValid() ? tileRect(index.row()) : QRect();
}

void ThumbnailGridView::scrollTo(const QModelIndex &index, ScrollHint hint)
{
    if (index.isValid())
        scrollToRow(index.row(), hint);
}

void ThumbnailGridView::keyboardSearch(const QString &search)
{
    QAbstractItemView::keyboardSearch(search);
    m_gestures.setAnchor(currentRow());
    scrollTo(currentIndex());
}

QModelIndex ThumbnailGridView::indexAt(const QPoint &point) const
{
    const int row = rowAt(point);
    return row < 0 ? QModelIndex() : m_model->index(row);
}

QModelIndex ThumbnailGridView::moveCursor(CursorAction action, Qt::KeyboardModifiers)
{
    using Move = GridLayout::Move;
    Move move = Move::Home;
    switch (action) {
    case MoveLeft:
    case MovePrevious:
        move = Move::Left;
        break;
    case MoveRight:
    case MoveNext:
        move = Move::Right;
        break;
    case MoveUp:
        move = Move::Up;
        break;
    case MoveDown:
        move = Move::Down;
        break;
    case MovePageUp:
        move = Move::PageUp;
        break;
    case MovePageDown:
        move = Move::PageDown;
        break;
    case MoveEnd:
        move = Move::End;
        break;
    case MoveHome:
        break;
    }
    return m_model->index(m_layout.neighbour(currentRow(), move, viewport()->height()));
}

int ThumbnailGridView::horizontalOffset() const
{
    return 0;
}

int ThumbnailGridView::verticalOffset() const
{
    return verticalScrollBar()->value();
}

bool ThumbnailGridView::isIndexHidden(const QModelIndex &) const
{
    return false;
}

/// For callers of the base class; clicks and keys here go their own way.
void ThumbnailGridView::setSelection(const QRect &rect, QItemSelectionModel::SelectionFlags flags)
{
    const IndexSet touched = m_layout.touchedBy(rect.translated(0, verticalOffset()));
    selectionModel()->select(m_model->itemSelection(touched), flags);
}

QRegion ThumbnailGridView::visualRegionForSelection(const QItemSelection &selection) const
{
    const auto visible = m_layout.visible(verticalOffset(), viewport()->height());
    QRegion region;
    for (const auto &range : selection) {
        const int last = std::min(range.bottom(), visible.last);
        for (int row = std::max(range.top(), visible.first); row <= last; ++row)
            region += tileRect(row);
    }
    return region;
}

void ThumbnailGridView::updateGeometries()
{
    relayout(Anchor::TopRow);
    QAbstractItemView::updateGeometries();
}

void ThumbnailGridView::selectionChanged(const QItemSelection &selected, const QItemSelection &deselected)
{
    QAbstractItemView::selectionChanged(selected, deselected);
    if (!m_applying && takeUpSelection())
        Q_EMIT selectedPhotosChanged();
}

void ThumbnailGridView::currentChanged(const QModelIndex &current, const QModelIndex &previous)
{
    QAbstractItemView::currentChanged(current, previous);
    AccessibleGrid::announceFocus(*this);
}

void ThumbnailGridView::scrollContentsBy(int, int dy)
{
    if (m_band->isActive())
        viewport()->update();
    else
        viewport()->scroll(0, dy);
    showVisible();
}

void ThumbnailGridView::paintEvent(QPaintEvent *event)
{
    QPainter painter(viewport());
    m_fetcher->setPictureSide(m_layout.pictureSide(), devicePixelRatioF());
    QStyleOptionViewItem option;
    initViewItemOption(&option);
    const QStyle::State state = option.state & ~(QStyle::State_Selected | QStyle::State_HasFocus);
    const auto shown = m_layout.visible(verticalOffset() + event->rect().top(), event->rect().height());
    for (int row = shown.first; row <= shown.last; ++row) {
        option.rect = tileRect(row);
        if (!event->region().intersects(option.rect))
            continue;
        option.state = state;
        option.state.setFlag(QStyle::State_Selected, m_selected.contains(row));
        option.state.setFlag(QStyle::State_HasFocus, hasFocus() && row == currentRow());
        m_delegate->paint(&painter, option, m_model->index(row));
    }
    if (m_layout.count() == 0 && folder()) {
        painter.setPen(palette().color(QPalette::Disabled, QPalette::Text));
        painter.drawText(viewport()->rect(), Qt::AlignCenter, tr("No photos"));
    }
    m_band->paint(painter);
    if (m_dropGap)
        painter.fillRect(m_dropGap->mark.translated(0, -verticalOffset()), palette().highlight());
}

void ThumbnailGridView::changeEvent(QEvent *event)
{
    QAbstractItemView::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        relayout(Anchor::TopRow);
}

void ThumbnailGridView::focusInEvent(QFocusEvent *event)
{
    QAbstractItemView::focusInEvent(event);
    AccessibleGrid::announceFocus(*this);
}

/// Brings in other photos without anyone hearing of the selection that is lost on the way.
void ThumbnailGridView::exchangePhotos(const std::function<void()> &exchange)
{
    m_band->end();
    m_press.reset();
    endDrop();
    m_applying = true;
    exchange();
    m_applying = false;
    m_fetcher->modelReset();
    relayout(Anchor::TopRow);
}

void ThumbnailGridView::relayout(Anchor anchor)
{
    const Place place = placeOf(anchor);
    const int text = m_delegate->textHeight(fontMetrics());
    const QSize whole = maximumViewportSize();
    const GridLayout withoutBar(m_model->rowCount(), m_columns, whole.width(), text);
    const bool needsBar = withoutBar.contentHeight() > whole.height();
    // Whether there is a bar depends on the width without one; otherwise it could come and go for ever.
    verticalScrollBar()->setRange(0, needsBar ? std::max(1, verticalScrollBar()->maximum()) : 0);
    const GridLayout before =
        std::exchange(m_layout, GridLayout(m_model->rowCount(), m_columns, viewport()->width(), text));

    verticalScrollBar()->setSingleStep(std::max(20, m_layout.rowHeight() / 4));
    verticalScrollBar()->setPageStep(viewport()->height());
    verticalScrollBar()->setRange(0, needsBar ? std::max(1, m_layout.contentHeight() - viewport()->height()) : 0);
    goBackTo(place);
    m_fetcher->setPictureSide(m_layout.pictureSide(), devicePixelRatioF());
    viewport()->update();
    showVisible();
    if (before.columns() != m_layout.columns() || before.maxColumns() != m_layout.maxColumns())
        Q_EMIT columnsLaidOut();
}

/// The photo that is to stay where it is, and the point of its tile that does, with its height in the view.
ThumbnailGridView::Place ThumbnailGridView::placeOf(Anchor anchor) const
{
    const auto visible = m_layout.visible(verticalOffset(), viewport()->height());
    if (visible.isEmpty() || (anchor == Anchor::TopRow && verticalOffset() == 0))
        return {};
    if (anchor == Anchor::CurrentPhoto && visible.contains(currentRow()))
        return {currentRow(), 0.5, tileRect(currentRow()).center().y(), /*inSight=*/true};
    return {visible.first, double(-tileRect(visible.first).top()) / m_layout.rowHeight(), 0, /*inSight=*/false};
}

void ThumbnailGridView::goBackTo(const Place &place)
{
    if (place.row < 0)
        return;
    const QRect cell = m_layout.cellRect(place.row);
    verticalScrollBar()->setValue(cell.top() + qRound(place.fraction * cell.height()) - place.y);
    if (place.inSight)
        scrollToRow(place.row, EnsureVisible);
}

bool ThumbnailGridView::applySelection(IndexSet rows)
{
    rows.clampTo(m_model->rowCount());
    m_applying = true;
    // The selection model compares every old range with every new one; from nothing it goes straight.
    constexpr qint64 kTooManyPairs = 1'000'000;
    if (qint64(rows.ranges().size()) * selectionModel()->selection().size() > kTooManyPairs)
        selectionModel()->clearSelection();
    selectionModel()->select(m_model->itemSelection(rows), QItemSelectionModel::ClearAndSelect);
    m_applying = false;
    return takeUpSelection();
}

/// True when the set of rows is another than before.
bool ThumbnailGridView::takeUpSelection()
{
    const IndexSet rows = ThumbnailGridModel::rowsOf(selectionModel()->selection());
    if (m_model->folder())
        m_model->folder()->selection() = rows;
    return std::exchange(m_selected, rows) != rows;
}

void ThumbnailGridView::setCurrentAndAnchor(int row)
{
    selectionModel()->setCurrentIndex(m_model->index(row), QItemSelectionModel::NoUpdate);
    m_gestures.setAnchor(row);
}

void ThumbnailGridView::updateTile(int row)
{
    viewport()->update(tileRect(row));
}

void ThumbnailGridView::scrollToRow(int row, ScrollHint hint)
{
    const QRect cell = m_layout.cellRect(row);
    if (cell.isEmpty())
        return;
    const int height = viewport()->height();
    // The grid's own margin comes into view with the outermost rows.
    const int top = cell.top() - GridLayout::kMargin;
    const int bottom = cell.bottom() + 1 + GridLayout::kMargin - height;
    int value = verticalOffset();
    switch (hint) {
    case PositionAtTop:
        value = top;
        break;
    case PositionAtBottom:
        value = bottom;
        break;
    case PositionAtCenter:
        value = cell.center().y() - height / 2;
        break;
    case EnsureVisible:
        value = std::min(top, std::max(bottom, value));
        break;
    }
    verticalScrollBar()->setValue(value);
}

void ThumbnailGridView::showVisible()
{
    m_fetcher->setVisible(m_layout.visible(verticalOffset(), viewport()->height()));
}

QRect ThumbnailGridView::tileRect(int row) const
{
    return m_layout.cellRect(row).translated(0, -verticalOffset());
}

/// The room between the tiles belongs to none, so that a rubber band can start there.
int ThumbnailGridView::rowAt(QPoint position) const
{
    const int row = m_layout.indexAt(position + QPoint(0, verticalOffset()));
    constexpr int kPadding = GridLayout::kPadding;
    const QRect inner = tileRect(row).adjusted(kPadding, kPadding, -kPadding, -kPadding);
    return inner.contains(position) ? row : -1;
}

int ThumbnailGridView::currentRow() const
{
    return currentIndex().row();
}
