#pragma once

#include "PIGroup.h"

#include <QWidget>

class LibraryEditor;
class PIPreview;

/// The window of the preview: it fills the screen, and the library window waits until it is closed. It deletes itself
/// then.
class PIPreviewController final : public QWidget
{
    Q_OBJECT

public:
    /// Opens the preview on the screen of `window`, which becomes its parent; null, and nothing is opened, when there
    /// are no photos. A crop in progress is accepted first. `editor` outlives it.
    static PIPreviewController *preview(LibraryEditor &editor, const PIGroup::PhotoList &photos,
                                        const QString &inFolder, QWidget &window);

    [[nodiscard]] PIPreview &view() const { return *m_preview; }

private:
    PIPreviewController(LibraryEditor &editor, QWidget &window);
    void zoomTo(const QScreen &screen);

    PIPreview *m_preview;
};
