#pragma once

#include <QObject>
#include <QPoint>
#include <QRect>
#include <QTimer>

#include <optional>

class QAbstractScrollArea;
class QPainter;

/// The rectangle that is drawn open over the content of a view, which scrolls along while the pointer is held above or
/// below it.
class RubberBand final : public QObject
{
    Q_OBJECT

public:
    explicit RubberBand(QAbstractScrollArea &view);

    // Positions are those of the view's viewport.
    void begin(QPoint position);
    void stretch(QPoint position);
    void end();
    [[nodiscard]] bool isActive() const { return m_start.has_value(); }
    void paint(QPainter &painter) const;

Q_SIGNALS:
    void stretched(const QRect &contentRect);

private:
    [[nodiscard]] QRect contentRect() const;
    [[nodiscard]] int offset() const;
    void scroll();

    QAbstractScrollArea &m_view;
    std::optional<QPoint> m_start; // in the content
    QPoint m_end;                  // in the content
    QTimer m_scrollTimer;
};
