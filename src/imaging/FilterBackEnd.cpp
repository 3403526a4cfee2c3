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
    QImage apply(const EffectEntry &, const QImage &, const FilterContext &) const override { return {}; }
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
    if (source.isNull())
        return std::nullopt;
    QImage image = source;
    for (const EffectEntry &entry : chain) {
        if (context.cancelled && context.cancelled->load())
            return std::nullopt;
        const FilterAttributes *filter = backEnd.attributes(entry.filterName());
        if (!filter)
            continue;
        image = backEnd.apply(entryInPixels(entry, *filter, source.size()), image, context);
        if (image.isNull()) {
            if (!context.cancelled || !context.cancelled->load())
                LogString("Failed to create image for filter %@", entry.filterName());
            return std::nullopt;
        }
    }
    return withSize(image, source.size());
}
