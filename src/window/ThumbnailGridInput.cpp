// What the mouse, the keys and drags do to the grid.

#include "DragData.h"
#include "PIPhoto.h"
#include "RubberBand.h"
#include "ThumbnailGridModel.h"
#include "ThumbnailGridView.h"
#include "TileFetcher.h"

#include <QApplication>
#include <QDrag>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>

#include <utility>

namespace {

constexpr int kWheelNotch = 120;

GridSelection::Mode modeFor(Qt::KeyboardModifiers modifiers)
{
    const bool extends = modifiers.testFlag(Qt::ShiftModifier);
    const bool adds = modifiers.testFlag(Qt::ControlModifier);
    if (extends)
        return adds ? GridSelection::Mode::Add : GridSelection::Mode::Extend;
    return adds ? GridSelection::Mode::Toggle : GridSelection::Mode::Replace;
}

}

void ThumbnailGridView::mousePressEvent(QMouseEvent *event)
{
    m_press.reset();
    const int row = rowAt(event->position().toPoint());
    if (row >= 0)
        pressTile(row, *event);
    else
        beginBand(*event);
    event->accept();
}

void ThumbnailGridView::mouseMoveEvent(QMouseEvent *event)
{
    const QPoint position = event->position().toPoint();
    event->accept();
    if (!m_press)
        m_band->stretch(position);
    else if ((position - m_press->position).manhattanLength() >= QApplication::startDragDistance())
        startDrag(Qt::CopyAction);
}

void ThumbnailGridView::mouseReleaseEvent(QMouseEvent *event)
{
    m_band->end();
    event->accept();
    if (event->button() != Qt::LeftButton)
        return;
    const auto press = std::exchange(m_press, std::nullopt);
    if (press && press->choosesOnRelease && rowAt(event->position().toPoint()) == press->row)
        choose(press->row, modeFor(press->modifiers));
}

void ThumbnailGridView::mouseDoubleClickEvent(QMouseEvent *event)
{
    const int row = rowAt(event->position().toPoint());
    if (event->button() == Qt::LeftButton && row >= 0)
        Q_EMIT photoActivated(row);
    event->accept();
}

void ThumbnailGridView::keyPressEvent(QKeyEvent *event)
{
    static const QHash<int, CursorAction> cursorKeys{
        {Qt::Key_Left, MoveLeft}, {Qt::Key_Right, MoveRight},   {Qt::Key_Up, MoveUp},
        {Qt::Key_Down, MoveDown}, {Qt::Key_PageUp, MovePageUp}, {Qt::Key_PageDown, MovePageDown},
        {Qt::Key_Home, MoveHome}, {Qt::Key_End, MoveEnd},
    };
    const auto cursorKey = cursorKeys.constFind(event->key());
    if (event->matches(QKeySequence::SelectAll))
        selectAll();
    else if (cursorKey != cursorKeys.constEnd())
        moveTo(moveCursor(*cursorKey, event->modifiers()).row(), event->modifiers());
    else if (event->key() == Qt::Key_Space)
        toggleCurrent(event->modifiers());
    else if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && currentRow() >= 0)
        Q_EMIT photoActivated(currentRow());
    else if (!handleZoomKey(*event))
        QAbstractItemView::keyPressEvent(event);
}

/// Turning away from oneself brings the photos nearer: fewer columns.
void ThumbnailGridView::wheelEvent(QWheelEvent *event)
{
    if (!event->modifiers().testFlag(Qt::ControlModifier)) {
        QAbstractItemView::wheelEvent(event);
        return;
    }
    m_wheelRest += event->angleDelta().y();
    const int notches = m_wheelRest / kWheelNotch;
    m_wheelRest -= notches * kWheelNotch;
    addColumns(-notches);
    event->accept();
}

void ThumbnailGridView::choose(int row, GridSelection::Mode mode)
{
    const bool changed = applySelection(m_gestures.choose(m_selected, row, mode));
    selectionModel()->setCurrentIndex(m_model->index(row), QItemSelectionModel::NoUpdate);
    if (changed)
        Q_EMIT selectedPhotosChanged();
}

