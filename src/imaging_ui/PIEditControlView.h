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

    void setControlEnabled(int code, bool enabled);

Q_SIGNALS:
    void controlClicked(int code);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QHash<int, QToolButton *> m_buttons; ///< by control code
};
