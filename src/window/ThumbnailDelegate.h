#pragma once

#include "TilePictures.h"
#include "TileText.h"

#include <QAbstractItemDelegate>

/// Paints one tile: the picture centred in its square, a flag on marked photos, a sign on photos whose file is missing
/// and another on those whose volume is, and the lines of text that are shown.
class ThumbnailDelegate final : public QAbstractItemDelegate
{
    Q_OBJECT

public:
    /// `pictures` outlive the delegate; `placeholder` stands in for those that are not there.
    ThumbnailDelegate(const TilePictures &pictures, const QImage &placeholder, QObject *parent = nullptr);

    [[nodiscard]] TileText shown() const { return m_shown; }
    void setShown(TileText lines) { m_shown = lines; }
    /// What the shown lines take under a picture.
    [[nodiscard]] int textHeight(const QFontMetrics &metrics) const;

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    /// The grid decides; this answers the size it chose.
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;

private:
    void paintPicture(QPainter &painter, const QRect &square, const QStyleOptionViewItem &option,
                      const QModelIndex &index) const;
    [[nodiscard]] QRectF pictureArea(const TilePictures::Picture &picture, const QRect &square, qreal ratio) const;
    void paintEdge(QPainter &painter, const QRectF &area, const QStyleOptionViewItem &option) const;
    void paintPlaceholder(QPainter &painter, const QRect &square, const QStyleOptionViewItem &option) const;
    void paintText(QPainter &painter, const QRect &column, int top, const QStyleOptionViewItem &option,
                   const QModelIndex &index) const;

    const TilePictures &m_pictures;
    const QImage &m_placeholder;
    TileText m_shown;
};
