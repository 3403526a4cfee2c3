#include "LibraryWindow.h"

#include "DragData.h"
#include "PIFolder.h"
#include "PIPhoto.h"
#include "StringUtilities.h"
#include "TextForPeople.h"
#include "WindowTitle.h"

#include <QCloseEvent>
#include <QDropEvent>
#include <QLabel>
#include <QStatusBar>

#include <utility>

namespace {

constexpr int kToldMilliseconds = 8000;

}

LibraryWindow::LibraryWindow(QWidget *parent)
    : QMainWindow(parent)
    , m_summary(new QLabel(this))
{
    setAcceptDrops(true);
    setObjectName(QStringLiteral("LibraryWindow"));
    setMinimumSize(700, 420);
    m_summary->setContentsMargins(0, 0, 6, 0); // clear of the screen's edge
    statusBar()->addPermanentWidget(m_summary);
    statusBar()->setSizeGripEnabled(false);
}

void LibraryWindow::showTitle(const PIFolder *folder, const PIPhoto *photo)
{
    QString title = tr("Photo");
    if (folder && photo && photo->fileRef())
        title =
            tr("Photo — %1 — %2")
                .arg(titlePart(folder->name()), titlePart(QVString::fileNameMinusExtension(photo->fileRef()->path())));
    setWindowTitle(title + QStringLiteral("[*]"));
}

void LibraryWindow::showSummary(const PIFolder *folder, qint64 selected)
{
    if (!folder) {
        m_summary->clear();
        return;
    }
    QString text = CountText(folder->photos().size(), tr("%n photo"), tr("%n photos"));
    if (selected > 1)
        text = tr("%1, %n selected", nullptr, static_cast<int>(selected)).arg(text);
    m_summary->setText(text);
}

void LibraryWindow::tell(const QString &text)
{
    statusBar()->showMessage(text, kToldMilliseconds);
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
