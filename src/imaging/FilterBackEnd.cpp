#include "FilterBackEnd.h"

#include "LogString.h"

#include <algorithm>

namespace {

class EmptyBackEnd final : public FilterBackEnd
{
public:
    QStringList filterNames(const QString &) const override { return {}; }
    QString localizedCategoryName(const QString &category) const override { return category; }
    const FilterAttributes *attributes(const QString &) const override { return nullptr; }
    std::unique_ptr<FilterRun> start(const QImage &, const FilterContext &) const override { return nullptr; }
};

std::atomic<const FilterBackEnd *> installedBackEnd = nullptr;

}

const FilterBackEnd &filterBackEnd()
{
    static const EmptyBackEnd empty;
    const FilterBackEnd *installed = installedBackEnd.load();
    return installed ? *installed : empty;
}

void installFilterBackEnd(const FilterBackEnd *backEnd)
{
    installedBackEnd.store(backEnd);
}

namespace {

bool isVector(const FilterAttributes &filter, const QString &input)
{
    return std::any_of(filter.inputs.cbegin(), filter.inputs.cend(), [&](const FilterInput &i) {
        return i.name == input && i.attributeClass == QLatin1String("CIVector");
    });
}

// The entry with its points in pixels of an image of that size.
EffectEntry entryInPixels(const EffectEntry &entry, const FilterAttributes &filter, QSizeF image)
{
    EffectEntry inPixels(entry.filterName());
    for (const auto &[input, value] : entry.values()) {
        const auto *point = std::get_if<QPointF>(&value);
        if (point && isVector(filter, input)) {
            const double halfWidth = image.width() / 2;
            const double halfHeight = image.height() / 2;
            inPixels.setValue(input, QPointF(point->x() * halfWidth + halfWidth, point->y() * halfHeight + halfHeight));
        } else {
            inPixels.setValue(input, value);
        }
    }
    return inPixels;
}

// A filter may yield more or less than it was given: what counts is the source's rectangle, counted from the bottom.
QImage withSize(const QImage &image, QSize size)
{
    if (image.size() == size)
        return image;
    return image.convertToFormat(QImage::Format_ARGB32_Premultiplied)
        .copy(0, image.height() - size.height(), size.width(), size.height());
}

}

std::optional<QImage> EvaluateChain(const EffectChain &chain, const QImage &source, const FilterBackEnd &backEnd,
                                    const FilterContext &context)
{
    const auto isCancelled = [&] { return context.cancelled && context.cancelled->load(); };
    if (source.isNull())
        return std::nullopt;
    std::unique_ptr<FilterRun> run;
    QString lastFilter;
    const auto failed = [&] {
        if (!isCancelled())
            LogString("Failed to create image for filter %@", lastFilter);
        return std::nullopt;
    };
    qsizetype applied = 0;
    for (const EffectEntry &entry : chain) {
        if (isCancelled())
            return std::nullopt;
        const FilterAttributes *filter = backEnd.attributes(entry.filterName());
        if (!filter)
            continue;
        if (++applied > kMostFilters)
            break;
        lastFilter = entry.filterName();
        if (!run)
            run = backEnd.start(source, context);
        if (!run || !run->apply(entryInPixels(entry, *filter, source.size())))
            return failed();
    }
    const QImage image = run ? run->result() : source;
    return image.isNull() ? failed() : std::optional(withSize(image, source.size()));
}
