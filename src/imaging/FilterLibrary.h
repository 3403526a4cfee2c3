#pragma once

#include "FilterBackEnd.h"
#include "FilterRow.h"

#include <QHash>

/// The filters of this program, from its tables.
class FilterLibrary final : public FilterBackEnd
{
public:
    FilterLibrary();

    [[nodiscard]] QStringList filterNames(const QString &category) const override;
    [[nodiscard]] QString localizedCategoryName(const QString &category) const override;
    [[nodiscard]] const FilterAttributes *attributes(const QString &filterName) const override;
    [[nodiscard]] std::unique_ptr<FilterRun> start(const QImage &image, const FilterContext &context) const override;

private:
    void add(const char *categoryName, const char *displayName, const FilterTable &filters);

    struct Filter
    {
        const FilterRow *row;
        FilterAttributes attributes;
    };
    QHash<QString, Filter> m_filters;
    QHash<QString, QStringList> m_categories;
    QHash<QString, QString> m_categoryNames;
};
