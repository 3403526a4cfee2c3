// Zooming and panning with the wheel, the keys and the mouse.

#include "PhotoView.h"

#include "PIPhoto.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>

#include <cmath>

namespace {

constexpr double kNotchFactor = 1.25;
constexpr double kWheelNotch = 120;
/// Of the view's side, for a press of an arrow key.
constexpr double kPanShare = 0.125;

}

/// As the picture and its room are now.
PictureZoom &PhotoView::zoom() const
{
    m_zoom.setPicture(m_picture.size());
    m_zoom.setArea(pictureArea(), devicePixelRatioF());
    return m_zoom;
}

/// Takes up what zooming, panning, or another size of the view led to.
void PhotoView::zoomChanged()
{
    const auto &edited = photo();
    const bool hasEffects =
        edited && m_picture.extent() == Extent::AsEdited && !edited->filterDicts().isEmpty(); // made for the whole
    m_detail.follow(image(), zoom(), hasEffects ? PictureZoom::Make::Whole : PictureZoom::Make::Parts);
    showPointer();
    update();
}

void PhotoView::showPointer()
{
    if (m_dragFrom)
        setCursor(Qt::ClosedHandCursor);
    else if (canZoom() && zoom().canPan())
        setCursor(Qt::OpenHandCursor);
    else if (cursor().shape() == Qt::OpenHandCursor || cursor().shape() == Qt::ClosedHandCursor)
        unsetCursor();
}

void PhotoView::zoomBy(double factor)
{
    if (!canZoom())
        return;
    zoom().zoomBy(factor, zoom().middle());
    zoomChanged();
}

void PhotoView::zoomTo(double scale)
{
    if (!canZoom())
        return;
    zoom().zoomTo(scale, zoom().middle());
    zoomChanged();
}

void PhotoView::zoomIn()
{
    zoomBy(kNotchFactor);
}

void PhotoView::zoomOut()
{
    zoomBy(1 / kNotchFactor);
}

void PhotoView::fit()
{
    m_zoom.fit();
    zoomChanged();
}

void PhotoView::panBy(QPointF way)
{
    zoom().panBy(onScreen(way));
    zoomChanged();
}

/// Turning away from oneself brings the picture nearer. With Shift, and to the sides, the wheel pans.
void PhotoView::wheelEvent(QWheelEvent *event)
{
    const QPoint turned = event->angleDelta();
    if (!canZoom() || event->modifiers().testFlag(Qt::AltModifier))
        return QWidget::wheelEvent(event);
    event->accept();
    if (event->modifiers().testFlag(Qt::ShiftModifier))
        return panBy(turned.x() != 0 ? turned : QPoint(turned.y(), 0));
    if (turned.y() == 0)
        return panBy(turned);
    zoom().zoomBy(std::pow(kNotchFactor, turned.y() / kWheelNotch), onScreen(event->position()));
    zoomChanged();
}

void PhotoView::keyPressEvent(QKeyEvent *event)
{
    if (!handleZoomKey(*event))
        QWidget::keyPressEvent(event);
}

bool PhotoView::handleZoomKey(const QKeyEvent &event)
{
    if (!canZoom() || event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier))
        return false;
    const bool pans = zoom().canPan();
    const double across = pans ? pictureArea().width() * kPanShare : 0;
    const double down = pans ? pictureArea().height() * kPanShare : 0;
    switch (event.key()) {
    case Qt::Key_Plus:
    case Qt::Key_Equal:
        zoomIn();
        return true;
    case Qt::Key_Minus:
        zoomOut();
        return true;
    case Qt::Key_0:
        fit();
        return true;
    case Qt::Key_1:
        zoomTo(1);
        return true;
    case Qt::Key_Left:
        panBy({across, 0});
        return pans;
    case Qt::Key_Right:
        panBy({-across, 0});
        return pans;
    case Qt::Key_Up:
        panBy({0, down});
        return pans;
    case Qt::Key_Down:
        panBy({0, -down});
        return pans;
    default:
        return false;
    }
}

void PhotoView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || !canZoom() || !zoom().canPan())
        return QWidget::mousePressEvent(event);
    m_dragFrom = event->position();
    showPointer();
}

void PhotoView::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_dragFrom)
        return QWidget::mouseMoveEvent(event);
    if (!(event->buttons() & Qt::LeftButton)) { // let go where it was not seen
        m_dragFrom.reset();
        return showPointer();
    }
    const QPointF way = event->position() - *m_dragFrom;
    m_dragFrom = event->position();
    panBy(way);
}

void PhotoView::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || !m_dragFrom)
        return QWidget::mouseReleaseEvent(event);
    m_dragFrom.reset();
    showPointer();
}

/// To 100 % where the pointer is, and back.
void PhotoView::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || !canZoom())
        return QWidget::mouseDoubleClickEvent(event);
    m_dragFrom.reset();
    if (!isFitted())
        return fit();
    zoom().zoomTo(1, onScreen(event->position()));
    zoomChanged();
}
