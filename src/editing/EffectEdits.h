#pragma once

#include "EffectChain.h"
#include "FilterCatalogue.h"

#include <memory>

class PIPhoto;

/// A value, or which filters there are.
enum class EffectChange { Value, Filters };

/// Whoever lets a photo's effects be edited, and shows the outcome.
class EffectDelegate
{
public:
    virtual ~EffectDelegate() = default;

    /// Asked before each change, with the tag of the filter that is added, changed or removed (-1: one that is not
    /// offered); it is not made when refused.
    [[nodiscard]] virtual bool setUndoForFilter(int filterTag, EffectChange change) = 0;
    /// A value changed.
    virtual void updatePhotoForFilterChange() = 0;
    /// A filter was added, removed or reset.
    virtual void updatePhotoForFilterSet() = 0;
};

/// Changes to the effects of one photo, as controls make them. A filter is in the chain once as far as this goes: of
/// several entries of one filter the first is meant. Main thread.
class EffectEdits
{
public:
    /// Both outlive it.
    EffectEdits(const FilterCatalogue &catalogue, EffectDelegate &delegate)
        : m_catalogue(catalogue)
        , m_delegate(delegate)
    {}

    void setPhoto(std::shared_ptr<PIPhoto> photo) { m_photo = std::move(photo); }
    [[nodiscard]] const std::shared_ptr<PIPhoto> &photo() const { return m_photo; }

    enum class ShowError { No, Yes };
    /// Appends the filter with its starting values. False when it is applied already or was refused; then an alert says
    /// so, if wanted.
    bool addFilterToPhoto(int filterTag, ShowError showError);
    /// Gives the input that the control stands for a value: a number, point or colour, as the input takes it. A whole
    /// number is cut off. False, with nothing changed, when the tag leads nowhere, the value is of another kind or not
    /// finite, or the change was refused.
    bool changeValue(int controlTag, const EffectValue &value);
    /// Takes the filter out of the chain. Also for filters that are not offered.
    bool deleteEffect(const QString &filterName);
    /// Gives each input that has a starting value this value again.
    bool revertEffect(int filterTag);

    /// The photo's entry of that filter; null when it is not applied.
    [[nodiscard]] const EffectEntry *entry(const QString &filterName) const;

private:
    [[nodiscard]] qsizetype indexOf(const QString &filterName) const;

    const FilterCatalogue &m_catalogue;
    EffectDelegate &m_delegate;
    std::shared_ptr<PIPhoto> m_photo;
};
