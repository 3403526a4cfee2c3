#include "QVCoordinateView.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

namespace {

constexpr QSize kUsualSize(180, 120);
constexpr int kMargin = 2; ///< for the mark of the focus

QPointF inPicture(QPointF coordinate)
{
    return {std::clamp(coordinate.x(), -1.0, 1.0), std::clamp(coordinate.y(), -1.0, 1.0)};
}

/// Dark under light, so that it is seen on any picture.
void paintCross(QPainter &painter, QPointF at)
{
    constexpr double kArm = 9;
    constexpr double kGap = 3;
    for (const auto &[color, width] : {std::pair(QColor(0, 0, 0, 160), 4.0), std::pair(QColor(Qt::white), 1.6)}) {
        painter.setPen(QPen(color, width, Qt::SolidLine, Qt::RoundCap));
        painter.drawEllipse(at, kGap + 2, kGap + 2);
        for (const QPointF &direction : {QPointF(1, 0), QPointF(-1, 0), QPointF(0, 1), QPointF(0, -1)})
            painter.drawLine(at + direction * (kGap + 2), at + direction * kArm);
    }
}

}

QVCoordinateView::QVCoordinateView(const QString &name, QWidget *parent)
    : QWidget(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    setMaximumWidth(kUsualSize.width());
    setCursor(Qt::CrossCursor);
    setAccessibleName(name);
    setToolTip(tr("%1. Drag the cross, or use the arrow keys. A double click puts it in the middle").arg(name));
}

void QVCoordinateView::setPicture(const QImage &picture)
{
    m_picture = picture;
    updateGeometry();
    update();
}

void QVCoordinateView::setCoordinate(QPointF coordinate)
{
    m_coordinate = coordinate;
    setAccessibleDescription(QStringLiteral("%1, %2").arg(coordinate.x(), 0, 'f', 2).arg(coordinate.y(), 0, 'f', 2));
    update();
}

QRectF QVCoordinateView::pictureRect() const
{
    const QRectF room = QRectF(rect()).adjusted(kMargin, kMargin, -kMargin, -kMargin);
    const QSizeF shape = m_picture.isNull() ? QSizeF(3, 2) : QSizeF(m_picture.size());
    const QSizeF size = shape.scaled(room.size(), Qt::KeepAspectRatio);
    return {room.center() - QPointF(size.width() / 2, size.height() / 2), size};
}

QSize QVCoordinateView::sizeHint() const
{
    return kUsualSize;
}

QSize QVCoordinateView::minimumSizeHint() const
{
    return kUsualSize / 2;
}

QPointF QVCoordinateView::crossPosition() const
{
    const QPointF shown = inPicture(m_coordinate);
    const QRectF picture = pictureRect();
    return picture.center() + QPointF(shown.x() * picture.width() / 2, -shown.y() * picture.height() / 2);
}

void QVCoordinateView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    const QRectF picture = pictureRect();
    if (m_picture.isNull())
        painter.fillRect(picture, palette().color(QPalette::Mid));
    else
        painter.drawImage(picture, m_picture);
    if (hasFocus()) {
        painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
        painter.drawRect(picture);
    }
    paintCross(painter, crossPosition());
}

void QVCoordinateView::moveTo(QPointF coordinate)
{
    const QPointF place = inPicture(coordinate);
    if (place == m_coordinate)
        return;
    setCoordinate(place);
    Q_EMIT coordinateChanged(place);
}

void QVCoordinateView::dragTo(QPointF position)
{
    const QRectF picture = pictureRect();
    const QPointF offset = position - picture.center();
    moveTo({2 * offset.x() / picture.width(), -2 * offset.y() / picture.height()});
}

void QVCoordinateView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        dragTo(event->position());
}

void QVCoordinateView::mouseMoveEvent(QMouseEvent *event)
{
    if (event->buttons() & Qt::LeftButton)
        dragTo(event->position());
}

void QVCoordinateView::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        Q_EMIT editingFinished();
}

void QVCoordinateView::mouseDoubleClickEvent(QMouseEvent *)
{
    moveTo({0, 0});
}

void QVCoordinateView::keyPressEvent(QKeyEvent *event)
{
    const double step = event->modifiers() & Qt::ShiftModifier ? 0.1 : 0.01;
    const QPointF from = inPicture(m_coordinate);
    switch (event->key()) {
    case Qt::Key_Left:
        return moveTo(from - QPointF(step, 0));
    case Qt::Key_Right:
        return moveTo(from + QPointF(step, 0));
    case Qt::Key_Up:
        return moveTo(from + QPointF(0, step));
    case Qt::Key_Down:
        return moveTo(from - QPointF(0, step));
    case Qt::Key_Home:
        return moveTo({0, 0});
    default:
        QWidget::keyPressEvent(event);
    }
}
