#pragma once

#include "DateSeries.h"
#include "DispatchQueue.h"

#include <QDialog>

class QComboBox;
class QLabel;
class QPushButton;
class QSpinBox;
class UserDefaults;

/// The sheet in which the user chooses the step from one photo's date to the next, and sees where that leads.
class PIDateSeriesDialog final : public QDialog
{
    Q_OBJECT
    Q_PROPERTY(int whatToChange READ whatToChange WRITE setWhatToChange)
    Q_PROPERTY(int increment READ increment WRITE setIncrement)

public:
    /// `photos` are in the order of their folder. All outlive it.
    PIDateSeriesDialog(const PIGroup::PhotoList &photos, UserDefaults &defaults, QWidget *parent);

    [[nodiscard]] const PIGroup::PhotoList &photos() const { return m_photos; }
    /// As it is chosen now.
    [[nodiscard]] DateSeries series() const { return {whatToChange(), increment()}; }
    /// The unit.
    [[nodiscard]] int whatToChange() const;
    void setWhatToChange(int unit);
    [[nodiscard]] int increment() const;
    void setIncrement(int units);

private:
    void build();
    void takeBase(std::optional<qint64> base);
    void showDates();
    void redate();

    UserDefaults &m_defaults;
    PIGroup::PhotoList m_photos;
    QStringList m_paths; ///< empty where a file is lost
    bool m_isBaseRead = false;
    std::optional<qint64> m_base;
    QSpinBox *m_increment;
    QComboBox *m_unit;
    QLabel *m_first;
    QLabel *m_last;
    QLabel *m_summary;
    QPushButton *m_okButton;
    DispatchQueue m_worker; ///< for the base date. Last: its blocks end first
};
