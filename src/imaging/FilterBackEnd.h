#pragma once

#include "EffectChain.h"

#include <QImage>
#include <QList>
#include <QSize>
#include <QString>
#include <QStringList>

#include <atomic>
#include <memory>
#include <optional>

/// What the number of an input stands for.
enum class NumberType {
    Scalar,
    Angle, ///< radians
    Integer,
    Boolean,
};

/// What a back end tells of one input of a filter.
struct FilterInput
{
    QString name;
    QString attributeClass; ///< "CIImage", "CIVector", "NSNumber", "CIColor", or anything else
    QString displayName;
    std::optional<EffectValue> defaultValue;
    std::optional<EffectValue> identity;
    std::optional<double> sliderMinimum;
    std::optional<double> sliderMaximum;
    NumberType numberType = NumberType::Scalar;
    int vectorComponents = 2; ///< of the identity, or failing that the default, when the class is "CIVector"
    /// False when the back end reports no attribute dictionary for the input; such an input is not classed.
    bool hasAttributes = true;
};

struct FilterAttributes
{
    QString name;
    QString displayName;
    QString description;
    QList<FilterInput> inputs; ///< in the back end's order, the image inputs among them
};

/// What a filter needs to know of the rendering it works in.
struct FilterContext
{
    /// Rendered pixels per pixel of the full image; sizes that an effect states in pixels are multiplied by it.
    double scale = 1;
    /// Set from another thread when nobody wants the result any more.
    const std::atomic<bool> *cancelled = nullptr;
};

/// One image on its way through filters, in the form in which its back end works. One thread.
class FilterRun
{
public:
    FilterRun() = default;
    virtual ~FilterRun() = default;
    FilterRun(const FilterRun &) = delete;
    FilterRun &operator=(const FilterRun &) = delete;

    /// Adds a filter of the back end. `inputs` are in pixels of the image, y upward for points; inputs without a value
    /// take the filter's defaults. False means failure.
    [[nodiscard]] virtual bool apply(const EffectEntry &inputs) = 0;
    /// The pixels behind the last filter; null on failure or when cancelled.
    [[nodiscard]] virtual QImage result() = 0;
};

/// A filter library. Thread-safe: chains are rendered on many threads at once.
class FilterBackEnd
{
public:
    virtual ~FilterBackEnd() = default;

    [[nodiscard]] virtual QStringList filterNames(const QString &category) const = 0;
    [[nodiscard]] virtual QString localizedCategoryName(const QString &category) const = 0;
    /// Null when there is no such filter.
    [[nodiscard]] virtual const FilterAttributes *attributes(const QString &filterName) const = 0;
    /// Takes the image through filters, which are applied to the run one after the other.
    [[nodiscard]] virtual std::unique_ptr<FilterRun> start(const QImage &image, const FilterContext &context) const = 0;
};

/// The back end in use: empty until a filter library is installed at start, which then lives as long as the process.
[[nodiscard]] const FilterBackEnd &filterBackEnd();
/// Installs a back end that outlives all rendering; null restores the empty one. Not while anything renders.
void installFilterBackEnd(const FilterBackEnd *backEnd);

/// Of a longer chain only so many are rendered: each costs memory and stack while it works.
inline constexpr qsizetype kMostFilters = 32;

/// Runs the chain on pixels of an image. Unknown filters are skipped. Nothing, and a line in the log, when a filter
/// yields no image.
[[nodiscard]] std::optional<QImage> EvaluateChain(const EffectChain &chain, const QImage &source,
                                                  const FilterBackEnd &backEnd, const FilterContext &context);
