#pragma once

#include "FittedRect.h"
#include "ImageRenderer.h"
#include "PhotosAhead.h"

#include <QImage>
#include <QObject>

#include <functional>
#include <memory>

class ThumbnailMaker;

/// The picture of one photo as it comes: at once from its thumbnail or the small picture that its file carries, then
/// sharp, as it is shown fitted into some room. Files are opened and pictures rendered in the background, those of the
/// photos that come next as well.
class PhotoPicture final : public QObject
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
    enum class Extent {
        AsEdited, ///< with the photo's crop and effects
        WholeFile ///< the file as it is
    };
    /// What there is at the moment; none while the picture is out of sight.
    using Room = std::function<PictureRoom()>;

    /// All outlive it; `pool` holds decoded pixels and may be shared.
    PhotoPicture(ThumbnailMaker &thumbnails, ImageCache &imageCache, PixelPool &pool, Room room);

    /// Null empties it. The same photo again takes up its changes.
    /// `ahead` will probably be shown next, the likeliest first: prepared when there is nothing else to do.
    void setPhoto(const std::shared_ptr<PIPhoto> &photo, const PhotosAhead::PhotoList &ahead = {});
    [[nodiscard]] const std::shared_ptr<PIPhoto> &photo() const { return m_photo; }
    /// The photo's crop, effects or file changed.
    void reload();
    /// The room is there, or is another.
    void roomChanged();
    void setExtent(Extent extent);
    [[nodiscard]] Extent extent() const { return m_extent; }
    /// Stands in for the sharp picture while that is being made.
    void setPreview(const QImage &preview);
    /// The photo's picture is being made in advance at this moment.
    [[nodiscard]] bool isPreparing(const PIPhoto &photo) const { return m_ahead.isUnderWay(photo); }

    /// That is done: the photo would be shown sharp at once.
    [[nodiscard]] bool isPrepared(const PIPhoto &photo) const { return m_ahead.isPrepared(photo, m_room()); }

    [[nodiscard]] State state() const { return m_state; }
    /// Null while the file is being opened, and when it cannot be.
    [[nodiscard]] const Image &image() const { return m_image; }
    /// Blurred or sharp; null when there is nothing to be seen.
    [[nodiscard]] const QImage &pixels() const { return m_pixels; }
    /// Of the picture in its own pixels. While the file is not open: what is known of its shape.
    [[nodiscard]] QSize size() const;

Q_SIGNALS:
    void stateChanged();

private:
    [[nodiscard]] Image knownImage() const;
    void showPreview();
    void openFile();
    void setImage(const Image &image);
    void fileOpened(const OpenedPicture &picture, const QImage &embedded, State failure);
    void cancelRendering();
    void renderSharp();
    void renderingFailed();
    void sharpArrived(const std::optional<QImage> &pixels);
    [[nodiscard]] static State failureOf(const QString &path);
    void showFailure(State failure);
    void setState(State state);
    void prepareAhead();
    void wasPrepared(const PIPhoto &photo);
    [[nodiscard]] bool isBeingPrepared() const;
    [[nodiscard]] bool hasPixelsOfSameShape() const;

    ThumbnailMaker &m_thumbnails;
    ImageCache &m_imageCache;
    Room m_room;
    ImageRenderer m_renderer;
    PhotosAhead::PhotoList m_next;
    std::shared_ptr<PIPhoto> m_photo;
    Image m_image;            // null while the file is being opened
    HeldPicture m_held;       // the last that there was of the photo
    PixelRequest m_rendering; // what is being rendered; of a null image when nothing is
    QImage m_pixels;          // thumbnail or sharp picture
    State m_state = State::Empty;
    Extent m_extent = Extent::AsEdited;
    bool m_isOpenedAgain = false; // because it gave no pixels
    PhotosAhead m_ahead;
};
