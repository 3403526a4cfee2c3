#include "PhotoView.h"

#include "FittedRect.h"
#include "PIPhoto.h"
#include "PictureRecipe.h"
#include "ThumbnailMaker.h"

#include <QEvent>
#include <QFileInfo>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr int kResizeSettlesMilliseconds = 120;
constexpr int kDarkerPercent = 108;
/// A thumbnail at its largest is one of a larger picture, of unknown size.
constexpr int kMostEnlarged = 100;

}

PhotoView::PhotoView(ThumbnailMaker &thumbnails, ImageCache &imageCache, PixelPool &pool, QWidget *parent)
    : QWidget(parent)
    , m_thumbnails(thumbnails)
    , m_imageCache(imageCache)
    , m_renderer(pool)
{
    setAccessibleName(tr("Photo"));
    m_resizeTimer.setSingleShot(true);
    m_resizeTimer.setInterval(kResizeSettlesMilliseconds);
    connect(&m_resizeTimer, &QTimer::timeout, this, &PhotoView::renderSharp);
}

PhotoView::~PhotoView() = default;

void PhotoView::setPhoto(const std::shared_ptr<PIPhoto> &photo)
{
    if (photo != m_photo) {
        cancelRendering();
        m_image = {};
        m_picture = {};
        m_state = State::Empty;
    }
    m_photo = photo;
    reload();
}

void PhotoView::setExtent(Extent extent)
{
    if (std::exchange(m_extent, extent) == extent)
        return;
    m_picture = {}; // is of another part, though its shape may be the same
    reload();
}

Image PhotoView::knownImage() const
{
    return m_extent == Extent::WholeFile ? m_photo->knownFileImage(m_imageCache) : m_photo->knownImage(m_imageCache);
}

void PhotoView::reload()
{
    const bool present = m_photo && !m_photo->isFileLost();
    const Image before = m_image;
    m_image = present ? knownImage() : Image();
    if (!present)
        return showFailure();
    if (m_image.isNull())
        return openFile();
    if (!m_image.isSameAs(before) || m_picture.isNull())
        showPreview();
    renderSharp();
}

QRectF PhotoView::pictureRect() const
{
    const QRect device = deviceRect();
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

void PhotoView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Window).darker(kDarkerPercent));
    if (m_state == State::Missing || m_state == State::Unreadable)
        paintMessage(painter);
    if (m_picture.isNull())
        return;
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawPixmap(pictureRect(), m_picture, m_picture.rect());
}

void PhotoView::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    m_resizeTimer.start();
}

void PhotoView::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    if (m_photo && m_image.isNull())
        reload();
    else
        renderSharp();
}

/// What there is at once, laid where the sharp picture will be. A thumbnail is of the photo as it is edited.
void PhotoView::showPreview()
{
    const bool isEdited = !m_photo->cropRect().isEmpty() || !m_photo->filterDicts().isEmpty();
    const bool hasThumbnail = m_extent == Extent::AsEdited || !isEdited;
    const QImage thumbnail = hasThumbnail ? m_thumbnails.availableThumbnail(*m_photo) : QImage();
    if (!thumbnail.isNull() || !hasPictureOfSameShape())
        setPicture(thumbnail);
    setState(State::Preview);
}

/// What is shown may stay until what comes after an edit is there, unless it would be drawn out of shape.
bool PhotoView::hasPictureOfSameShape() const
{
    const QSizeF before = m_picture.size();
    const QSizeF now = m_image.isNull() ? before : QSizeF(m_image.size());
    constexpr double kTolerance = 0.01;
    return !before.isEmpty() &&
           std::abs(before.width() * now.height() / (before.height() * now.width()) - 1) < kTolerance;
}

void PhotoView::setPreview(const QImage &preview)
{
    if (m_state != State::Preview)
        return;
    setPicture(preview);
    update();
}

/// Until the file is open, the picture takes the shape that the photo and its thumbnail tell of.
void PhotoView::openFile()
{
    if (m_state != State::Missing && m_state != State::Unreadable)
        showPreview(); // else the message stands until something better comes
    if (!isVisible())
        return cancelRendering(); // done when the view is shown
    if (!m_photo->fileRef()->verify())
        return showFailure();
    cancelRendering();
    m_renderer.run([this, recipe = m_photo->recipe(m_imageCache), needsPreview = m_picture.isNull(),
                    isWhole = m_extent == Extent::WholeFile](const std::atomic<bool> &) -> std::function<void()> {
        const OpenedPicture picture = recipe.open();
        const Image &image = isWhole ? picture.file : picture.shown;
        const QImage embedded = needsPreview ? image.embeddedThumbnail() : QImage();
        return [this, picture, embedded] { fileOpened(picture, embedded); };
    });
}

void PhotoView::fileOpened(const OpenedPicture &picture, const QImage &embedded)
{
    m_photo->takePicture(picture, m_imageCache);
    m_image = m_extent == Extent::WholeFile ? picture.file : picture.shown;
    if (m_image.isNull())
        return showFailure();
    if (m_picture.isNull())
        setPicture(embedded);
    setState(State::Preview);
    renderSharp();
}

