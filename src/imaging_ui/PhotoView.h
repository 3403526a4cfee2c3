#pragma once

#include "Image.h"
#include "ImageRenderer.h"
#include "PixelPool.h"

#include <QPixmap>
#include <QTimer>
#include <QWidget>

#include <memory>

class ImageCache;
class PIPhoto;
class ThumbnailMaker;
struct OpenedPicture;

/// One photo, fitted and centred: at once from its thumbnail or the small picture that its file carries, then sharp at
/// the screen's resolution. Files are opened and pictures rendered in the background. A photo that cannot be shown is
/// replaced by a message.
class PhotoView : public QWidget
{
    Q_OBJECT

public:
    enum class State {
        Empty,   ///< no photo
        Preview, ///< the thumbnail, or nothing yet; the sharp picture is being made
        Sharp,
        Missing,   ///< the file is lost
        Unreadable ///< the file is there but shows no picture
    };

    /// All outlive the view; `pool` holds decoded pixels and may be shared.
    PhotoView(ThumbnailMaker &thumbnails, ImageCache &imageCache, PixelPool &pool, QWidget *parent = nullptr);
    ~PhotoView() override;

    /// Null empties the view. The same photo again takes up its changes.
    void setPhoto(const std::shared_ptr<PIPhoto> &photo);
    [[nodiscard]] const std::shared_ptr<PIPhoto> &photo() const { return m_photo; }
    /// The photo's crop, effects or file changed.
    void reload();
    [[nodiscard]] State state() const { return m_state; }
    /// Where the picture is shown; empty when there is none.
    [[nodiscard]] QRectF pictureRect() const;

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

Q_SIGNALS:
    void stateChanged();

protected:
    enum class Extent {
        AsEdited, ///< with the photo's crop and effects
        WholeFile ///< the file as it is
    };
    void setExtent(Extent extent);
    /// What is shown; null while the file is being opened, and when it cannot be.
    [[nodiscard]] const Image &image() const { return m_image; }
    /// What stands in the view at this moment, blurred or sharp; null when there is nothing.
    [[nodiscard]] const QPixmap &picture() const { return m_picture; }
    /// Stands in for the sharp picture while that is being made.
    void setPreview(const QImage &preview);
    /// Where the picture has room; the whole view.
    [[nodiscard]] virtual QRect pictureArea() const { return rect(); }

    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    [[nodiscard]] Image knownImage() const;
    void showPreview();
    void openFile();
    void fileOpened(const OpenedPicture &picture, const QImage &embedded);
    void cancelRendering();
    void renderSharp();
    void sharpArrived(const std::optional<QImage> &pixels);
    void showFailure();
    void setState(State state);
    void setPicture(const QImage &pixels);
    void paintMessage(QPainter &painter) const;
    [[nodiscard]] bool hasPictureOfSameShape() const;
    [[nodiscard]] QSize pictureSize() const;
    [[nodiscard]] QRect deviceRect() const;
    [[nodiscard]] QString message() const;

    ThumbnailMaker &m_thumbnails;
    ImageCache &m_imageCache;
    ImageRenderer m_renderer;
    std::shared_ptr<PIPhoto> m_photo;
    Image m_image;     // null while the file is being opened
    Image m_rendering; // what is being rendered; null when nothing is
    QSize m_renderingSize;
    QPixmap m_picture; // thumbnail or sharp picture
    State m_state = State::Empty;
    Extent m_extent = Extent::AsEdited;
    QTimer m_resizeTimer;
};
