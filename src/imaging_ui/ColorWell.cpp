#include "ColorWell.h"

#include <QColorDialog>
#include <QStyleOptionToolButton>
#include <QStylePainter>

#include <algorithm>

namespace {

QColor shownColor(const EffectColor &color)
{
    const auto inRange = [](double component) { return float(std::clamp(component, 0.0, 1.0)); };
    return QColor::fromRgbF(inRange(color.red), inRange(color.green), inRange(color.blue));
}

}

ColorWell::ColorWell(const QString &name, QWidget *parent)
    : QToolButton(parent)
    , m_name(name)
{
    setToolTip(name);
    setAccessibleName(name);
    connect(this, &QToolButton::clicked, this, &ColorWell::choose);
}

void ColorWell::setColor(const EffectColor &color)
{
    m_color = color;
    setAccessibleDescription(shownColor(color).name());
    update();
}

QSize ColorWell::sizeHint() const
{
    return {56, QToolButton::sizeHint().height()};
}

void ColorWell::paintEvent(QPaintEvent *)
{
    QStylePainter painter(this);
    QStyleOptionToolButton option;
    initStyleOption(&option);
    painter.drawComplexControl(QStyle::CC_ToolButton, option);
    const QRect swatch = rect().adjusted(5, 5, -5, -5);
    painter.fillRect(swatch, isEnabled() ? shownColor(m_color) : palette().color(QPalette::Mid));
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawRect(swatch.adjusted(0, 0, -1, -1));
}

void ColorWell::choose()
{
    auto *panel = new QColorDialog(shownColor(m_color), this);
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setWindowTitle(m_name);
    const auto take = [this](const QColor &chosen) {
        setColor({chosen.redF(), chosen.greenF(), chosen.blueF(), 1});
        Q_EMIT colorChanged(m_color);
    };
    connect(panel, &QColorDialog::currentColorChanged, this, take);
    connect(panel, &QDialog::rejected, this, [this, before = m_color] {
        setColor(before);
        Q_EMIT colorChanged(m_color);
    });
    connect(panel, &QDialog::finished, this, &ColorWell::editingFinished);
    panel->open();
}
