#pragma once

#include "PIGroup.h"

#include <QObject>

class LibraryActions;
class LibraryEditor;
class PIDetailController;
class PIImageView;
class QWidget;
struct CommandState;

/// The commands that show photos large: zooming the current one, and the preview.
class LargePhotoCommands final : public QObject
{
    Q_OBJECT

public:
    /// Lets the actions run the commands. All outlive it; `window` becomes its parent.
    LargePhotoCommands(LibraryEditor &editor, LibraryActions &actions, PIDetailController &detail, QWidget &window);

    /// Tells what the commands would act on.
    void describe(CommandState &state) const;
    /// Shows the photos one by one on the whole screen; nothing when there are none.
    void preview(const PIGroup::PhotoList &photos);

Q_SIGNALS:
    /// The photo is to be zoomed where it is shown large.
    void largePhotoWanted();

private:
    void bindZoom(LibraryActions &actions);

    LibraryEditor &m_editor;
    PIImageView &m_view;
    QWidget &m_window;
};
