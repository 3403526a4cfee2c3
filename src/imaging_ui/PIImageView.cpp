#include "PIImageView.h"

#include "CropOverlay.h"
#include "DetailEdits.h"
#include "Icons.h"
#include "LibraryEditor.h"
#include "LibraryNotifications.h"
#include "PIEditControlView.h"
#include "PhotoLibrary.h"

#include <QPainter>

#include <utility>

namespace {

/// Around the picture while it is cropped: room for the band that takes hold of the crop's edges.
constexpr int kMargin = 14;
constexpr int kControlsGap = 8;

enum CropControl { Accept = 0, Flip = 4, Cancel = 5, Remove = 7 };

QList<PIEditControlView::Control> cropControls()
{
    return {{Accept, themedIcon(QLatin1String("dialog-ok-apply")), PIImageView::tr("Accept the crop")},
            {Remove, themedIcon(QLatin1String("transform-crop-remove")), PIImageView::tr("Remove cropping")},
            {Flip, themedIcon(QLatin1String("object-rotate-right")), PIImageView::tr("Flip tall to wide or back")},
            {Cancel, themedIcon(QLatin1String("dialog-cancel")), PIImageView::tr("Cancel cropping")}};
}

CropSize chosenSize()
{
    return kCropSizes.at(static_cast<size_t>(g_cropSizeIndex));
}

}

PIImageView::PIImageView(LibraryEditor &editor, QWidget *parent)
    : PhotoView(editor.library().thumbnails(), editor.library().imageCache(), editor.library().thumbnails().pixelPool(),
                parent)
    , m_editor(editor)
    , m_controlView(new PIEditControlView(cropControls(), this))
    , m_normalizeObserver(editor.library().notifications().observe(
          kNormalizeNotification, [this](const NotificationObject &) { acceptCrop(Keep::Crop); }))
{
    setFocusPolicy(Qt::StrongFocus);
    m_controlView->hide();
    connect(m_controlView, &PIEditControlView::controlClicked, this, &PIImageView::controlClicked);
    connect(this, &PhotoView::stateChanged, this, &PIImageView::takeUpFile);
}

void PIImageView::photoWasSelected(const std::shared_ptr<PIPhoto> &photo, const PhotosAhead::PhotoList &ahead)
{
    const bool wasCropping = m_cropping;
    acceptCrop(Keep::Crop);
    cancelCrop(); // in case that it was refused
    setPhoto(photo, ahead);
    if (wasCropping)
        startCrop();
}

void PIImageView::startCrop()
{
    if (!canCrop())
        return;
    m_crop = {};
    const bool wasCropping = std::exchange(m_cropping, true);
    setMouseTracking(true);
    if (!wasCropping)
        showWhole();
    takeUpFile();
    placeControls();
    m_controlView->setControlEnabled(Flip, g_cropSizeIndex != 0);
    m_controlView->setVisible(m_cropping);
    cropWasChanged();
}

/// The file is open now, has other content, or cannot be read any more.
void PIImageView::takeUpFile()
{
    if (!m_cropping)
        return;
    if (!canCrop())
        return cancelCrop();
    if (image().isNull() || m_crop.size() == QSizeF(image().size()))
        return;
    m_crop.start(photo()->cropRect(), image().size(), chosenSize());
    cropWasChanged();
}

void PIImageView::acceptCrop(Keep keep)
{
    if (!m_cropping)
        return;
    const bool hasCrop = isReady() || keep == Keep::Nothing;
    const bool isInLibrary = hasCrop && m_editor.library().folderForPhoto(*photo());
    if (isInLibrary && !DetailEdits::setCrop(m_editor, photo(), keep == Keep::Crop ? m_crop.cropRect() : QRectF()))
        return;
    cancelCrop();
}

void PIImageView::cancelCrop()
{
    if (!m_cropping)
        return;
    m_cropping = false;
    showEdited();
    m_crop = {};
    m_controlView->hide();
    setMouseTracking(false);
    unsetCursor();
    cropWasChanged();
}

void PIImageView::rotateCrop()
{
    if (isReady() && m_crop.rotateCrop())
        cropWasChanged();
}

void PIImageView::controlClicked(int code)
{
    if (code == Accept)
        acceptCrop(Keep::Crop);
    else if (code == Remove)
        acceptCrop(Keep::Nothing);
    else if (code == Flip)
        rotateCrop();
    else if (code == Cancel)
        cancelCrop();
}

bool PIImageView::isReady() const
{
    return m_cropping && !m_crop.cropRect().isEmpty();
}

/// The longer side tells the scale better: each was rounded to pixels of the screen.
CropFrame PIImageView::frame() const
{
    const QRectF place = pictureRect();
    const QSizeF size = m_crop.size();
    const double scale = size.width() > size.height() ? place.width() / size.width() : place.height() / size.height();
    return {place.topLeft(), scale};
}

void PIImageView::cropWasChanged()
{
    update();
    Q_EMIT cropChanged();
}

namespace {

QRectF scaled(const QRectF &rect, QSizeF from, QSizeF to)
{
    const double x = to.width() / from.width();
    const double y = to.height() / from.height();
    return {rect.x() * x, rect.y() * y, rect.width() * x, rect.height() * y};
}

}

/// Until the whole picture is there, the part that was shown stays in its place.
void PIImageView::showWhole()
{
    const QImage before = picture();
    setExtent(Extent::WholeFile);
    if (state() != State::Preview || before.isNull() || image().isNull())
        return;
    const QRectF crop = photo()->cropRect();
    QImage preview(pictureRect().size().toSize().expandedTo({1, 1}), QImage::Format_RGB32);
    preview.fill(Qt::black);
    QPainter painter(&preview);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const QRectF whole(QPointF(), QSizeF(image().size()));
    painter.drawImage(scaled(crop.isEmpty() ? whole : crop, whole.size(), preview.size()), before,
                      QRectF(before.rect()));
    painter.end();
    setPreview(preview);
}

/// Until the cropped picture is there, its part of the whole picture stays.
void PIImageView::showEdited()
{
    const QImage before = picture();
    const QSizeF whole = image().size();
    setExtent(Extent::AsEdited);
    const QRectF crop = photo() ? photo()->cropRect() : QRectF();
    if (state() != State::Preview || before.isNull() || whole.isEmpty())
        return;
    setPreview(crop.isEmpty() ? before : before.copy(scaled(crop, whole, before.size()).toRect()));
}

QRect PIImageView::pictureArea() const
{
    if (!m_cropping)
        return PhotoView::pictureArea();
    const int below = std::max(kMargin, m_controlView->sizeHint().height() + 2 * kControlsGap);
    return rect().adjusted(kMargin, kMargin, -kMargin, -below);
}

void PIImageView::placeControls()
{
    m_controlView->adjustSize();
    m_controlView->move((width() - m_controlView->width()) / 2, height() - m_controlView->height() - kControlsGap);
}

void PIImageView::resizeEvent(QResizeEvent *event)
{
    PhotoView::resizeEvent(event);
    placeControls();
}

/// Keys go to the view: a thin line along its edge says so.
void PIImageView::paintFocus(QPainter &painter) const
{
    painter.setPen(palette().color(QPalette::Highlight));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5));
}

void PIImageView::paintEvent(QPaintEvent *event)
{
    PhotoView::paintEvent(event);
    QPainter painter(this);
    if (hasFocus() && !m_cropping && window()->isActiveWindow())
        paintFocus(painter);
    if (!isReady() || picture().isNull())
        return;
    paintCropOverlay(painter, pictureRect(), frame().toView(m_crop.cropRect()));
}
