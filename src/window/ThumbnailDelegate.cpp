#include "ThumbnailDelegate.h"

#include "GridLayout.h"
#include "PIPhoto.h"
#include "ThumbnailGridModel.h"
#include "TilePictures.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <utility>

namespace {

constexpr int kTextGap = 3;
constexpr int kCornerRadius = 5;

/// Each line with the place in its text that is left out when it is too long.
constexpr struct
{
    TileLine line;
    int role;
    Qt::TextElideMode elide;
} kLines[] = {
    {TileLine::Caption, ThumbnailGridModel::CaptionRole, Qt::ElideRight},
    {TileLine::Date, ThumbnailGridModel::DateRole, Qt::ElideRight},
    {TileLine::FileName, ThumbnailGridModel::FileNameRole, Qt::ElideMiddle},
};

}

ThumbnailDelegate::ThumbnailDelegate(const TilePictures &pictures, const QImage &placeholder, QObject *parent)
    : QAbstractItemDelegate(parent)
    , m_pictures(pictures)
    , m_placeholder(placeholder)
{}

int ThumbnailDelegate::textHeight(const QFontMetrics &metrics) const
{
    const auto lines = std::count_if(std::begin(kLines), std::end(kLines),
                                     [this](const auto &line) { return m_shown.testFlag(line.line); });
    return lines == 0 ? 0 : int(lines) * metrics.height() + kTextGap;
}

namespace {

QPalette::ColorGroup colorGroup(const QStyleOptionViewItem &option)
{
    return option.state.testFlag(QStyle::State_Active) ? QPalette::Active : QPalette::Inactive;
}

/// A tint and a border in the highlight colour: plain to see, and not louder than the photos.
void paintGround(QPainter &painter, const QStyleOptionViewItem &option)
{
    const QRectF area = QRectF(option.rect).adjusted(2, 2, -2, -2);
    if (option.state.testFlag(QStyle::State_Selected)) {
        QColor color = option.palette.color(colorGroup(option), QPalette::Highlight);
        painter.setPen(QPen(color, 2));
        color.setAlphaF(0.35F);
        painter.setBrush(color);
        painter.drawRoundedRect(area, kCornerRadius, kCornerRadius);
    }
    if (option.state.testFlag(QStyle::State_HasFocus)) {
        QColor color = option.palette.color(colorGroup(option), QPalette::Text);
        color.setAlphaF(0.6F);
        painter.setPen(color);
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(area.adjusted(1.5, 1.5, -1.5, -1.5), kCornerRadius - 1, kCornerRadius - 1);
    }
}

}

void ThumbnailDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    painter->save();
    painter->setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    paintGround(*painter, option);

    const int text = textHeight(option.fontMetrics);
    const int side = option.rect.height() - text - 2 * GridLayout::kPadding;
    const QRect square(option.rect.left() + (option.rect.width() - side) / 2, option.rect.top() + GridLayout::kPadding,
                       side, side);
    paintPicture(*painter, square, option, index);
    if (text > 0)
        paintText(*painter, option.rect.adjusted(GridLayout::kPadding, 0, -GridLayout::kPadding, 0),
                  square.bottom() + 1, option, index);
    painter->restore();
}

QSize ThumbnailDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &) const
{
    return option.rect.size();
}

