#pragma once

#include "PhotoPicture.h"
#include "PictureZoom.h"
#include "ZoomDetail.h"

#include <QTimer>
#include <QWidget>

/// One photo, fitted and centred, with the wheel, the keys and a double click zoomed about the pointer and dragged
/// about. It shows at once what there is, and the sharp picture when that is made. A photo that cannot be shown is
/// replaced by a message, and one whose file is damaged has a note.
class PhotoView : public QWidget
{
    Q_OBJECT

public:
    using State = PhotoPicture::State;

    /// All outlive the view; `pool` holds decoded pixels and may be shared.
    PhotoView(ThumbnailMaker &thumbnails, ImageCache &imageCache, PixelPool &pool, QWidget *parent = nullptr);
    ~PhotoView() override;

    /// Null empties the view. Another photo is fitted; the same again takes up its changes.
    /// `ahead` will probably be shown next, the likeliest first: their pictures are made in advance.
    void setPhoto(const std::shared_ptr<PIPhoto> &photo, const PhotosAhead::PhotoList &ahead = {});
    [[nodiscard]] const std::shared_ptr<PIPhoto> &photo() const { return m_picture.photo(); }
    /// The photo's crop, effects or file changed.
    void reload() { m_picture.reload(); }

    [[nodiscard]] State state() const { return m_picture.state(); }
    /// Whether the photo would be shown sharp at once, because its picture was made in advance.
    [[nodiscard]] bool isPrepared(const PIPhoto &photo) const { return m_picture.isPrepared(photo); }
    /// What is in sight is as sharp as it gets.
    [[nodiscard]] bool isSharp() const;
    /// Where the picture stands, also beyond the view when it is zoomed; empty when there is none.
    [[nodiscard]] QRectF pictureRect() const;

    /// There is a picture whose size is known, and the view lets it be zoomed.
    [[nodiscard]] virtual bool canZoom() const { return !image().isNull(); }
    [[nodiscard]] bool isFitted() const { return zoom().isFitted(); }
    /// Pixels of the screen for one of the picture.
    [[nodiscard]] double scale() const { return zoom().scale(); }
    // About the middle of the view.
    void zoomBy(double factor);
    void zoomTo(double scale);
    void zoomIn();
    void zoomOut();
    void fit();

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

Q_SIGNALS:
    void stateChanged();

protected:
    using Extent = PhotoPicture::Extent;
    void setExtent(Extent extent);
    /// What is shown; null while the file is being opened, and when it cannot be.
    [[nodiscard]] const Image &image() const { return m_picture.image(); }
    /// What stands in the view fitted at this moment, blurred or sharp; null when there is nothing.
    [[nodiscard]] const QImage &picture() const { return m_picture.pixels(); }
    void setPreview(const QImage &preview) { m_picture.setPreview(preview); }
    /// Where the picture has room; the whole view.
    [[nodiscard]] virtual QRect pictureArea() const { return rect(); }
    /// The keys of zooming, and the arrows while there is something to pan. True when it was one of them.
    bool handleZoomKey(const QKeyEvent &event);
    [[nodiscard]] bool isDragging() const { return m_dragFrom.has_value(); }
    /// Shows that the picture can be dragged, or the ordinary pointer.
    virtual void showPointer();

    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;

private:
    [[nodiscard]] PictureRoom room() const;
    [[nodiscard]] PictureZoom &zoom() const;
    [[nodiscard]] QPointF onScreen(QPointF position) const { return position * devicePixelRatioF(); }
    void pictureChanged();
    void zoomChanged();
    void panBy(QPointF way);
    void paintNotes(QPainter &painter) const;

    mutable PictureZoom m_zoom; ///< of what is shown where zoom() was last called
    PhotoPicture m_picture;
    ZoomDetail m_detail;
    QTimer m_resizeTimer;
    double m_paintedRatio = 0;         ///< of the screen, when the view was last painted
    std::optional<QPointF> m_dragFrom; ///< in a drag: where the pointer was last
};
