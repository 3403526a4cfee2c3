#pragma once

#include "PhotoEdits.h"

#include <QObject>

class LibraryActions;
class PIDetailController;
class PIImageView;
class QMenu;
class QWidget;
class ThumbnailGridView;
class UserDefaults;
struct CommandState;

/// The commands on crops, and the menu of the sizes that they may be held to.
class CropCommands final : public QObject
{
    Q_OBJECT

public:
    /// Lets the actions run the commands. All outlive it; `window` becomes its parent.
    CropCommands(LibraryEditor &editor, UserDefaults &defaults, LibraryActions &actions, ThumbnailGridView &grid,
                 PIDetailController &detail, QWidget &window);

    [[nodiscard]] QMenu &sizesMenu() { return *m_sizesMenu; }
    /// Tells what the commands would act on.
    void describe(CommandState &state) const;
    /// Gives the crop command the name of what it does now.
    void showTitle(const CommandState &state);

Q_SIGNALS:
    /// Commands are enabled or disabled now, or have other names.
    void changed();
    /// The photo is to be cropped where it is shown large.
    void largePhotoWanted();

private:
    [[nodiscard]] QMenu *makeSizesMenu(QWidget &window);
    void crop();
    void startCrop();
    void setCropSize(int index);
    void clearCrop();
    void selectUncropped();
    void cropChanged();

    UserDefaults &m_defaults;
    LibraryActions &m_actions;
    ThumbnailGridView &m_grid;
    PIImageView &m_view;
    PhotoEdits m_edits;
    QMenu *m_sizesMenu;
    bool m_wasCropping = false;
};
