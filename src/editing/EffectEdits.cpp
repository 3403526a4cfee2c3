#include "EffectEdits.h"

#include "FormatMessage.h"
#include "GiveAlert.h"
#include "PIPhoto.h"

#include <QCoreApplication>

#include <algorithm>
#include <cmath>

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("EffectEdits", text);
}

void tellOfFailure(const FilterAttributes &filter, const QString &reason)
{
    GiveAlert(tr("Can't add effect."),
              FormatMessage(tr("I can't add the filter \"%@\". %@."), {filter.displayName, reason}));
}

/// The value as the input keeps it; nothing when it is not one for this input.
std::optional<EffectValue> valueFor(const FilterInput &input, const EffectValue &value)
{
    if (const auto *number = std::get_if<double>(&value)) {
        if (input.attributeClass != QLatin1String("NSNumber") || !std::isfinite(*number))
            return std::nullopt;
        return input.numberType == NumberType::Integer ? std::trunc(*number) : *number;
    }
    if (const auto *point = std::get_if<QPointF>(&value)) {
        const bool isPoint = input.attributeClass == QLatin1String("CIVector");
        return isPoint && std::isfinite(point->x()) && std::isfinite(point->y()) ? std::optional(value) : std::nullopt;
    }
    const bool isColor = std::holds_alternative<EffectColor>(value);
    return isColor && input.attributeClass == QLatin1String("CIColor") ? std::optional(value) : std::nullopt;
}

}

qsizetype EffectEdits::indexOf(const QString &filterName) const
{
    if (!m_photo)
        return -1;
    const EffectChain &chain = m_photo->filterDicts();
    const auto found = std::find_if(chain.cbegin(), chain.cend(),
                                    [&](const EffectEntry &entry) { return entry.filterName() == filterName; });
    return found == chain.cend() ? -1 : found - chain.cbegin();
}

const EffectEntry *EffectEdits::entry(const QString &filterName) const
{
    const qsizetype index = indexOf(filterName);
    return index < 0 ? nullptr : &m_photo->filterDicts().at(index);
}

bool EffectEdits::addFilterToPhoto(int filterTag, ShowError showError)
{
    const FilterAttributes *filter = m_catalogue.description(m_catalogue.filterForTag(filterTag));
    if (!m_photo || !filter)
        return false;
    const bool isApplied = indexOf(filter->name) >= 0;
    if (isApplied || !m_delegate.setUndoForFilter(filterTag, EffectChange::Filters)) {
        if (showError == ShowError::Yes)
            tellOfFailure(*filter,
                          isApplied ? tr("It is already applied to this photo") : tr("An unknown error occurred"));
        return false;
    }
    // Standard filters too go to the end: effects are applied in the order in which they were added.
    m_photo->setFilterDicts(m_photo->filterDicts() + EffectChain{m_catalogue.startingEntry(filter->name)});
    m_delegate.updatePhotoForFilterSet();
    return true;
}

bool EffectEdits::changeValue(int controlTag, const EffectValue &value)
{
    const FilterInput *input = m_catalogue.inputForTag(controlTag);
    const int filterTag = FilterCatalogue::filterTagOf(controlTag);
    const qsizetype index = input ? indexOf(m_catalogue.filterForTag(filterTag)) : -1;
    const auto kept = input ? valueFor(*input, value) : std::nullopt;
    if (index < 0 || !kept)
        return false;
    EffectChain chain = m_photo->filterDicts();
    const EffectValue *before = chain.at(index).value(input->name);
    if (before && *before == *kept)
        return true;
    if (!m_delegate.setUndoForFilter(filterTag, EffectChange::Value))
        return false;
    chain[index].setValue(input->name, *kept);
    m_photo->setFilterDicts(chain);
    m_delegate.updatePhotoForFilterChange();
    return true;
}

bool EffectEdits::deleteEffect(const QString &filterName)
{
    const qsizetype index = indexOf(filterName);
    if (index < 0 || !m_delegate.setUndoForFilter(m_catalogue.tagForFilter(filterName), EffectChange::Filters))
        return false;
    EffectChain chain = m_photo->filterDicts();
    chain.removeAt(index);
    m_photo->setFilterDicts(chain);
    m_delegate.updatePhotoForFilterSet();
    return true;
}

bool EffectEdits::revertEffect(int filterTag)
{
    const QString name = m_catalogue.filterForTag(filterTag);
    const qsizetype index = indexOf(name);
    if (index < 0 || !m_delegate.setUndoForFilter(filterTag, EffectChange::Filters))
        return false;
    EffectChain chain = m_photo->filterDicts();
    const EffectEntry start = m_catalogue.startingEntry(name);
    for (const auto &[input, value] : start.values())
        chain[index].setValue(input, value);
    m_photo->setFilterDicts(chain);
    m_delegate.updatePhotoForFilterSet();
    return true;
}
