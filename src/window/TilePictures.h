#pragma once

#include <QCache>
#include <QPixmap>
#include <QSize>
#include <QString>

/// Pictures made ready for painting, at the pixel size of the tiles, by photo guid under a byte budget. Main thread.
class TilePictures
{
public:
    enum class Kind { Embedded, Thumbnail };
    struct Picture
    {
        QPixmap pixmap;
        QSize source; ///< pixels of the picture that it was made from
        int side = 0; ///< the square for which it was made
        Kind kind = Kind::Thumbnail;
        bool stale = false;
    };

    explicit TilePictures(qint64 budgetBytes);

    /// Makes the budget large enough for so many pictures of the present size, if it is not.
    void makeRoomFor(int pictures);

    /// The square, in the screen's pixels, for which pictures are made from now on. Those made for another one stay,
    /// to be shown scaled, until they are replaced.
    void setSide(int pixels, qreal devicePixelRatio);
    [[nodiscard]] int side() const { return m_side; }

    /// Null when there is none.
    [[nodiscard]] const Picture *find(const QString &guid) const;
    /// Whether the real thumbnail is there, made for the present size.
    [[nodiscard]] bool isReady(const QString &guid) const;
    void insert(const QString &guid, const QImage &picture, Kind kind);
    /// The picture no longer shows the photo as it is now, but stands in until there is a new one.
    void markStale(const QString &guid);
    void remove(const QString &guid) { m_pictures.remove(guid); }

    /// The size, in the screen's pixels, at which a picture is shown in a square: one that is smaller than a
    /// thumbnail's box shows a small photo and is not enlarged beyond it; everything else fills the square in one
    /// direction.
    [[nodiscard]] QSize shownSize(QSize source, Kind kind, int side) const;

private:
    qint64 m_budget;
    int m_side = 0;
    qreal m_devicePixelRatio = 1;
    QCache<QString, Picture> m_pictures; // cost in KiB
};