namespace {

/// A ribbon that hangs from the picture's upper edge.
void paintMark(QPainter &painter, const QRectF &picture, qreal size)
{
    const qreal left = picture.right() - size * 1.1;
    const qreal top = picture.top() - 1;
    const qreal width = size * 0.7;
    QPainterPath ribbon(QPointF(left, top));
    ribbon.lineTo(left + width, top);
    ribbon.lineTo(left + width, top + size * 1.2);
    ribbon.lineTo(left + width / 2, top + size * 0.85);
    ribbon.lineTo(left, top + size * 1.2);
    ribbon.closeSubpath();
    painter.setPen(QPen(Qt::white, 1.2));
    painter.setBrush(QColor(0xd9, 0x5f, 0x0e));
    painter.drawPath(ribbon);
}

/// A drive with a bar across it.
void paintAway(QPainter &painter, const QRectF &picture, qreal size)
{
    const QColor line(0x1c, 0x2b, 0x3a);
    const QRectF area(picture.left() + size * 0.3, picture.bottom() - size * 1.3, size * 1.4, size);
    painter.setPen(QPen(line, 1.4));
    painter.setBrush(QColor(0xdc, 0xe6, 0xf0));
    painter.drawRoundedRect(area, size * 0.15, size * 0.15);
    const qreal slot = area.bottom() - area.height() * 0.3;
    painter.drawLine(QPointF(area.left(), slot), QPointF(area.right(), slot));
    for (const auto &[color, width] : {std::pair(QColor(Qt::white), size * 0.32), std::pair(line, size * 0.16)}) {
        painter.setPen(QPen(color, width, Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(area.bottomLeft() + QPointF(-size * 0.1, size * 0.1),
                         area.topRight() + QPointF(size * 0.1, -size * 0.1));
    }
}

/// A warning triangle.
void paintLost(QPainter &painter, const QRectF &picture, qreal size)
{
    const QRectF area(picture.left() + size * 0.3, picture.bottom() - size * 1.4, size * 1.2, size * 1.1);
    QPainterPath triangle(QPointF(area.center().x(), area.top()));
    triangle.lineTo(area.bottomRight());
    triangle.lineTo(area.bottomLeft());
    triangle.closeSubpath();
    painter.setPen(QPen(QColor(0x33, 0x2b, 0x00), 1.4, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(QColor(0xf6, 0xc9, 0x2c));
    painter.drawPath(triangle);
    painter.setPen(QPen(QColor(0x33, 0x2b, 0x00), size * 0.12, Qt::SolidLine, Qt::RoundCap));
    const qreal x = area.center().x();
    painter.drawLine(QPointF(x, area.top() + area.height() * 0.38), QPointF(x, area.top() + area.height() * 0.64));
    painter.drawPoint(QPointF(x, area.top() + area.height() * 0.83));
}

QRectF centered(const QSizeF &size, const QRectF &square)
{
    return {square.center() - QPointF(size.width() / 2, size.height() / 2), size};
}

}

void ThumbnailDelegate::paintPicture(QPainter &painter, const QRect &square, const QStyleOptionViewItem &option,
                                     const QModelIndex &index) const
{
    const auto photo = index.data(ThumbnailGridModel::PhotoRole).value<std::shared_ptr<PIPhoto>>();
    if (!photo || square.isEmpty())
        return;
    const bool lost = photo->isFileLost();
    painter.setOpacity(lost ? 0.5 : 1.0);
    QRectF area = square;
    if (const auto *picture = m_pictures.find(photo->guid())) {
        area = pictureArea(*picture, square, painter.device()->devicePixelRatioF());
        painter.drawPixmap(area, picture->pixmap, picture->pixmap.rect());
        paintEdge(painter, area, option);
    } else {
        paintPlaceholder(painter, square, option);
    }
    painter.setOpacity(1.0);
    const qreal badge = std::clamp(square.width() / 8.0, 9.0, 24.0);
    if (photo->isMarked())
        paintMark(painter, area, badge);
    if (photo->isVolumeAway())
        paintAway(painter, area, badge);
    else if (lost)
        paintLost(painter, area, badge);
}

/// On whole pixels of the screen, so that a picture made for this square is not resampled.
QRectF ThumbnailDelegate::pictureArea(const TilePictures::Picture &picture, const QRect &square, qreal ratio) const
{
    const int side = qRound(square.width() * ratio);
    const QSize size = m_pictures.shownSize(picture.source, picture.kind, side);
    const QPoint corner((side - size.width()) / 2, (side - size.height()) / 2);
    return {QPointF(square.topLeft()) + QPointF(corner) / ratio, QSizeF(size) / ratio};
}

/// Keeps a white picture apart from a white ground.
void ThumbnailDelegate::paintEdge(QPainter &painter, const QRectF &area, const QStyleOptionViewItem &option) const
{
    QColor color = option.palette.color(QPalette::Text);
    color.setAlphaF(0.18F);
    painter.setPen(color);
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(area.adjusted(-0.5, -0.5, 0.5, 0.5));
}

void ThumbnailDelegate::paintPlaceholder(QPainter &painter, const QRect &square,
                                         const QStyleOptionViewItem &option) const
{
    QColor ground = option.palette.color(QPalette::Text);
    ground.setAlphaF(0.06F);
    painter.setPen(Qt::NoPen);
    painter.setBrush(ground);
    painter.drawRoundedRect(square, kCornerRadius, kCornerRadius);
    if (m_placeholder.isNull())
        return;
    const QSizeF room = QSizeF(square.size()) * 0.6;
    const QSizeF size = QSizeF(m_placeholder.size()).scaled(room, Qt::KeepAspectRatio);
    painter.drawImage(centered(size, square), m_placeholder);
}

void ThumbnailDelegate::paintText(QPainter &painter, const QRect &column, int top, const QStyleOptionViewItem &option,
                                  const QModelIndex &index) const
{
    const QColor strong = option.palette.color(colorGroup(option), QPalette::Text);
    QColor quiet = strong;
    quiet.setAlphaF(0.7F);

    painter.setFont(option.font);
    QRect line(column.left(), top + kTextGap, column.width(), option.fontMetrics.height());
    for (const auto &[kind, role, elide] : kLines) {
        if (!m_shown.testFlag(kind))
            continue;
        const QString text =
            option.fontMetrics.elidedText(index.data(role).toString().simplified(), elide, line.width());
        painter.setPen(kind == TileLine::Caption ? strong : quiet);
        painter.drawText(line, Qt::AlignHCenter | Qt::AlignVCenter | Qt::TextSingleLine, text);
        line.translate(0, line.height());
    }
}