/// With Control alone the cursor moves and the selection stays.
void ThumbnailGridView::moveTo(int row, Qt::KeyboardModifiers modifiers)
{
    if (row < 0)
        return;
    if (modeFor(modifiers) == GridSelection::Mode::Toggle)
        selectionModel()->setCurrentIndex(m_model->index(row), QItemSelectionModel::NoUpdate);
    else
        choose(row, modeFor(modifiers));
    scrollToRow(row, EnsureVisible);
}

void ThumbnailGridView::toggleCurrent(Qt::KeyboardModifiers modifiers)
{
    if (currentRow() >= 0)
        choose(currentRow(), modeFor(modifiers));
}

bool ThumbnailGridView::handleZoomKey(const QKeyEvent &event)
{
    if (event.modifiers() & (Qt::AltModifier | Qt::MetaModifier))
        return false;
    switch (event.key()) {
    case Qt::Key_Plus:
    case Qt::Key_Equal:
        addColumns(-1);
        return true;
    case Qt::Key_Minus:
        addColumns(1);
        return true;
    default:
        return false;
    }
}

void ThumbnailGridView::pressTile(int row, const QMouseEvent &event)
{
    const auto mode = modeFor(event.modifiers());
    const bool isLeft = event.button() == Qt::LeftButton;
    const bool isSelected = m_selected.contains(row);
    const bool keeps =
        isSelected && (mode == GridSelection::Mode::Replace || (isLeft && mode == GridSelection::Mode::Toggle));
    if (isLeft)
        m_press = {row, event.position().toPoint(), event.modifiers(), keeps};
    if (keeps)
        setCurrentAndAnchor(row);
    else if (isLeft)
        choose(row, mode);
    else if (event.button() == Qt::RightButton && !isSelected)
        choose(row, GridSelection::Mode::Replace);
}

void ThumbnailGridView::beginBand(const QMouseEvent &event)
{
    const auto mode = modeFor(event.modifiers());
    if (mode == GridSelection::Mode::Replace && applySelection({}))
        Q_EMIT selectedPhotosChanged();
    if (event.button() != Qt::LeftButton)
        return;
    m_gestures.beginBand(m_selected, mode);
    m_band->begin(event.position().toPoint());
}

void ThumbnailGridView::takeUpBand(const QRect &contentRect)
{
    if (!applySelection(m_gestures.band(m_layout.touchedBy(contentRect))))
        return;
    if (!m_selected.isEmpty())
        setCurrentAndAnchor(int(nearest(m_selected, currentRow())));
    Q_EMIT selectedPhotosChanged();
}

namespace {

QList<QRect> fannedOut(const QList<QPixmap> &pictures)
{
    constexpr int kSide = 72;
    constexpr int kStep = 8;
    QList<QRect> places;
    for (qsizetype i = 0; i < pictures.size(); ++i) {
        const QSize size = pictures.at(i).size().scaled(kSide, kSide, Qt::KeepAspectRatio);
        places.append(QRect(QPoint(kStep, kStep) * int(i), size));
    }
    return places;
}

void paintCount(QPainter &painter, const QRect &area, qint64 count, const QWidget &widget)
{
    const QString text = QString::number(count);
    QRect badge(0, 0, widget.fontMetrics().horizontalAdvance(text) + 12, widget.fontMetrics().height() + 4);
    badge.moveBottomRight(area.bottomRight());
    painter.setPen(Qt::NoPen);
    painter.setBrush(widget.palette().highlight());
    painter.drawRoundedRect(badge, badge.height() / 2.0, badge.height() / 2.0);
    painter.setPen(widget.palette().color(QPalette::HighlightedText));
    painter.drawText(badge, Qt::AlignCenter, text);
}

/// The pictures of the first few photos that are dragged, one over the other, and how many there are.
QPixmap fanOf(const QList<QPixmap> &pictures, qint64 count, const QWidget &widget)
{
    const QList<QRect> places = fannedOut(pictures);
    QRect area(0, 0, 32, 32);
    for (const QRect &place : places)
        area = place == places.first() ? place : area.united(place);
    QPixmap fan(area.size() * widget.devicePixelRatioF());
    fan.setDevicePixelRatio(widget.devicePixelRatioF());
    fan.fill(Qt::transparent);
    QPainter painter(&fan);
    painter.setRenderHints(QPainter::SmoothPixmapTransform | QPainter::Antialiasing);
    for (qsizetype i = pictures.size() - 1; i >= 0; --i)
        painter.drawPixmap(places.at(i), pictures.at(i));
    if (count > 1)
        paintCount(painter, area, count, widget);
    return fan;
}

}

