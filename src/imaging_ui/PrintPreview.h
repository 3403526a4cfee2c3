#pragma once

#include "ImageRenderer.h"
#include "PIPrintView.h"

#include <QImage>
#include <QWidget>

/// One page of a print as it will come out, on paper-white, painted in the background.
class PrintPreview final : public QWidget
{
    Q_OBJECT

public:
    /// `pool` outlives it.
    explicit PrintPreview(PixelPool &pool, QWidget *parent = nullptr);

    /// The paper and the printable area on it, in points. The page on show stays as far as there is one.
    void setPages(const PIPrintView &view, QSizeF paper, QPointF printableArea);
    void showPage(int page);
    [[nodiscard]] int page() const { return m_page; }
    [[nodiscard]] int totalPages() const { return m_view.totalPages(); }

    [[nodiscard]] QSize sizeHint() const override;

Q_SIGNALS:
    void pageChanged();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    void render();
    [[nodiscard]] QRectF paperRect() const;

    PIPrintView m_view;
    QSizeF m_paper;
    QPointF m_origin;
    int m_page = 1;
    int m_wheel = 0; ///< turned, but not yet by a notch
    QImage m_picture;
    ImageRenderer m_renderer;
};
