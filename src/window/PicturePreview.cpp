#include "PicturePreview.h"

#include "InBackground.h"

#include <QPainter>

namespace {

constexpr int kResizeMilliseconds = 150;
constexpr int kMargin = 6;

}

PicturePreview::PicturePreview(PixelPool &pool, QWidget *parent)
    : QWidget(parent)
    , m_renderer(pool)
    , m_opener(QStringLiteral("hmphoto.preview"), 1, DispatchQueue::AtEnd::LeaveBehind) // a disk may not answer
{
    setMinimumSize(160, 120);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    setAccessibleName(tr("Preview"));
    m_resizeTimer.setSingleShot(true);
    m_resizeTimer.setInterval(kResizeMilliseconds);
    connect(&m_resizeTimer, &QTimer::timeout, this, &PicturePreview::render);
}

void PicturePreview::setPath(const QString &path)
{
    if (path == m_path)
        return;
    m_path = path;
    m_message.clear();
    m_image = {};
    m_picture = {};
    m_renderer.cancel();
    update();
    if (!path.isEmpty())
        inBackground(
            m_opener, this, [path] { return Image::fromFile(path); },
            [this, path](const Image &image) { opened(path, image); });
}

void PicturePreview::opened(const QString &path, const Image &image)
{
    if (path != m_path)
        return; // another one was chosen since
    m_image = image;
    if (image.isNull())
        m_message = tr("This file shows no picture.");
    render();
    update();
}

void PicturePreview::render()
{
    const QSize box = (size() - QSize(2 * kMargin, 2 * kMargin)) * devicePixelRatioF();
    if (m_image.isNull() || box.isEmpty())
        return;
    const auto show = [this](const std::optional<QImage> &pixels) {
        m_picture = pixels ? QPixmap::fromImage(*pixels) : QPixmap();
        m_message = pixels ? QString() : tr("This file shows no picture.");
        update();
    };
    m_renderer.render({m_image, CenterRectangle(m_image.size(), box)}, show);
}

void PicturePreview::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    if (!m_picture.isNull()) {
        const QSize room = size() - QSize(2 * kMargin, 2 * kMargin);
        const QSize fitted = (m_picture.size() / devicePixelRatioF()).scaled(room, Qt::KeepAspectRatio);
        const QSize shown = m_resizeTimer.isActive() ? fitted : m_picture.size() / devicePixelRatioF();
        QRect place(QPoint(), shown);
        place.moveCenter(rect().center());
        painter.drawPixmap(place, m_picture);
    } else if (!m_message.isEmpty()) {
        painter.setPen(palette().color(QPalette::PlaceholderText));
        painter.drawText(rect(), Qt::AlignCenter | Qt::TextWordWrap, m_message);
    }
}

void PicturePreview::resizeEvent(QResizeEvent *)
{
    m_resizeTimer.start();
}
