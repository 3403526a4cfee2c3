#pragma once

#include "CropEditing.h"
#include "NotificationCenter.h"
#include "PhotoStep.h"
#include "PhotoView.h"

class LibraryEditor;
class PIEditControlView;
class QKeyEvent;

/// The current photo, large, and the place where it is cropped. While it is being cropped the whole picture is shown;
/// the photo changes only when the crop is accepted.
class PIImageView final : public PhotoView
{
    Q_OBJECT

public:
    /// `editor` outlives the view.
    explicit PIImageView(LibraryEditor &editor, QWidget *parent = nullptr);

    /// Shows another photo. A crop in progress is accepted for the photo before, and cropping begins with this one.
    void photoWasSelected(const std::shared_ptr<PIPhoto> &photo, const PhotosAhead::PhotoList &ahead = {});

    /// There is a photo, and nothing is known against its file.
    [[nodiscard]] bool canCrop() const { return state() == State::Preview || state() == State::Sharp; }
    [[nodiscard]] bool isCropping() const { return m_cropping; }
    /// A picture that is being cropped stays fitted.
    [[nodiscard]] bool canZoom() const override { return !m_cropping && PhotoView::canZoom(); }
    /// The rectangle being edited, in pixels of the whole picture, while cropping; empty until the file is open.
    [[nodiscard]] const QRectF &cropRect() const { return m_crop.cropRect(); }

    /// Begins anew with the photo's crop and the size that is chosen for crops. Nothing without a picture.
    void startCrop();
    enum class Keep { Crop, Nothing };
    /// Stores the rectangle, or takes the photo's crop away, and ends cropping unless that is refused. Nothing when no
    /// crop is in progress.
    void acceptCrop(Keep keep);
    void cancelCrop();
    /// Turns the chosen size from wide to tall or back.
    void rotateCrop();

Q_SIGNALS:
    /// Cropping began or ended, or the rectangle is another one.
    void cropChanged();
    /// A key asks for the photo before or after this one.
    void stepWanted(StepDirection direction);

protected:
    [[nodiscard]] QRect pictureArea() const override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    [[nodiscard]] bool isReady() const;
    [[nodiscard]] bool handleStepKey(const QKeyEvent &event);
    [[nodiscard]] CropFrame frame() const;
    void takeUpFile();
    void showWhole();
    void showEdited();
    void controlClicked(int code);
    void placeControls();
    void paintFocus(QPainter &painter) const;
    void showCursor(QPointF pointer);
    void cropWasChanged();

    LibraryEditor &m_editor;
    PIEditControlView *m_controlView;
    CropEditing m_crop; ///< begun when the picture's size is known
    bool m_cropping = false;
    NotificationCenter::Observer m_normalizeObserver;
};

/// The keys of cropping: true when the view has the focus, is cropping, and the key was one of them.
bool HandleCroppingKey(PIImageView &view, const QKeyEvent &event);