QPixmap ThumbnailGridView::dragPixmap() const
{
    constexpr int kMost = 3;
    QList<QPixmap> pictures;
    for (const qint64 row : m_selected.indexes(m_model->rowCount())) {
        const auto *picture = m_fetcher->pictures().find(m_model->photo(int(row))->guid());
        if (picture)
            pictures.append(picture->pixmap);
        if (pictures.size() == kMost)
            break;
    }
    return fanOf(pictures, m_selected.count(), *this);
}

/// Whoever takes photos can only copy them, so that no other program moves the user's files.
void ThumbnailGridView::startDrag(Qt::DropActions)
{
    const auto press = std::exchange(m_press, std::nullopt);
    if (!press || m_selected.isEmpty() || !dragEnabled())
        return;
    PhotoList photos;
    for (const qint64 row : m_selected.indexes(m_model->rowCount()))
        photos.append(m_model->photo(int(row)));
    const bool copies = press->modifiers.testFlag(Qt::ControlModifier);
    auto *drag = new QDrag(this); // deletes itself after the drop
    drag->setMimeData(
        DragData::forPhotos(photos, copies ? DragData::Transfer::Copy : DragData::Transfer::Move).release());
    drag->setPixmap(dragPixmap());
    drag->exec(Qt::CopyAction);
}

void ThumbnailGridView::dragEnterEvent(QDragEnterEvent *event)
{
    takeUpDrag(*event);
}

void ThumbnailGridView::dragMoveEvent(QDragMoveEvent *event)
{
    takeUpDrag(*event);
}

void ThumbnailGridView::takeUpDrag(QDragMoveEvent &event)
{
    constexpr int kEdge = 24;
    const int y = event.position().toPoint().y();
    const int speed = std::max(8, m_layout.rowHeight() / 10);
    m_dropScrollStep = y < kEdge ? -speed : y >= viewport()->height() - kEdge ? speed : 0;

    const auto gap = gapFor(event);
    if (!gap) {
        endDrop();
        event.ignore();
        return;
    }
    setDropGap(gap);
    constexpr int kScrollInterval = 30; // milliseconds
    if (m_dropScrollStep == 0)
        m_dropScroll->stop();
    else if (!m_dropScroll->isActive())
        m_dropScroll->start(kScrollInterval);
    event.setDropAction(Qt::CopyAction); // files stay where they are, whatever the source proposes
    event.accept();
}

void ThumbnailGridView::dragLeaveEvent(QDragLeaveEvent *)
{
    endDrop();
}

void ThumbnailGridView::endDrop()
{
    m_dropScroll->stop();
    setDropGap({});
}

void ThumbnailGridView::dropEvent(QDropEvent *event)
{
    const auto gap = gapFor(*event);
    endDrop();
    if (!gap) {
        event->ignore();
        return;
    }
    event->setDropAction(Qt::CopyAction);
    event->accept();
    Q_EMIT dropped(*event, gap->before);
}

/// Photos can be put elsewhere in their folder, and files can join it behind one of its photos.
std::optional<GridLayout::Gap> ThumbnailGridView::gapFor(const QDropEvent &event) const
{
    const auto kind = DragData::kind(event);
    const bool isFiles = kind == NavigatorDrop::Kind::Files;
    if (!isFiles && (kind != NavigatorDrop::Kind::Photos || !folder()))
        return std::nullopt;
    const auto gap = m_layout.gapAt(event.position().toPoint() + QPoint(0, verticalOffset()));
    if (!isFiles || gap.before > 0 || m_layout.count() == 0)
        return gap;
    return m_layout.gapAt(m_layout.cellRect(0).center() + QPoint(m_layout.pictureSide() / 2, 0));
}

void ThumbnailGridView::setDropGap(const std::optional<GridLayout::Gap> &gap)
{
    const auto area = [this](const std::optional<GridLayout::Gap> &at) {
        return at ? at->mark.translated(0, -verticalOffset()).adjusted(-1, -1, 1, 1) : QRect();
    };
    viewport()->update(area(m_dropGap));
    m_dropGap = gap;
    viewport()->update(area(m_dropGap));
}
