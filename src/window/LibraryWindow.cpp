#include "LibraryWindow.h"

#include <QCloseEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QUrl>

#include <utility>

namespace {

QStringList localFiles(const QMimeData &data)
{
    QStringList paths;
    for (const QUrl &url : data.urls()) {
        if (url.isLocalFile())
            paths << url.toLocalFile();
    }
    return paths;
}

}

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
    if (event->possibleActions().testFlag(Qt::CopyAction) && !localFiles(*event->mimeData()).isEmpty()) {
        event->setDropAction(Qt::CopyAction); // the files stay where they are, whatever the source proposes
        event->accept();
    }
}

void LibraryWindow::dropEvent(QDropEvent *event)
{
    const QStringList paths = localFiles(*event->mimeData());
    if (paths.isEmpty())
        return;
    event->setDropAction(Qt::CopyAction);
    event->accept();
    Q_EMIT filesDropped(paths);
}
