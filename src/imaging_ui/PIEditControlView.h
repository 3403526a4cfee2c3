#pragma once

#include <QHash>
#include <QIcon>
#include <QList>
#include <QString>
#include <QWidget>

class QToolButton;

/// A strip of a few controls that floats over a picture.
class PIEditControlView final : public QWidget
{
    Q_OBJECT

public:
    struct Control
    {
        int code;
        QIcon icon;
        QString toolTip;
    };

    PIEditControlView(const QList<Control> &controls, QWidget *parent);

    [[nodiscard]] qsizetype numberOfControls() const { return m_controls.size(); }
    // Of the control at that place, from the left, which there is.
    [[nodiscard]] int controlForIndex(qsizetype index) const { return m_controls.at(index).code; }
    [[nodiscard]] const QString &toolTipForControlIndex(qsizetype index) const { return m_controls.at(index).toolTip; }
    void setControlEnabled(int code, bool enabled);

Q_SIGNALS:
    void controlClicked(int code);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QList<Control> m_controls;
    QHash<int, QToolButton *> m_buttons; ///< by control code
};
