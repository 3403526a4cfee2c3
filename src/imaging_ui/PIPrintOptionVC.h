#pragma once

#include <QWidget>

class QButtonGroup;
class QCheckBox;
class QSpinBox;
class UserDefaults;

/// The page of printing options: how many photos stand on a page, how large, and whether there are crop marks. Choices
/// are stored at once.
class PIPrintOptionVC final : public QWidget
{
    Q_OBJECT

public:
    /// `defaults` outlives it.
    explicit PIPrintOptionVC(UserDefaults &defaults, QWidget *parent = nullptr);

    /// Shows what was chosen elsewhere.
    void refresh();
    /// What the chosen layout is called.
    [[nodiscard]] static QString layoutName(int layout);

Q_SIGNALS:
    void changed();

private:
    void changePrintLayout(int layout);
    void changeCropMarks(bool on);
    void changeScale(int percent);

    UserDefaults &m_defaults;
    QButtonGroup *m_layouts;
    QCheckBox *m_cropMarks;
    QSpinBox *m_scale;
};
