#include "PIPrintView.h"

#include <QPainter>
#include <QTransform>

#include <algorithm>
#include <cmath>

namespace {

constexpr int kFontSize = 8;      ///< points
constexpr double kMarkLength = 6; ///< points
constexpr double kMarkGap = 2;
/// Per inch: what a printer resolves; more costs memory and shows nothing.
constexpr double kMostPixels = 600;
constexpr QRgb kQuietGrey = qRgb(120, 120, 120);

double fittingScale(QSizeF picture, QSizeF room)
{
    return std::min(room.width() / picture.width(), room.height() / picture.height());
}

/// Pixels of what is painted on per unit of the painter, as far as they are worth rendering. A unit is `scale` points.
double pixelsPerUnit(const QPainter &painter, double scale)
{
    const QTransform device = painter.deviceTransform();
    return std::min(std::hypot(device.m11(), device.m12()), kMostPixels / 72 * scale);
}

void drawText(QPainter &painter, const QString &text, const QRectF &area)
{
    QFont font = painter.font();
    font.setPixelSize(kFontSize); // the painter's unit is a point
    painter.setFont(font);
    const QString shown = QFontMetricsF(font).elidedText(text, Qt::ElideMiddle, area.width());
    painter.setPen(Qt::black);
    painter.drawText(area, Qt::AlignHCenter | Qt::AlignTop, shown);
}

/// Short lines beside the corners, where the paper is to be cut.
void drawMarks(QPainter &painter, const QRectF &picture)
{
    constexpr double kGap = kMarkGap;
    constexpr double kLength = kMarkLength;
    painter.setPen(QPen(Qt::black, 0.3));
    for (const double x : {picture.left(), picture.right()}) {
        painter.drawLine(QPointF(x, picture.top() - kGap), QPointF(x, picture.top() - kGap - kLength));
        painter.drawLine(QPointF(x, picture.bottom() + kGap), QPointF(x, picture.bottom() + kGap + kLength));
    }
    for (const double y : {picture.top(), picture.bottom()}) {
        painter.drawLine(QPointF(picture.left() - kGap, y), QPointF(picture.left() - kGap - kLength, y));
        painter.drawLine(QPointF(picture.right() + kGap, y), QPointF(picture.right() + kGap + kLength, y));
    }
}

/// Where the picture stands, upright or turned, and how large.
struct Placed
{
    QRectF area;
    bool isTurned = false;
};

Placed placed(QSizeF picture, const QRectF &room)
{
    const double upright = fittingScale(picture, room.size());
    const double turned = fittingScale(picture.transposed(), room.size());
    Placed result;
    result.isTurned = turned > upright;
    const QSizeF size = result.isTurned ? picture.transposed() * turned : picture * upright;
    result.area = QRectF(room.center() - QPointF(size.width() / 2, size.height() / 2), size);
    return result;
}

void drawImage(QPainter &painter, const QImage &image, const Placed &place)
{
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    if (!place.isTurned) {
        painter.drawImage(place.area, image);
        return;
    }
    const QSizeF upright = place.area.size().transposed();
    painter.save();
    painter.translate(place.area.center());
    painter.rotate(90);
    painter.drawImage(QRectF(QPointF(-upright.width() / 2, -upright.height() / 2), upright), image);
    painter.restore();
}

}

int PIPrintView::photosOn(int page) const
{
    const qsizetype first = qsizetype(page - 1) * m_layout.photosPerPage;
    return static_cast<int>(std::clamp<qsizetype>(m_photos.size() - first, 0, m_layout.photosPerPage));
}

bool PIPrintView::drawPage(QPainter &painter, int page, const std::atomic<bool> &cancelled,
                           const std::function<void()> &drawn) const
{
    bool isComplete = true;
    const int count = photosOn(page);
    painter.save();
    painter.scale(m_layout.scale, m_layout.scale);
    for (int place = 0; place < count && !cancelled; ++place) {
        const PrintedPhoto &photo = m_photos.at(qsizetype(page - 1) * m_layout.photosPerPage + place);
        isComplete = drawPhoto(painter, photo, place, cancelled) && isComplete;
        if (drawn)
            drawn();
    }
    painter.restore();
    return isComplete;
}

bool PIPrintView::drawPhoto(QPainter &painter, const PrintedPhoto &photo, int place,
                            const std::atomic<bool> &cancelled) const
{
    constexpr double kMarks = kMarkGap + kMarkLength;
    const bool needsRoom = m_cropMarks && m_layout.print.isEmpty();
    const QRectF room =
        needsRoom ? m_layout.photoArea(place).adjusted(kMarks, kMarks, -kMarks, -kMarks) : m_layout.photoArea(place);
    const Image image = photo.recipe.open().shown;
    std::optional<QImage> pixels;
    Placed position;
    if (!image.isNull()) {
        position = placed(image.size(), room);
        const QSizeF shown = position.isTurned ? position.area.size().transposed() : position.area.size();
        const QSize wanted = (shown * pixelsPerUnit(painter, m_layout.scale)).toSize().expandedTo(QSize(1, 1));
        pixels = image.pixels(wanted.boundedTo(image.size()), &cancelled);
    }
    if (cancelled)
        return true;
    if (!m_layout.textArea(place).isEmpty())
        drawText(painter, photo.text, m_layout.textArea(place));
    if (!pixels) {
        painter.setPen(QPen(QColor(kQuietGrey), 0.5));
        painter.drawRect(room);
        drawText(painter, photo.text, QRectF(room.left(), room.center().y(), room.width(), room.height() / 2));
        return false;
    }
    drawImage(painter, m_isGrey ? pixels->convertToFormat(QImage::Format_Grayscale8) : *pixels, position);
    if (m_cropMarks)
        drawMarks(painter, position.area);
    return true;
}
