#include "RubberBand.h"

#include <QAbstractScrollArea>
#include <QPainter>
#include <QScrollBar>

#include <algorithm>
#include <utility>

namespace {

constexpr int kScrollMilliseconds = 30;

}

RubberBand::RubberBand(QAbstractScrollArea &view)
    : QObject(&view)
    , m_view(view)
{
    m_scrollTimer.setInterval(kScrollMilliseconds);
    connect(&m_scrollTimer, &QTimer::timeout, this, &RubberBand::scroll);
}

void RubberBand::begin(QPoint position)
{
    m_start = position + QPoint(0, offset());
    m_end = *m_start;
}

void RubberBand::stretch(QPoint position)
{
    if (!m_start)
        return;
    const QRect before = contentRect();
    m_end = position + QPoint(0, offset());
    Q_EMIT stretched(contentRect());
    m_view.viewport()->update(before.united(contentRect()).adjusted(-2, -2, 2, 2).translated(0, -offset()));

    const bool outside = position.y() < 0 || position.y() >= m_view.viewport()->height();
    if (outside && !m_scrollTimer.isActive())
        m_scrollTimer.start();
    else if (!outside)
        m_scrollTimer.stop();
}

void RubberBand::end()
{
    m_scrollTimer.stop();
    if (std::exchange(m_start, std::nullopt))
        m_view.viewport()->update();
}

void RubberBand::paint(QPainter &painter) const
{
    if (!m_start || *m_start == m_end)
        return;
    QColor color = m_view.palette().color(QPalette::Highlight);
    painter.setPen(color);
    color.setAlphaF(0.25F);
    painter.setBrush(color);
    painter.drawRect(contentRect().translated(0, -offset()));
}

QRect RubberBand::contentRect() const
{
    return QRect(*m_start, m_end).normalized();
}

int RubberBand::offset() const
{
    return m_view.verticalScrollBar()->value();
}

/// The farther away the pointer is held, the faster.
void RubberBand::scroll()
{
    const int y = m_end.y() - offset();
    const int by = y < 0 ? y : std::max(0, y - m_view.viewport()->height());
    const int before = offset();
    m_view.verticalScrollBar()->setValue(before + by / 2);
    if (offset() != before)
        stretch({m_end.x(), y});
}
