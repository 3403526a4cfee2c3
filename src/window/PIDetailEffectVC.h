#pragma once

#include "EffectEdits.h"
#include "ImageRenderer.h"
#include "PIDetailBaseVC.h"

#include <QTimer>

class FilterCatalogue;
class LibraryEditor;
class PIEffectUIManager;
class QAction;
class QBoxLayout;
class QLabel;
class QMenu;
class QToolButton;
class QVUndoManager;

/// The effects section: the photo's effects in the order of their application, each with its controls.
class PIDetailEffectVC final : public PIDetailBaseVC, private EffectDelegate
{
    Q_OBJECT

public:
    /// All outlive the section.
    PIDetailEffectVC(LibraryEditor &editor, QVUndoManager &undo, const FilterCatalogue &catalogue,
                     const PIDetailController &controller, QWidget *parent = nullptr);

    /// Adds a button for the command that opens the effects dialog, and one for the menu of effect sets.
    void addCommands(QAction &editEffects, QMenu &effectSets);

protected:
    void selectionChanged() override;

private:
    [[nodiscard]] bool setUndoForFilter(int filterTag, EffectChange change) override;
    void updatePhotoForFilterChange() override;
    void updatePhotoForFilterSet() override;
    void showChangedPhoto();
    void showAddMenu(QMenu &menu);
    void preparePickerPicture();

    QVUndoManager &m_undo;
    const FilterCatalogue &m_catalogue;
    QLabel *m_none;
    QWidget *m_controls;
    PIEffectUIManager *m_uiManager;
    QBoxLayout *m_buttons;
    QToolButton *m_addButton;
    QTimer m_changeTimer;
    std::shared_ptr<PIPhoto> m_changedPhoto; ///< not shown as it is now; null when nothing waits
    int m_recordedFilter = -1;               ///< whose values the newest undo entry is about, if it is ours
    std::shared_ptr<const PIPhoto> m_before; ///< what our newest undo entry brings back
    QString m_pictureOf;                     ///< guid of the photo whose picture coordinate pickers have
    ImageRenderer m_renderer;
};
