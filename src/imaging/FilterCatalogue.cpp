#include "FilterCatalogue.h"

#include <QCoreApplication>

#include <algorithm>

namespace {

const QLatin1String kImageInput("inputImage");
const QLatin1String kImageClass("CIImage");
const QLatin1String kVectorClass("CIVector");

constexpr int kFiltersPerCategory = 1000;
constexpr int kMaxInputs = 5;
constexpr int kMaxVectors = 2;
constexpr int kMaxVectorComponents = 2;

const QStringList &standardFilters()
{
    static const QStringList names{QStringLiteral("CIColorControls"), QStringLiteral("CIUnsharpMask"),
                                   QStringLiteral("CIStraightenFilter")};
    return names;
}

const QStringList &backEndCategories()
{
    static const QStringList names{QStringLiteral("CICategoryBlur"),
                                   QStringLiteral("CICategoryColorAdjustment"),
                                   QStringLiteral("CICategoryColorEffect"),
                                   QStringLiteral("CICategoryDistortionEffect"),
                                   QStringLiteral("CICategoryGeometryAdjustment"),
                                   QStringLiteral("CICategoryHalftoneEffect"),
                                   QStringLiteral("CICategorySharpen"),
                                   QStringLiteral("CICategoryStylize"),
                                   QStringLiteral("CICategoryTileEffect")};
    return names;
}

}

FilterCatalogue::FilterCatalogue(const FilterBackEnd &backEnd)
{
    Category standard{{}, QCoreApplication::translate("FilterCatalogue", "Standard Effects"), {}};
    for (const QString &filter : standardFilters())
        addFilter(filter, standard, backEnd);
    m_categories.append(standard);
    for (const QString &name : backEndCategories()) {
        Category category{name, backEnd.localizedCategoryName(name), {}};
        const QStringList offered = backEnd.filterNames(name);
        for (const QString &filter : offered)
            addFilter(filter, category, backEnd);
        m_categories.append(category);
    }
}

const FilterAttributes *FilterCatalogue::description(const QString &filterName) const
{
    const auto found = m_descriptions.constFind(filterName);
    return found == m_descriptions.cend() ? nullptr : &*found;
}

QString FilterCatalogue::displayName(const QString &filterName) const
{
    if (const FilterAttributes *filter = description(filterName))
        return filter->displayName;
    return filterName.isEmpty() ? QCoreApplication::translate("FilterCatalogue", "Unknown effect") : filterName;
}

int FilterCatalogue::tagForFilter(const QString &filterName) const
{
    for (qsizetype i = 0; i < m_categories.size(); ++i) {
        const qsizetype place = m_categories.at(i).filters.indexOf(filterName);
        if (place >= 0)
            return static_cast<int>(i * kFiltersPerCategory + place);
    }
    return -1;
}

QString FilterCatalogue::filterForTag(int filterTag) const
{
    const qsizetype category = filterTag / kFiltersPerCategory;
    if (filterTag < 0 || category >= m_categories.size())
        return {};
    return m_categories.at(category).filters.value(filterTag % kFiltersPerCategory);
}

const FilterInput *FilterCatalogue::inputForTag(int controlTag) const
{
    const FilterAttributes *filter = controlTag < 0 ? nullptr : description(filterForTag(filterTagOf(controlTag)));
    const int input = controlTag % kInputsPerTag;
    return filter && input < filter->inputs.size() ? &filter->inputs.at(input) : nullptr;
}

EffectEntry FilterCatalogue::startingEntry(const QString &filterName) const
{
    EffectEntry entry(filterName);
    const FilterAttributes *filter = description(filterName);
    if (!filter)
        return entry;
    for (auto input = filter->inputs.crbegin(); input != filter->inputs.crend(); ++input) {
        const auto &value = input->identity ? input->identity : input->defaultValue;
        if (!value || input->name == kImageInput || input->attributeClass == kImageClass)
            continue;
        const bool isPoint = std::holds_alternative<QPointF>(*value);
        entry.setValue(input->name, isPoint ? EffectValue(QPointF(0, 0)) : *value);
    }
    return entry;
}

namespace {

// Filters that need more than an image and a few values, or that change the picture's shape.
bool isRefusedByName(const QString &filterName)
{
    static const QStringList refused{QStringLiteral("CICircularWrap"), QStringLiteral("CIHeightFieldFromMask"),
                                     QStringLiteral("CIMaskToAlpha"), QStringLiteral("CIStretchCrop"),
                                     QStringLiteral("CITemperatureAndTint")};
    return refused.contains(filterName);
}

// Whether there are controls for such an input.
bool isEditable(const FilterInput &input)
{
    if (!input.hasAttributes)
        return true;
    if (input.attributeClass == kVectorClass)
        return (input.identity || input.defaultValue) && input.vectorComponents <= kMaxVectorComponents;
    return input.attributeClass == kImageClass || input.attributeClass == QLatin1String("NSNumber") ||
           input.attributeClass == QLatin1String("CIColor");
}

bool isAdmissible(const FilterAttributes &filter)
{
    const auto &inputs = filter.inputs;
    if (inputs.isEmpty() || inputs.size() > kMaxInputs || !std::all_of(inputs.cbegin(), inputs.cend(), isEditable))
        return false;
    const auto count = [&](QLatin1String attributeClass) {
        return std::count_if(inputs.cbegin(), inputs.cend(), [&](const FilterInput &input) {
            return input.hasAttributes && input.attributeClass == attributeClass;
        });
    };
    return count(kImageClass) == 1 && count(kVectorClass) <= kMaxVectors;
}

}

void FilterCatalogue::addFilter(const QString &filterName, Category &toCategory, const FilterBackEnd &backEnd)
{
    const bool isBackEndCategory = !toCategory.name.isEmpty();
    if (isBackEndCategory && standardFilters().contains(filterName))
        return;
    if (!m_descriptions.contains(filterName)) {
        const FilterAttributes *filter = isRefusedByName(filterName) ? nullptr : backEnd.attributes(filterName);
        if (!filter || !isAdmissible(*filter))
            return;
        m_descriptions.insert(filterName, *filter);
    }
    toCategory.filters.append(filterName);
}
