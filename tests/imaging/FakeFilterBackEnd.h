#pragma once

#include "FilterBackEnd.h"

#include <QHash>
#include <QMap>

#include <functional>

/// Filters whole images with a function.
class FakeFilterRun final : public FilterRun
{
public:
    using Apply = std::function<QImage(const EffectEntry &inputs, const QImage &image)>;

    FakeFilterRun(const QImage &image, Apply apply)
        : m_image(image)
        , m_apply(std::move(apply))
    {}
    bool apply(const EffectEntry &inputs) override
    {
        m_image = m_apply(inputs, m_image);
        return !m_image.isNull();
    }
    QImage result() override { return m_image; }

private:
    QImage m_image;
    Apply m_apply;
};

/// A filter library made up by a test.
class FakeFilterBackEnd : public FilterBackEnd
{
public:
    using Apply = FakeFilterRun::Apply;

    /// Offers a filter; the image input comes first by itself.
    void offer(const QString &category, const QString &name, QList<FilterInput> inputs = {}, Apply apply = {})
    {
        inputs.prepend({QStringLiteral("inputImage"), QStringLiteral("CIImage"), {}, {}, {}, {}, {}});
        offerExactly(category, name, inputs, std::move(apply));
    }
    void offerExactly(const QString &category, const QString &name, const QList<FilterInput> &inputs, Apply apply = {})
    {
        m_categories[category].append(name);
        m_filters.insert(name, {name, QStringLiteral("The ") + name, {}, inputs});
        m_apply.insert(name, std::move(apply));
    }

    QStringList filterNames(const QString &category) const override { return m_categories.value(category); }
    QString localizedCategoryName(const QString &category) const override { return category.mid(10); }
    const FilterAttributes *attributes(const QString &filterName) const override
    {
        const auto found = m_filters.constFind(filterName);
        return found == m_filters.cend() ? nullptr : &*found;
    }
    std::unique_ptr<FilterRun> start(const QImage &image, const FilterContext &) const override
    {
        return std::make_unique<FakeFilterRun>(image, [this](const EffectEntry &inputs, const QImage &before) {
            return m_apply.value(inputs.filterName())(inputs, before);
        });
    }

private:
    QHash<QString, QStringList> m_categories;
    QMap<QString, FilterAttributes> m_filters;
    QHash<QString, Apply> m_apply;
};

/// An input of that class whose identity or default is the value given.
[[nodiscard]] inline FilterInput fakeInput(const char *name, const char *attributeClass,
                                           std::optional<EffectValue> identity = {},
                                           std::optional<EffectValue> defaultValue = {})
{
    FilterInput input;
    input.name = QString::fromLatin1(name);
    input.attributeClass = QString::fromLatin1(attributeClass);
    input.identity = std::move(identity);
    input.defaultValue = std::move(defaultValue);
    return input;
}
