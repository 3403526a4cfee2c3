#pragma once

#include "FilterBackEnd.h"

#include <QHash>

/// The filters that are offered, by category, and what is known of each. Built once from a back end; which filters
/// are admitted follows from what the back end tells of them. Main thread.
class FilterCatalogue
{
public:
    struct Category
    {
        QString name; ///< the back end's; empty for the standard category
        QString displayName;
        QStringList filters;
    };

    explicit FilterCatalogue(const FilterBackEnd &backEnd);

    /// The ten categories in their order, empty ones included.
    [[nodiscard]] const QList<Category> &categories() const { return m_categories; }
    /// Null when the filter was not admitted.
    [[nodiscard]] const FilterAttributes *description(const QString &filterName) const;
    /// What people call the filter; its own name when it is not offered, and never empty.
    [[nodiscard]] QString displayName(const QString &filterName) const;
    /// A number that leads to the filter: 1000 times its first category plus its place there; -1 when it is not
    /// offered.
    [[nodiscard]] int tagForFilter(const QString &filterName) const;
    /// Empty when no filter has that tag.
    [[nodiscard]] QString filterForTag(int filterTag) const;
    /// A number that leads to a filter and to one of its inputs, by position.
    [[nodiscard]] static int controlTag(int filterTag, int input) { return kInputsPerTag * filterTag + input; }
    [[nodiscard]] static int filterTagOf(int controlTag) { return controlTag / kInputsPerTag; }
    /// Null when the tag leads to none.
    [[nodiscard]] const FilterInput *inputForTag(int controlTag) const;

    /// A new chain entry: the filter and each input's starting value (identity, else default; points start at the
    /// centre). An entry of the name alone when the filter was not admitted.
    [[nodiscard]] EffectEntry startingEntry(const QString &filterName) const;

private:
    static constexpr int kInputsPerTag = 100;

    void addFilter(const QString &filterName, Category &toCategory, const FilterBackEnd &backEnd);

    QList<Category> m_categories;
    QHash<QString, FilterAttributes> m_descriptions;
};
