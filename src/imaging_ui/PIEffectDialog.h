#pragma once

#include "EffectSession.h"

#include <QDialog>

class EffectList;
class EffectPreview;
class LibraryEditor;
class PIEffectUIManager;
class QLabel;
class QLineEdit;
class QPushButton;
class UserDefaults;

/// The sheet in which the effects of one photo are chosen and set, with a preview. The photo changes when it is
/// accepted.
class PIEffectDialog final : public QDialog, private EffectDelegate
{
    Q_OBJECT

public:
    /// Shows the sheet on the window, which becomes its parent; it deletes itself when closed. All but the photo
    /// outlive it.
    static PIEffectDialog *editPhotoEffects(LibraryEditor &editor, const FilterCatalogue &catalogue,
                                            UserDefaults &defaults, const std::shared_ptr<PIPhoto> &photo,
                                            QWidget &inWindow);
    PIEffectDialog(LibraryEditor &editor, const FilterCatalogue &catalogue, UserDefaults &defaults,
                   const std::shared_ptr<PIPhoto> &photo, QWidget *parent);

    /// Takes the effects for the photo, and closes.
    void accept() override;

protected:
    bool eventFilter(QObject *object, QEvent *event) override;
    void changeEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;

private:
    [[nodiscard]] bool setUndoForFilter(int, EffectChange) override { return true; } // the photo is recorded as a whole
    void updatePhotoForFilterChange() override;
    void updatePhotoForFilterSet() override;

    [[nodiscard]] QWidget *makeLeftSide();
    [[nodiscard]] QWidget *makeRightSide();
    [[nodiscard]] QWidget *makeButtons();
    void selectionDidChange();
    void addFilter();
    void removeFilter();
    void revertEffect();
    void showFilter();
    void showName();

    const FilterCatalogue &m_catalogue;
    EffectSession m_session;
    QLineEdit *m_findField;
    EffectList *m_effectList;
    EffectPreview *m_preview;
    QLabel *m_filterNameField;
    QLabel *m_purposeField;
    QWidget *m_containerView;
    PIEffectUIManager *m_uiManager;
    QPushButton *m_addButton;
    QPushButton *m_removeButton;
    QPushButton *m_resetButton;
    bool m_handlingSelection = false;
};
