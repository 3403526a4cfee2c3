#pragma once

#include "PIDetailBaseVC.h"

class LibraryEditor;
class PIImageView;
class QAction;
class QHBoxLayout;
class QLabel;
class QMenu;
class QPushButton;

/// The crop section: how large a part of the picture is shown, also while it is being drawn, and the way back to the
/// whole.
class PIDetailCropVC final : public PIDetailBaseVC
{
    Q_OBJECT

public:
    /// All outlive the section. `view` is where the photo is cropped.
    PIDetailCropVC(LibraryEditor &editor, const PIDetailController &controller, const PIImageView &view,
                   QWidget *parent = nullptr);

    /// Puts buttons for these into the section.
    void addCommands(QAction &crop, QMenu &cropSizes);

protected:
    void selectionChanged() override;

private:
    void updateCrop();
    void uncrop();

    LibraryEditor &m_editor;
    const PIImageView &m_view;
    QLabel *m_cropSizeField;
    QPushButton *m_uncropButton;
    QHBoxLayout *m_buttons;
};
