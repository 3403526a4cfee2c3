#pragma once

#include <QImage>
#include <QPointF>
#include <QWidget>

/// A small picture with a cross that the user drags, or moves with the arrow keys, to a place in it. Places are in
/// normalised image coordinates: -1 is the left or bottom edge, 0 the centre, +1 the right or top edge.
class QVCoordinateView final : public QWidget
{
    Q_OBJECT

public:
    QVCoordinateView(const QString &name, QWidget *parent = nullptr);

    void setPicture(const QImage &picture);
    /// Without a signal. A place outside the picture is shown at its edge.
    void setCoordinate(QPointF coordinate);
    [[nodiscard]] QPointF coordinate() const { return m_coordinate; }
    /// Where the picture is painted.
    [[nodiscard]] QRectF pictureRect() const;

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

Q_SIGNALS:
    /// By the user: always within the picture.
    void coordinateChanged(QPointF coordinate);
    /// The cross was let go.
    void editingFinished();

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void moveTo(QPointF coordinate);
    void dragTo(QPointF position);
    [[nodiscard]] QPointF crossPosition() const;

    QImage m_picture;
    QPointF m_coordinate;
};