void PhotoView::cancelRendering()
{
    m_renderer.cancel();
    m_rendering = {};
}

void PhotoView::renderSharp()
{
    m_resizeTimer.stop();
    const QSize size = deviceRect().size().boundedTo(m_image.size());
    if (m_image.isNull() || size.isEmpty() || !isVisible())
        return;
    if (m_state == State::Sharp && m_picture.size() == size)
        return;
    const QString key = m_photo->guid() + QLatin1String(m_extent == Extent::WholeFile ? " whole" : "");
    const QImage made = m_renderer.find(key, m_image, size);
    if (!made.isNull()) {
        cancelRendering();
        sharpArrived(made);
        return;
    }
    if (m_rendering.isSameAs(m_image) && m_renderingSize == size)
        return;
    m_rendering = m_image;
    m_renderingSize = size;
    m_renderer.render(key, m_image, size, [this](const auto &pixels) { sharpArrived(pixels); });
}

void PhotoView::sharpArrived(const std::optional<QImage> &pixels)
{
    m_rendering = {};
    if (!pixels) {
        m_image = {};
        showFailure();
        return;
    }
    setPicture(*pixels);
    setState(State::Sharp);
}

void PhotoView::showFailure()
{
    cancelRendering();
    setPicture({});
    if (!m_photo)
        setState(State::Empty);
    else if (m_photo->isFileLost() || !QFileInfo::exists(m_photo->fileRef()->path()))
        setState(State::Missing);
    else
        setState(State::Unreadable);
}

void PhotoView::setState(State state)
{
    m_state = state;
    setAccessibleDescription(message());
    update();
    Q_EMIT stateChanged();
}

void PhotoView::setPicture(const QImage &pixels)
{
    m_picture = QPixmap::fromImage(pixels);
}

namespace {

/// A picture frame with a crack through it, in the colour of quiet text.
void paintBrokenFrame(QPainter &painter, const QRectF &area)
{
    QPainterPath frame;
    frame.addRoundedRect(area, 4, 4);
    painter.drawPath(frame);
    const auto at = [&](double x, double y) {
        return QPointF(area.left() + x * area.width(), area.top() + y * area.height());
    };
    painter.drawPolyline(QPolygonF({at(0.58, 0), at(0.46, 0.3), at(0.6, 0.5), at(0.44, 0.72), at(0.5, 1)}));
    painter.drawEllipse(at(0.24, 0.3), area.width() * 0.06, area.width() * 0.06);
    painter.drawPolyline(QPolygonF({at(0.08, 0.86), at(0.26, 0.56), at(0.38, 0.74)}));
}

}

void PhotoView::paintMessage(QPainter &painter) const
{
    QColor color = palette().color(QPalette::WindowText);
    color.setAlphaF(0.65F);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(color, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    constexpr QSizeF kIcon(56, 42);
    const int textHeight = 4 * fontMetrics().height();
    const double top = (height() - kIcon.height() - textHeight) / 2;
    paintBrokenFrame(painter, {QPointF((width() - kIcon.width()) / 2, top), kIcon});

    const QRectF text(8, top + kIcon.height() + fontMetrics().height() / 2.0, width() - 16, textHeight);
    painter.setPen(color);
    painter.drawText(text, Qt::AlignHCenter | Qt::AlignTop | Qt::TextWrapAnywhere, message());
}

/// While the file is not open: what is known of it.
QSize PhotoView::pictureSize() const
{
    if (!m_image.isNull() || !m_photo || m_picture.isNull())
        return m_image.size();
    if (m_extent == Extent::AsEdited && !m_photo->cropRect().isEmpty())
        return m_photo->cropRect().toRect().size();
    const QSizeF known = m_photo->fileRef() ? m_photo->fileRef()->knownPhotoSize() : QSizeF();
    if (!known.isEmpty())
        return known.toSize();
    const QSize thumbnail = m_picture.size();
    const bool isWhole = std::max(thumbnail.width(), thumbnail.height()) < ThumbnailMaker::kBoxSide;
    return isWhole ? thumbnail : thumbnail * kMostEnlarged;
}

QRect PhotoView::deviceRect() const
{
    const QRect area = pictureArea();
    return fittedDeviceRect(pictureSize(), area.size(), devicePixelRatioF())
        .translated((QPointF(area.topLeft()) * devicePixelRatioF()).toPoint());
}

QString PhotoView::message() const
{
    const QString name = m_photo && m_photo->fileRef() ? QFileInfo(m_photo->fileRef()->path()).fileName() : QString();
    switch (m_state) {
    case State::Missing:
        return (m_photo && m_photo->isVolumeAway() ? tr("Volume not mounted") : tr("The file is missing.")) +
               QLatin1Char('\n') + name;
    case State::Unreadable:
        return tr("This file cannot be shown. It may be damaged.") + QLatin1Char('\n') + name;
    case State::Empty:
        return tr("No photo");
    default:
        return name;
    }
}
