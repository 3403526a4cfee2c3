#pragma once

#include "FilterBackEnd.h"

#include <QDoubleSpinBox>
#include <QWidget>

class QCheckBox;
class QSlider;

/// A field for a number that takes what was typed when Enter is pressed, and gives back what it had when Escape is;
/// both leave its dialog open. It shows no more digits behind the point than there are, but at least one.
class NumberField final : public QDoubleSpinBox
{
    Q_OBJECT

public:
    explicit NumberField(QWidget *parent = nullptr);

    [[nodiscard]] QString textFromValue(double value) const override;

protected:
    void focusInEvent(QFocusEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    double m_valueBefore = 0; ///< when the field got the focus
};

/// A slider for one number of a filter, with a field beside it when wanted, or a check box for a yes or no. Angles are
/// radians outside and degrees on show. A value outside the slider's range is shown at its end, and kept until the
/// user moves it.
class NumberControl final : public QWidget
{
    Q_OBJECT

public:
    enum class TextField { No, Yes };
    NumberControl(const FilterInput &input, TextField textField, QWidget *parent = nullptr);

    /// Shows the value without a signal. What is being typed stays.
    void setValue(double value);

Q_SIGNALS:
    /// While the slider is dragged or the field typed in.
    void valueChanged(double value);
    /// The slider was let go, the field left.
    void editingFinished();

private:
    void buildSlider(const FilterInput &input);
    void buildField(const FilterInput &input);
    void fieldChanged(double shown);
    void sliderChanged(int position);
    void showInSlider(double value);
    void showInField(double value);

    double m_minimum = 0;
    double m_maximum = 1;
    double m_factor = 1; ///< what is shown per unit of the value
    bool m_isInteger = false;
    QSlider *m_slider = nullptr;    ///< null for a number without a range
    NumberField *m_field = nullptr; ///< null when there is none
    QCheckBox *m_check = nullptr;   ///< only for a yes or no
};
