#pragma once

#include "EffectChain.h"

#include <QToolButton>

/// Shows a colour; a click opens the colour panel, which changes it while it is open. Giving up there brings the colour
/// back.
class ColorWell final : public QToolButton
{
    Q_OBJECT

public:
    ColorWell(const QString &name, QWidget *parent = nullptr);

    /// Without a signal.
    void setColor(const EffectColor &color);
    [[nodiscard]] const EffectColor &color() const { return m_color; }

Q_SIGNALS:
    void colorChanged(const EffectColor &color);
    /// The panel was closed.
    void editingFinished();

protected:
    void paintEvent(QPaintEvent *event) override;
    [[nodiscard]] QSize sizeHint() const override;

private:
    void choose();

    QString m_name;
    EffectColor m_color;
};
