#include "LibraryWindow.h"

#include "DragData.h"

#include <QCloseEvent>
#include <QDropEvent>

#include <utility>

LibraryWindow::LibraryWindow(QWidget *parent)
    : QMainWindow(parent)
{
    setAcceptDrops(true);
    setObjectName(QStringLiteral("LibraryWindow"));
}

void LibraryWindow::changeEvent(QEvent *event)
{
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::WindowStateChange)
        Q_EMIT fullScreenChanged(isFullScreen());
    else if (event->type() == QEvent::ActivationChange)
        activationChanged();
}

void LibraryWindow::activationChanged()
{
    const bool wasLeft = std::exchange(m_wasLeft, !isActiveWindow());
    if (m_wasLeft)
        Q_EMIT didResignKey();
    else if (wasLeft)
        Q_EMIT cameBack();
}

void LibraryWindow::closeEvent(QCloseEvent *event)
{
    if (m_shouldClose && !m_shouldClose()) {
        event->ignore();
        return;
    }
    QMainWindow::closeEvent(event);
    Q_EMIT closed();
}

void LibraryWindow::dragEnterEvent(QDragEnterEvent *event)
{
    if (DragData::kind(*event) == NavigatorDrop::Kind::Files) {
        event->setDropAction(Qt::CopyAction); // the files stay where they are, whatever the source proposes
        event->accept();
    }
}

void LibraryWindow::dropEvent(QDropEvent *event)
{
    if (DragData::kind(*event) != NavigatorDrop::Kind::Files)
        return;
    event->setDropAction(Qt::CopyAction);
    event->accept();
    Q_EMIT filesDropped(DragData::files(*event->mimeData()));
}
