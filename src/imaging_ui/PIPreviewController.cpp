#include "PIPreviewController.h"

#include "LibraryEditor.h"
#include "LibraryNotifications.h"
#include "PIPreview.h"
#include "PhotoLibrary.h"
#include "WindowTitle.h"

#include <QBoxLayout>
#include <QScreen>

PIPreviewController *PIPreviewController::preview(LibraryEditor &editor, const PIGroup::PhotoList &photos,
                                                  const QString &inFolder, QWidget &window)
{
    if (photos.isEmpty())
        return nullptr;
    editor.library().notifications().post(kNormalizeNotification);
    auto *controller = new PIPreviewController(editor, window);
    controller->m_preview->setPhotos(photos, inFolder);
    controller->zoomTo(*window.screen());
    controller->m_preview->setFocus();
    return controller;
}

PIPreviewController::PIPreviewController(LibraryEditor &editor, QWidget &window)
    : QWidget(&window, Qt::Window)
    , m_preview(new PIPreview(editor, this))
{
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowModality(Qt::ApplicationModal);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_preview);
    connect(m_preview, &PIPreview::titleChanged, this,
            [this](const QString &title) { setWindowTitle(titlePart(title)); });
    connect(m_preview, &PIPreview::closeWanted, this, &QWidget::close);
}

void PIPreviewController::zoomTo(const QScreen &screen)
{
    setGeometry(screen.geometry()); // which says the screen, too
    setWindowState(Qt::WindowFullScreen);
    show();
    raise();
    activateWindow();
}
