#include "LargePhotoCommands.h"

#include "CommandState.h"
#include "LibraryActions.h"
#include "LibraryEditor.h"
#include "LibraryView.h"
#include "PIDetailController.h"
#include "PIFolder.h"
#include "PIImageView.h"
#include "PIPreviewController.h"
#include "PhotoEdits.h"

LargePhotoCommands::LargePhotoCommands(LibraryEditor &editor, LibraryActions &actions, PIDetailController &detail,
                                       QWidget &window)
    : QObject(&window)
    , m_editor(editor)
    , m_view(detail.photoView())
    , m_window(window)
{
    actions.bind(Command::PreviewSelection, [this](bool) { preview(PhotoEdits(m_editor).selectedPhotos()); });
    actions.bind(Command::PreviewFolder, [this](bool) {
        const std::shared_ptr<const PIFolder> folder = m_editor.view().shownFolder();
        preview(folder ? folder->photos() : PIGroup::PhotoList());
    });
    bindZoom(actions);
}

void LargePhotoCommands::bindZoom(LibraryActions &actions)
{
    const auto bindTo = [&](Command command, auto zoom) {
        actions.bind(command, [this, zoom](bool) {
            Q_EMIT largePhotoWanted();
            zoom(m_view);
        });
    };
    bindTo(Command::ZoomPhotoIn, [](PIImageView &view) { view.zoomIn(); });
    bindTo(Command::ZoomPhotoOut, [](PIImageView &view) { view.zoomOut(); });
    bindTo(Command::FitPhoto, [](PIImageView &view) { view.fit(); });
    bindTo(Command::PhotoAtFullSize, [](PIImageView &view) { view.zoomTo(1); });
}

void LargePhotoCommands::describe(CommandState &state) const
{
    state.canZoomPhoto = m_view.canZoom();
}

void LargePhotoCommands::preview(const PIGroup::PhotoList &photos)
{
    const auto folder = m_editor.view().shownFolder();
    PIPreviewController::preview(m_editor, photos, folder ? folder->name() : QString(), m_window);
}
