#include "PrintPreview.h"

#include <QPainter>
#include <QWheelEvent>

#include <algorithm>

namespace {

constexpr double kMargin = 12;

QImage paintedPage(const PIPrintView &view, int page, QSizeF paper, QPointF origin, QSize size,
                   const std::atomic<bool> &cancelled)
{
    QImage image(size, QImage::Format_RGB32);
    if (image.isNull())
        return image;
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(size.width() / paper.width(), size.height() / paper.height());
    painter.translate(origin);
    static_cast<void>(view.drawPage(painter, page, cancelled)); // what cannot be read is shown as such
    return image;
}

}

PrintPreview::PrintPreview(PixelPool &pool, QWidget *parent)
    : QWidget(parent)
    , m_renderer(pool)
{
    setAccessibleName(tr("Print preview"));
    setMinimumSize(200, 200);
}

QSize PrintPreview::sizeHint() const
{
    return {520, 600};
}

void PrintPreview::setPages(const PIPrintView &view, QSizeF paper, QPointF printableArea)
{
    m_view = view;
    m_paper = paper;
    m_origin = printableArea;
    m_page = 0;
    showPage(1);
}

void PrintPreview::showPage(int page)
{
    const int wanted = std::clamp(page, 1, std::max(totalPages(), 1));
    if (wanted == m_page)
        return;
    m_page = wanted;
    m_picture = {};
    update();
    render();
    Q_EMIT pageChanged();
}

QRectF PrintPreview::paperRect() const
{
    const QRectF room = QRectF(rect()).adjusted(kMargin, kMargin, -kMargin, -kMargin);
    const QSizeF size = m_paper.scaled(room.size(), Qt::KeepAspectRatio);
    return {room.center() - QPointF(size.width() / 2, size.height() / 2), size};
}

void PrintPreview::render()
{
    const QSize size = (paperRect().size() * devicePixelRatioF()).toSize();
    if (size.isEmpty() || m_paper.isEmpty())
        return;
    m_renderer.run([this, view = m_view, page = m_page, paper = m_paper, origin = m_origin,
                    size](const std::atomic<bool> &cancelled) -> std::function<void()> {
        return [this, picture = paintedPage(view, page, paper, origin, size, cancelled)] {
            m_picture = picture;
            update();
        };
    });
}

void PrintPreview::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const QRectF paper = paperRect();
    painter.fillRect(paper.translated(2, 2), QColor(0, 0, 0, 60));
    painter.fillRect(paper, Qt::white);
    if (!m_picture.isNull()) {
        painter.drawImage(paper, m_picture);
        return;
    }
    painter.setPen(Qt::darkGray);
    painter.drawText(paper, Qt::AlignCenter, tr("Preparing the page…"));
}

void PrintPreview::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    render();
}

void PrintPreview::wheelEvent(QWheelEvent *event)
{
    constexpr int kNotch = 120;
    m_wheel += event->angleDelta().y(); // a touchpad sends small parts of a notch
    const int pages = m_wheel / kNotch;
    m_wheel -= pages * kNotch;
    if (pages != 0)
        showPage(m_page - pages);
}
