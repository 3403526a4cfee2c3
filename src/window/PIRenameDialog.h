#pragma once

#include "NotificationCenter.h"
#include "PIGroup.h"
#include "RenamePlan.h"

#include <QDialog>
#include <QTimer>

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
    /// For the files of these photos, as it is on show. When the dialog is accepted, it is for what was chosen.
    [[nodiscard]] const RenamePlan &plan() const;

private:
    PIRenameDialog(const PIGroup::PhotoList &photos, LibraryEditor &editor, UserDefaults &defaults, QWidget *parent);

    void build();
    [[nodiscard]] QWidget *buildStyles();
    [[nodiscard]] QRadioButton *addChoice(QButtonGroup &group, int id, const QString &text, const QString &toolTip);
    void readPreferences();
    void observe();
    void observeFiles();
    void takeFiles();
    [[nodiscard]] RenameSettings settings() const;

    void changeStyle();
    void enableRename();
    void controlTextDidChange();
    void rename();
    void acceptWhenPlanned();

    LibraryEditor &m_editor;
    UserDefaults &m_defaults;
    PIGroup::PhotoList m_photos;
    QStringList m_paths;
    QStringList m_lostPaths;
    QTimer m_filesChanged; ///< many change at a time
    NotificationCenter::Observer m_fileObserver;
    bool m_isPressed = false; ///< the button, before the plan was ready
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
