#pragma once

#include "ChainRenderer.h"
#include "PictureRecipe.h"

#include <QTimer>
#include <QWidget>

/// A photo with effects that are being chosen, fitted and centred. Rendering goes on in the background; meanwhile the
/// picture before stays. While it is held down with the mouse, or told to compare, it shows the photo without them.
class EffectPreview final : public QWidget
{
    Q_OBJECT

public:
    explicit EffectPreview(QWidget *parent = nullptr);

    /// Shows the recipe's picture; of its chain nothing is taken.
    void setPicture(const PictureRecipe &recipe);
    void setChain(const EffectChain &chain) { m_renderer.setChain(chain); }
    void setComparing(bool comparing);

    /// The picture without effects as it is shown; null until it is there.
    [[nodiscard]] const QImage &original() const { return m_rendering.original; }
    /// The newest rendering.
    [[nodiscard]] const QImage &filtered() const { return m_rendering.filtered; }
    [[nodiscard]] bool isComparing() const { return m_comparing; }

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

Q_SIGNALS:
    /// The picture without effects is there, or is another.
    void originalChanged();
    void rendered();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    void show(const ChainRenderer::Rendering &rendering);
    [[nodiscard]] QString message() const;

    ChainRenderer::Rendering m_rendering;
    bool m_comparing = false;
    bool m_isUnreadable = false;
    QTimer m_resizeTimer;
    ChainRenderer m_renderer;
};
