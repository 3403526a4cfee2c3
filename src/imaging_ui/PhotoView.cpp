#include "PhotoView.h"

#include "PIPhoto.h"
#include "PhotoMessage.h"
#include "PixelPool.h"

#include <QLocale>
#include <QPainter>

#include <utility>

namespace {

constexpr int kResizeSettlesMilliseconds = 120;
constexpr int kDarkerPercent = 108;

}

PhotoView::PhotoView(ThumbnailMaker &thumbnails, ImageCache &imageCache, PixelPool &pool, QWidget *parent)
    : QWidget(parent)
    , m_picture(thumbnails, imageCache, pool, [this] { return room(); })
    , m_detail(pool, [this] { zoomChanged(); })
{
    setAccessibleName(tr("Photo"));
    m_resizeTimer.setSingleShot(true);
    m_resizeTimer.setInterval(kResizeSettlesMilliseconds);
    connect(&m_resizeTimer, &QTimer::timeout, this, [this] {
        m_picture.roomChanged();
        zoomChanged();
    });
    connect(&m_picture, &PhotoPicture::stateChanged, this, &PhotoView::pictureChanged);
}

PhotoView::~PhotoView() = default;

void PhotoView::setPhoto(const std::shared_ptr<PIPhoto> &photo, const PhotosAhead::PhotoList &ahead)
{
    if (photo != this->photo()) {
        m_zoom.fit();
        m_dragFrom.reset();
    }
    m_picture.setPhoto(photo, ahead);
}

void PhotoView::setExtent(Extent extent)
{
    m_zoom.fit();
    m_picture.setExtent(extent);
    zoomChanged();
}

PictureRoom PhotoView::room() const
{
    return isVisible() ? PictureRoom{pictureArea().size(), devicePixelRatioF()} : PictureRoom();
}

bool PhotoView::isSharp() const
{
    return state() == State::Sharp && (isFitted() || m_detail.isComplete());
}

QRectF PhotoView::pictureRect() const
{
    const QRect device = zoom().place();
    return {QPointF(device.topLeft()) / devicePixelRatioF(), QSizeF(device.size()) / devicePixelRatioF()};
}

QSize PhotoView::sizeHint() const
{
    return {480, 360};
}

QSize PhotoView::minimumSizeHint() const
{
    return {60, 60};
}

void PhotoView::pictureChanged()
{
    setAccessibleDescription(photoMessage(state(), photo().get()));
    zoomChanged();
    Q_EMIT stateChanged();
}

void PhotoView::paintEvent(QPaintEvent *)
{
    // Another screen may have finer pixels, and so may this one by a change of its settings: either is painted anew.
    if (std::exchange(m_paintedRatio, devicePixelRatioF()) != devicePixelRatioF())
        m_resizeTimer.start();
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Window).darker(kDarkerPercent));
    if (state() == State::Missing || state() == State::Unreadable)
        paintPhotoMessage(painter, *this, photoMessage(state(), photo().get()));
    if (picture().isNull())
        return;
    if (isFitted() || !m_detail.isComplete()) {
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(pictureRect(), picture(), QRectF(picture().rect()));
    }
    m_detail.paint(painter, zoom(), devicePixelRatioF());
    paintNotes(painter);
}

void PhotoView::paintNotes(QPainter &painter) const
{
    const QRect area = pictureArea().adjusted(8, 8, -8, -8);
    if (state() == State::Sharp && image().isDamaged())
        paintPictureNote(painter, area, Qt::AlignHCenter | Qt::AlignBottom | Qt::TextWordWrap,
                         tr("This file is damaged. What could be read of it is shown."));
    if (isFitted())
        return;
    const QString percent = tr("%1 %").arg(locale().toString(scale() * 100, 'f', 0));
    paintPictureNote(painter, area, Qt::AlignRight | Qt::AlignTop,
                     m_detail.isCoarse(zoom()) ? tr("%1, not in full detail").arg(percent) : percent);
}

void PhotoView::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    m_resizeTimer.start();
}

void PhotoView::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    m_picture.roomChanged();
}
