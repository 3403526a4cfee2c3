#pragma once

#include "NotificationCenter.h"
#include "PhotoView.h"
#include "PreviewList.h"

class LibraryEditor;
class PIEditControlView;
class QLabel;

/// Shows a list of photos one at a time on black, and steps through them by keys or by a strip of controls. The strip
/// and the photo's title come up when the pointer moves, and go again, with the pointer, when it rests.
class PIPreview final : public PhotoView
{
    Q_OBJECT

public:
    /// Who asks for another photo: keys put the strip out of the way.
    enum class Sender { Keys, Strip };

    /// `editor` outlives the view.
    explicit PIPreview(LibraryEditor &editor, QWidget *parent = nullptr);

    /// Shows the first of them.
    void setPhotos(const PIGroup::PhotoList &photos, const QString &forFolder);
    void showPhoto(qsizetype index);
    [[nodiscard]] const PreviewList &photos() const { return m_photos; }

    // Each beeps when there are no photos.
    void moveLeft(Sender sender = Sender::Keys);
    void moveRight(Sender sender = Sender::Keys);
    void moveToBeginningOfDocument(Sender sender = Sender::Keys);
    void moveToEndOfDocument(Sender sender = Sender::Keys);
    void moveUp() { moveToBeginningOfDocument(); }
    void moveDown() { moveToEndOfDocument(); }
    void scrollToBeginningOfDocument() { moveToBeginningOfDocument(); }
    void scrollToEndOfDocument() { moveToEndOfDocument(); }

    /// A space marks the photo or takes its mark away; there is no undo for it.
    void insertText(const QString &text);
    void controlClicked(int code);

Q_SIGNALS:
    void titleChanged(const QString &title);
    void closeWanted();

protected:
    void showPointer() override;
    void keyPressEvent(QKeyEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void stepped(bool isThere, Sender sender);
    void showCurrent();
    void setWindowTitle();
    [[nodiscard]] QString title() const;
    void toggleMark();
    void toggleMarkWithUndo();
    void photoChanged(const NotificationObject &object);
    void showControls();
    void hideControls();
    void pointerRests();
    void placeControls();

    LibraryEditor &m_editor;
    PreviewList m_photos;
    PIEditControlView *m_controlView;
    QLabel *m_title;
    QTimer m_restTimer;
    bool m_pointerRests = true;
    QPointF m_pointer; ///< where it was last seen
    NotificationCenter::Observer m_photoObserver;
    NotificationCenter::Observer m_thumbnailObserver;
    NotificationCenter::Observer m_redrawObserver;
};
