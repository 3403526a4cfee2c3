#include "NumberControl.h"

#include "FormatMessage.h"

#include <QBoxLayout>
#include <QCheckBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QSlider>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

constexpr double kDegreesPerRadian = 180 / std::numbers::pi;
constexpr int kSliderSteps = 1000;
constexpr int kDecimals = 3;
/// Of a number for which the filter tells no range.
constexpr double kWidestValue = 10'000;

/// The wheel scrolls what the slider stands in, unless the slider was chosen first.
class QuietSlider final : public QSlider
{
public:
    using QSlider::QSlider;

protected:
    void wheelEvent(QWheelEvent *event) override
    {
        if (hasFocus())
            QSlider::wheelEvent(event);
        else
            event->ignore();
    }
};

QString rangeText(const FilterInput &input, double minimum, double maximum)
{
    const bool isAngle = input.numberType == NumberType::Angle;
    const QString format =
        isAngle ? NumberControl::tr("%@ Values from %.2f° to %.2f°") : NumberControl::tr("%@ Values from %.2f to %.2f");
    return FormatMessage(format, {QString(input.displayName + QLatin1Char('.')), minimum, maximum});
}

}

NumberField::NumberField(QWidget *parent)
    : QDoubleSpinBox(parent)
{
    setDecimals(kDecimals);
    setFocusPolicy(Qt::StrongFocus);
}

QString NumberField::textFromValue(double value) const
{
    QString text = QDoubleSpinBox::textFromValue(value);
    const qsizetype point = text.indexOf(locale().decimalPoint());
    while (point >= 0 && text.size() > point + 2 && text.endsWith(locale().zeroDigit()))
        text.chop(1);
    return text;
}

void NumberField::focusInEvent(QFocusEvent *event)
{
    m_valueBefore = value();
    QDoubleSpinBox::focusInEvent(event);
}

void NumberField::keyPressEvent(QKeyEvent *event)
{
    const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    const bool isEdited = value() != m_valueBefore || lineEdit()->isModified();
    if (!isEnter && !(event->key() == Qt::Key_Escape && isEdited)) {
        QDoubleSpinBox::keyPressEvent(event);
        return;
    }
    if (isEnter)
        interpretText();
    else
        setValue(m_valueBefore);
    m_valueBefore = value();
    lineEdit()->setText(prefix() + textFromValue(value()) + suffix());
    selectAll();
    event->accept();
}

void NumberField::wheelEvent(QWheelEvent *event)
{
    if (hasFocus())
        QDoubleSpinBox::wheelEvent(event);
    else
        event->ignore();
}

NumberControl::NumberControl(const FilterInput &input, TextField textField, QWidget *parent)
    : QWidget(parent)
    , m_isInteger(input.numberType == NumberType::Integer)
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    const bool isAngle = input.numberType == NumberType::Angle;
    const double widest = isAngle ? std::numbers::pi : kWidestValue;
    m_factor = isAngle ? kDegreesPerRadian : 1;
    m_minimum = input.sliderMinimum.value_or(-widest);
    m_maximum = std::max(input.sliderMaximum.value_or(widest), m_minimum);
    const bool hasRange = isAngle || (input.sliderMinimum && input.sliderMaximum);
    if (input.numberType == NumberType::Boolean) {
        m_check = new QCheckBox(this);
        m_check->setToolTip(input.displayName);
        m_check->setAccessibleName(input.displayName);
        connect(m_check, &QCheckBox::toggled, this, [this](bool on) { Q_EMIT valueChanged(on ? 1 : 0); });
        layout->addWidget(m_check, 1);
        setFocusProxy(m_check);
        return;
    }
    if (hasRange)
        buildSlider(input);
    if (textField == TextField::Yes || !hasRange)
        buildField(input);
}

void NumberControl::buildSlider(const FilterInput &input)
{
    m_slider = new QuietSlider(Qt::Horizontal, this);
    const int steps = m_isInteger ? int(std::trunc(m_maximum) - std::trunc(m_minimum)) : kSliderSteps;
    m_slider->setRange(0, steps);
    m_slider->setSingleStep(std::max(steps / 100, 1));
    m_slider->setPageStep(std::max(steps / 10, 1));
    m_slider->setMinimumWidth(80);
    m_slider->setFocusPolicy(Qt::StrongFocus);
    m_slider->setToolTip(input.displayName);
    m_slider->setAccessibleName(input.displayName);
    connect(m_slider, &QSlider::valueChanged, this, &NumberControl::sliderChanged);
    connect(m_slider, &QSlider::sliderReleased, this, &NumberControl::editingFinished);
    layout()->addWidget(m_slider);
    setFocusProxy(m_slider);
}

void NumberControl::buildField(const FilterInput &input)
{
    m_field = new NumberField(this);
    const double minimum = m_minimum * m_factor;
    const double maximum = m_maximum * m_factor;
    m_field->setRange(minimum, maximum);
    m_field->setSingleStep(m_isInteger || !m_slider ? 1 : (maximum - minimum) / 100);
    m_field->setDecimals(m_isInteger ? 0 : kDecimals);
    if (input.numberType == NumberType::Angle)
        m_field->setSuffix(QStringLiteral("°"));
    constexpr int kCharacters = 11; // all fields are as wide as the widest number needs
    m_field->setFixedWidth(fontMetrics().averageCharWidth() * kCharacters + m_field->sizeHint().height());
    m_field->setToolTip(rangeText(input, minimum, maximum));
    m_field->setAccessibleName(input.displayName);
    connect(m_field, &QDoubleSpinBox::valueChanged, this, &NumberControl::fieldChanged);
    connect(m_field, &QDoubleSpinBox::editingFinished, this, &NumberControl::editingFinished);
    layout()->addWidget(m_field);
    if (!m_slider)
        setFocusProxy(m_field);
}

void NumberControl::setValue(double value)
{
    if (m_check) {
        const QSignalBlocker silent(m_check);
        m_check->setChecked(value != 0);
    }
    showInSlider(value);
    showInField(value);
}

void NumberControl::showInSlider(double value)
{
    if (!m_slider || m_slider->isSliderDown())
        return;
    const QSignalBlocker silent(m_slider);
    const double share = m_maximum > m_minimum ? (value - m_minimum) / (m_maximum - m_minimum) : 0;
    m_slider->setValue(int(std::lround(std::clamp(share, 0.0, 1.0) * m_slider->maximum())));
}

void NumberControl::showInField(double value)
{
    const double shown = std::clamp(value, m_minimum, m_maximum) * m_factor;
    // What is being typed stays when it means the same already.
    if (!m_field || (m_field->hasFocus() && std::abs(m_field->value() - shown) < 0.001))
        return;
    const QSignalBlocker silent(m_field);
    m_field->setValue(shown);
}

void NumberControl::sliderChanged(int position)
{
    const double share = double(position) / std::max(m_slider->maximum(), 1);
    const double value = m_isInteger ? std::trunc(m_minimum) + position : m_minimum + share * (m_maximum - m_minimum);
    showInField(value);
    Q_EMIT valueChanged(value);
}

void NumberControl::fieldChanged(double shown)
{
    const double value = shown / m_factor;
    showInSlider(value);
    Q_EMIT valueChanged(value);
}
