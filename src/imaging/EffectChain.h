#pragma once

#include <QList>
#include <QPointF>
#include <QString>

#include <optional>
#include <utility>
#include <variant>

class QVXmlDecoder;
class QVXmlEncoder;

/// A colour with components that are normally 0 to 1, but are kept as they are.
struct EffectColor
{
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 0;
    friend bool operator==(const EffectColor &, const EffectColor &) = default;
};

/// A number, a point in normalised image coordinates (-1 is the left or bottom edge, 0 the centre, +1 the right or top
/// edge), a colour, or a text.
using EffectValue = std::variant<double, QPointF, EffectColor, QString>;

/// One filter with its values. The values keep the order in which they were first set; the image input is never one.
class EffectEntry
{
public:
    EffectEntry() = default;
    explicit EffectEntry(const QString &filterName)
        : m_filterName(filterName)
    {}

    /// Empty when an archive named none.
    [[nodiscard]] const QString &filterName() const { return m_filterName; }
    void setFilterName(const QString &name) { m_filterName = name; }
    /// Null when the input has no value.
    [[nodiscard]] const EffectValue *value(const QString &input) const;
    void setValue(const QString &input, const EffectValue &value);
    [[nodiscard]] const QList<std::pair<QString, EffectValue>> &values() const { return m_values; }
    friend bool operator==(const EffectEntry &, const EffectEntry &) = default;

private:
    QString m_filterName;
    QList<std::pair<QString, EffectValue>> m_values;
};

/// Filters in the order of their application; cheap to copy. Empty means no effects.
using EffectChain = QList<EffectEntry>;

/// Key under which an archived entry names its filter.
inline constexpr char kFilterNameKey[] = "CIAttributeFilterName";

/// Writes the chain as a "filters" element at the encoder's place.
void ArchiveFilters(QVXmlEncoder &encoder, const EffectChain &chain);

/// Reads the "filters" element on which the decoder stands; nothing when anything in it is malformed. Afterwards the
/// decoder stands on the element's last tag, whatever became of it (or at the end, when the document ends inside).
[[nodiscard]] std::optional<EffectChain> UnarchiveFilters(QVXmlDecoder &decoder);
