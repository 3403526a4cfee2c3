#include "EffectPreview.h"

#include "FittedRect.h"
#include "PhotoMessage.h"

#include <QMouseEvent>
#include <QPainter>

namespace {

constexpr int kResizeSettlesMilliseconds = 120;

}

EffectPreview::EffectPreview(QWidget *parent)
    : QWidget(parent)
    , m_renderer([this](const ChainRenderer::Rendering &rendering) { show(rendering); })
{
    setAccessibleName(tr("Preview"));
    setToolTip(tr("Hold the mouse button down to see the photo without effects"));
    m_resizeTimer.setSingleShot(true);
    m_resizeTimer.setInterval(kResizeSettlesMilliseconds);
    connect(&m_resizeTimer, &QTimer::timeout, this, [this] { m_renderer.setBox(size() * devicePixelRatioF()); });
}

void EffectPreview::setPicture(const PictureRecipe &recipe)
{
    m_renderer.setPicture(
        [recipe = PictureRecipe{recipe.path, recipe.file, recipe.crop, {}}] { return recipe.open().shown; });
}

void EffectPreview::setComparing(bool comparing)
{
    m_comparing = comparing;
    update();
}

QSize EffectPreview::sizeHint() const
{
    return {600, 420};
}

QSize EffectPreview::minimumSizeHint() const
{
    return {200, 140};
}

void EffectPreview::show(const ChainRenderer::Rendering &rendering)
{
    const bool isOther = rendering.original.cacheKey() != m_rendering.original.cacheKey();
    m_rendering = rendering;
    m_isUnreadable = rendering.original.isNull();
    update();
    if (isOther)
        Q_EMIT originalChanged();
    Q_EMIT rendered();
}

QString EffectPreview::message() const
{
    if (m_isUnreadable)
        return tr("This photo's file cannot be shown now. Effects can still be chosen.");
    return m_comparing ? tr("Without effects") : QString();
}

void EffectPreview::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    constexpr int kDarkerPercent = 108;
    painter.fillRect(rect(), palette().color(QPalette::Window).darker(kDarkerPercent));
    const QImage &shown = m_comparing ? m_rendering.original : m_rendering.filtered;
    if (!shown.isNull()) {
        const QRect device = fittedDeviceRect(shown.size(), size(), devicePixelRatioF());
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(
            QRectF(QPointF(device.topLeft()) / devicePixelRatioF(), QSizeF(device.size()) / devicePixelRatioF()),
            shown);
    }
    const QString text = message();
    if (text.isEmpty())
        return;
    const QRect area = m_isUnreadable ? rect() : QRect(0, height() - 40, width(), 32);
    paintPictureNote(painter, area, Qt::AlignCenter | Qt::TextWordWrap, text);
}

void EffectPreview::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    if (m_rendering.original.isNull())
        m_renderer.setBox(size() * devicePixelRatioF());
    else
        m_resizeTimer.start();
}

void EffectPreview::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        setComparing(true);
}

void EffectPreview::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        setComparing(false);
}
