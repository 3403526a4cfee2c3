#include "PIEditControlView.h"

#include <QBoxLayout>
#include <QPainter>
#include <QToolButton>

namespace {

constexpr QSize kIconSize(22, 22);
constexpr double kRadius = 8;

}

PIEditControlView::PIEditControlView(const QList<Control> &controls, QWidget *parent)
    : QWidget(parent)
    , m_controls(controls)
{
    setCursor(Qt::ArrowCursor); // whatever shape the picture below gives it
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(6, 4, 6, 4);
    layout->setSpacing(4);
    for (const Control &control : controls) {
        auto *button = new QToolButton(this);
        button->setIcon(control.icon);
        button->setIconSize(kIconSize);
        button->setToolTip(control.toolTip);
        button->setAccessibleName(control.toolTip);
        button->setAutoRaise(true);
        button->setFocusPolicy(Qt::NoFocus); // the picture goes on taking the keys
        connect(button, &QToolButton::clicked, this, [this, code = control.code] { Q_EMIT controlClicked(code); });
        layout->addWidget(button);
        m_buttons.insert(control.code, button);
    }
}

void PIEditControlView::setControlEnabled(int code, bool enabled)
{
    if (QToolButton *button = m_buttons.value(code))
        button->setEnabled(enabled);
}

void PIEditControlView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(palette().color(QPalette::Mid));
    painter.setBrush(palette().color(QPalette::Window));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), kRadius, kRadius);
}
