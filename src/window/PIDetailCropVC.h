#pragma once

#include "PIDetailBaseVC.h"

class LibraryEditor;
class QLabel;
class QPushButton;

/// The crop section: how large a part of the picture is shown, and the way back to the whole.
class PIDetailCropVC final : public PIDetailBaseVC
{
    Q_OBJECT

public:
    /// Both outlive the section.
    PIDetailCropVC(LibraryEditor &editor, const PIDetailController &controller, QWidget *parent = nullptr);

protected:
    void selectionChanged() override;

private:
    void updateCrop();
    void uncrop();

    LibraryEditor &m_editor;
    QLabel *m_cropSizeField;
    QPushButton *m_uncropButton;
};
