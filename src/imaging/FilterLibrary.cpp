#include "FilterLibrary.h"

#include "FilterValues.h"
#include "LogString.h"
#include "WorkingImage.h"

#include <QCoreApplication>

namespace {

QString translated(const char *text)
{
    return QCoreApplication::translate("FilterLibrary", text);
}

const char *classOf(InputKind kind)
{
    switch (kind) {
    case InputKind::Point:
    case InputKind::FourNumbers:
        return "CIVector";
    case InputKind::Color:
        return "CIColor";
    default:
        return "NSNumber";
    }
}

NumberType numberTypeOf(InputKind kind)
{
    switch (kind) {
    case InputKind::Angle:
        return NumberType::Angle;
    case InputKind::YesOrNo:
        return NumberType::Boolean;
    case InputKind::WholePixels:
        return NumberType::Integer;
    default:
        return NumberType::Scalar;
    }
}

FilterInput attributesOf(const InputRow &row)
{
    FilterInput input;
    input.name = QString::fromLatin1(row.name);
    input.attributeClass = QString::fromLatin1(classOf(row.kind));
    input.displayName = translated(row.displayName);
    input.defaultValue = row.defaultValue;
    input.identity = row.identity;
    input.sliderMinimum = row.sliderMinimum;
    input.sliderMaximum = row.sliderMaximum;
    input.numberType = numberTypeOf(row.kind);
    input.vectorComponents = row.kind == InputKind::FourNumbers ? 4 : 2;
    return input;
}

FilterAttributes attributesOf(const FilterRow &row)
{
    FilterAttributes filter{
        QString::fromLatin1(row.name), translated(row.displayName), translated(row.description), {}};
    FilterInput image;
    image.name = QStringLiteral("inputImage");
    image.attributeClass = QStringLiteral("CIImage");
    image.displayName = translated(QT_TRANSLATE_NOOP("FilterLibrary", "Image"));
    filter.inputs.append(image);
    for (const InputRow &input : row.inputs)
        filter.inputs.append(attributesOf(input));
    return filter;
}

}

FilterLibrary::FilterLibrary()
{
    add("CICategoryBlur", QT_TRANSLATE_NOOP("FilterLibrary", "Blur"), blurFilters());
    add("CICategoryColorAdjustment", QT_TRANSLATE_NOOP("FilterLibrary", "Color Adjustment"), colorAdjustmentFilters());
    add("CICategoryColorEffect", QT_TRANSLATE_NOOP("FilterLibrary", "Color Effect"), colorEffectFilters());
    add("CICategoryDistortionEffect", QT_TRANSLATE_NOOP("FilterLibrary", "Distortion Effect"), distortionFilters());
    add("CICategoryGeometryAdjustment", QT_TRANSLATE_NOOP("FilterLibrary", "Geometry Adjustment"), geometryFilters());
    add("CICategoryHalftoneEffect", QT_TRANSLATE_NOOP("FilterLibrary", "Halftone Effect"), halftoneFilters());
    add("CICategorySharpen", QT_TRANSLATE_NOOP("FilterLibrary", "Sharpen"), sharpenFilters());
    add("CICategoryStylize", QT_TRANSLATE_NOOP("FilterLibrary", "Stylize"), stylizeFilters());
    add("CICategoryTileEffect", QT_TRANSLATE_NOOP("FilterLibrary", "Tile Effect"), tileFilters());
}

void FilterLibrary::add(const char *categoryName, const char *displayName, const FilterTable &filters)
{
    const QString category = QString::fromLatin1(categoryName);
    m_categoryNames.insert(category, translated(displayName));
    for (const FilterRow &row : filters) {
        const QString name = QString::fromLatin1(row.name);
        m_categories[category].append(name);
        m_filters.insert(name, {&row, attributesOf(row)});
    }
}

QStringList FilterLibrary::filterNames(const QString &category) const
{
    return m_categories.value(category);
}

QString FilterLibrary::localizedCategoryName(const QString &category) const
{
    return m_categoryNames.value(category, category);
}

const FilterAttributes *FilterLibrary::attributes(const QString &filterName) const
{
    const auto found = m_filters.constFind(filterName);
    return found == m_filters.cend() ? nullptr : &found->attributes;
}

namespace {

/// The image becomes linear light with the first filter that changes something, and 8-bit again at the end.
class LibraryRun final : public FilterRun
{
public:
    using Find = std::function<const FilterRow *(const QString &)>;

    LibraryRun(const QImage &source, const FilterContext &context, Find find)
        : m_source(source)
        , m_context(context)
        , m_find(std::move(find))
    {}

    bool apply(const EffectEntry &entry) override
    {
        const FilterRow *row = m_find(entry.filterName());
        if (!row)
            return false;
        const FilterValues values(*row, entry, m_context);
        if (values.areNeutral())
            return true;
        if (m_image.isNull())
            begin();
        m_image.beginFilter();
        return !m_image.isNull() && row->apply(m_image, values);
    }

    QImage result() override
    {
        if (m_image.isNull())
            return m_source;
        QImage pixels = m_image.pixels();
        const QString error = takeVipsError();
        if (pixels.isNull() && !error.isEmpty() && !isSet(m_context.cancelled))
            LogString("No pixels from the filters: %@", error);
        return pixels;
    }

private:
    void begin()
    {
        const bool isOpaque = !m_source.hasAlphaChannel();
        m_working = m_source.convertToFormat(isOpaque ? QImage::Format_RGB32 : QImage::Format_ARGB32_Premultiplied);
        if (!m_working.isNull())
            m_image = WorkingImage(m_working, m_context.cancelled);
    }

    QImage m_source;
    QImage m_working;
    FilterContext m_context;
    Find m_find;
    WorkingImage m_image; // last: reads the pixels above
};

}

std::unique_ptr<FilterRun> FilterLibrary::start(const QImage &image, const FilterContext &context) const
{
    return std::make_unique<LibraryRun>(image, context, [this](const QString &name) {
        const auto found = m_filters.constFind(name);
        return found == m_filters.cend() ? nullptr : found->row;
    });
}
