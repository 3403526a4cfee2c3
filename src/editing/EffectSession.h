#pragma once

#include "EffectEdits.h"

#include <memory>

class LibraryEditor;

/// One sitting at a photo's effects, without the widgets: a working copy of the photo, the filter that is selected, and
/// whether it is only being tried. A selected filter that is not applied yet is added on trial, and taken off again
/// when another is selected. Main thread.
class EffectSession
{
public:
    /// All but the photo outlive it. The delegate hears of the changes made here; the session records nothing with it.
    EffectSession(LibraryEditor &editor, const FilterCatalogue &catalogue, std::shared_ptr<PIPhoto> photo,
                  EffectDelegate &delegate);

    /// A copy with a guid of its own.
    [[nodiscard]] const std::shared_ptr<PIPhoto> &workingPhoto() const { return m_workingPhoto; }
    /// Empty when none is selected.
    [[nodiscard]] const QString &currentFilter() const { return m_currentFilter; }
    /// The selected filter is in the chain on trial.
    [[nodiscard]] bool isProvisionalAdd() const { return m_provisionalAdd; }
    /// The selected filter is in the chain to stay.
    [[nodiscard]] bool isApplied() const { return !m_provisionalAdd && currentEntry(); }
    /// The working photo's entry of the selected filter, the last one of several; null when there is none.
    [[nodiscard]] const EffectEntry *currentEntry() const;

    /// Ends a trial and selects the filter, on trial when the chain does not hold it. Empty selects none.
    void select(const QString &filterName);
    /// Makes the trial a real addition.
    void addFilter();
    /// Takes the selected filter, the last one of several, out of the chain. Nothing is selected then.
    void removeFilter();

    /// Gives the photo the working chain as one undoable step. False, with the photo unchanged, when refused.
    bool setEffects();

private:
    [[nodiscard]] qsizetype currentIndex() const;
    [[nodiscard]] bool takeCurrentOut();

    LibraryEditor &m_editor;
    const FilterCatalogue &m_catalogue;
    EffectDelegate &m_delegate;
    std::shared_ptr<PIPhoto> m_originalPhoto;
    std::shared_ptr<PIPhoto> m_workingPhoto;
    EffectEdits m_edits;
    QString m_currentFilter;
    bool m_provisionalAdd = false;
};
