#pragma once

#include "PIGroup.h"
#include "RenamePlan.h"

#include <QDialog>

class LibraryEditor;
class QButtonGroup;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QSpinBox;
class RenamePreview;
class UserDefaults;

/// The sheet in which the user chooses how the files of the selected photos are renamed, and sees the names before
/// anything is touched.
class PIRenameDialog final : public QDialog
{
    Q_OBJECT

public:
    /// For the selected photos of the folder on show whose files are not lost; null when there is none. All outlive it;
    /// `window` becomes its parent.
    [[nodiscard]] static PIRenameDialog *initWithController(LibraryEditor &editor, UserDefaults &defaults,
                                                            QWidget &window);

    [[nodiscard]] const PIGroup::PhotoList &photos() const { return m_photos; }
    /// As they are chosen now.
    [[nodiscard]] RenameSettings settings() const;

private:
    PIRenameDialog(const PIGroup::PhotoList &photos, UserDefaults &defaults, QWidget *parent);

    void build();
    [[nodiscard]] QWidget *buildStyles();
    [[nodiscard]] QRadioButton *addChoice(QButtonGroup &group, int id, const QString &text, const QString &toolTip);
    void readPreferences();
    void observe();

    void changeStyle();
    void enableRename();
    void controlTextDidChange();
    void rename();

    UserDefaults &m_defaults;
    PIGroup::PhotoList m_photos;
    QButtonGroup *m_styleOptions;
    QLineEdit *m_oldPrefixField;
    QLineEdit *m_newPrefixField;
    QSpinBox *m_renumberField;
    QLineEdit *m_extensionField;
    QLineEdit *m_prefixField;
    QButtonGroup *m_completeOptions;
    QSpinBox *m_completeNumberField;
    RenamePreview *m_preview;
    QPushButton *m_okButton;
};
