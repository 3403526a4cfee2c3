// What the mouse and the keys do to the photo: cropping and stepping.

#include "PIImageView.h"

#include <QKeyEvent>
#include <QMouseEvent>

namespace {

Qt::CursorShape cursorFor(int zone)
{
    using namespace CropZone;
    switch (zone) {
    case kNone:
        return Qt::ArrowCursor;
    case kMove:
        return Qt::SizeAllCursor;
    case kLeft + kMiddleY:
    case kRight + kMiddleY:
        return Qt::SizeHorCursor;
    case kMiddleX + kTop:
    case kMiddleX + kBottom:
        return Qt::SizeVerCursor;
    case kLeft + kTop:
    case kRight + kBottom:
        return Qt::SizeFDiagCursor;
    default:
        return Qt::SizeBDiagCursor;
    }
}

}

void PIImageView::showCursor(QPointF pointer)
{
    const int tracked = m_crop.trackZone();
    setCursor(cursorFor(tracked != CropZone::kNone ? tracked : m_crop.zoneAt(pointer, frame())));
}

void PIImageView::mousePressEvent(QMouseEvent *event)
{
    if (!isReady() || event->button() != Qt::LeftButton || pictureRect().isEmpty())
        return PhotoView::mousePressEvent(event);
    m_crop.mouseDown(event->position(), frame());
    showCursor(event->position());
}

void PIImageView::mouseMoveEvent(QMouseEvent *event)
{
    if (!isReady() || pictureRect().isEmpty())
        return PhotoView::mouseMoveEvent(event);
    if (!(event->buttons() & Qt::LeftButton))
        static_cast<void>(m_crop.mouseUp()); // let go where it was not seen
    if (m_crop.mouseDragged(event->position(), frame()))
        cropWasChanged();
    showCursor(event->position());
}

void PIImageView::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || !m_crop.mouseUp())
        return PhotoView::mouseReleaseEvent(event);
    showCursor(event->position());
    cropWasChanged();
}

void PIImageView::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (!m_cropping)
        return PhotoView::mouseDoubleClickEvent(event);
    mousePressEvent(event);
}

void PIImageView::keyPressEvent(QKeyEvent *event)
{
    if (!HandleCroppingKey(*this, *event) && !handleZoomKey(*event) && !handleStepKey(*event))
        PhotoView::keyPressEvent(event);
}

/// What is left of the arrows while there is nothing to pan.
bool PIImageView::handleStepKey(const QKeyEvent &event)
{
    if (m_cropping || event.modifiers() & ~Qt::KeypadModifier)
        return false;
    const bool isNext = event.key() == Qt::Key_Right || event.key() == Qt::Key_PageDown;
    if (!isNext && event.key() != Qt::Key_Left && event.key() != Qt::Key_PageUp)
        return false;
    Q_EMIT stepWanted(isNext ? StepDirection::Next : StepDirection::Previous);
    return true;
}

void PIImageView::focusInEvent(QFocusEvent *event)
{
    PhotoView::focusInEvent(event);
    update();
}

void PIImageView::focusOutEvent(QFocusEvent *event)
{
    PhotoView::focusOutEvent(event);
    update();
}

bool HandleCroppingKey(PIImageView &view, const QKeyEvent &event)
{
    if (!view.hasFocus() || !view.isCropping())
        return false;
    switch (event.key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        view.acceptCrop(PIImageView::Keep::Crop);
        return true;
    case Qt::Key_Escape:
        view.cancelCrop();
        return true;
    default:
        return false;
    }
}
