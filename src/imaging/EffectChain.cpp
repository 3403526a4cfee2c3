#include "EffectChain.h"

#include "GeometryText.h"
#include "LibraryTags.h"
#include "QVXmlDecoder.h"
#include "QVXmlEncoder.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

const EffectValue *EffectEntry::value(const QString &input) const
{
    const auto found =
        std::find_if(m_values.cbegin(), m_values.cend(), [&](const auto &v) { return v.first == input; });
    return found == m_values.cend() ? nullptr : &found->second;
}

void EffectEntry::setValue(const QString &input, const EffectValue &value)
{
    const auto found = std::find_if(m_values.begin(), m_values.end(), [&](const auto &v) { return v.first == input; });
    if (found != m_values.end()) {
        found->second = value;
        return;
    }
    constexpr qsizetype kUsualInputs = 4;
    if (m_values.isEmpty())
        m_values.reserve(kUsualInputs);
    m_values.append({input, value});
}

namespace {

// Eight decimals as printf would write them, whatever the locale.
QString textFromNumber(double number)
{
    std::array<char, 340> buffer; // the largest double has 309 digits before the point
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number, std::chars_format::fixed, 8);
    return QString::fromLatin1(buffer.data(), end.ptr - buffer.data());
}

// Components beyond 0 to 1 wrap around as a byte does.
int byteFromComponent(double component)
{
    const double level = std::trunc(component * 255.0);
    if (!std::isfinite(level))
        return 0;
    const int remainder = static_cast<int>(std::fmod(level, 256.0));
    return remainder < 0 ? remainder + 256 : remainder;
}

QString textFromColor(const EffectColor &color)
{
    return QStringLiteral("{%1, %2, %3}")
        .arg(byteFromComponent(color.red))
        .arg(byteFromComponent(color.green))
        .arg(byteFromComponent(color.blue));
}

struct AttrText
{
    const char *type;
    QString text;
};

// Nothing for a number that no text would bring back: the input then takes the filter's default.
std::optional<AttrText> attrText(const EffectValue &value)
{
    if (const auto *number = std::get_if<double>(&value)) {
        if (!std::isfinite(*number))
            return std::nullopt;
        return AttrText{"number", textFromNumber(*number)};
    }
    if (const auto *text = std::get_if<QString>(&value))
        return AttrText{"string", *text};
    if (const auto *color = std::get_if<EffectColor>(&value))
        return AttrText{"color", textFromColor(*color)};
    const auto &point = std::get<QPointF>(value);
    if (!std::isfinite(point.x()) || !std::isfinite(point.y()))
        return std::nullopt;
    return AttrText{"vector", textFromPoint(point)};
}

void archiveValue(QVXmlEncoder &encoder, const QString &key, const EffectValue &value)
{
    const auto attr = attrText(value);
    if (!attr || key.isEmpty())
        return;
    encoder.addAttribute("key", key);
    encoder.addAttribute("type", QString::fromLatin1(attr->type));
    encoder.addAttribute("value", attr->text);
    encoder.openAndCloseTag("attr");
}

}

void ArchiveFilters(QVXmlEncoder &encoder, const EffectChain &chain)
{
    encoder.openTag("filters");
    for (const EffectEntry &entry : chain) {
        encoder.openTag("filter");
        if (!entry.filterName().isEmpty())
            archiveValue(encoder, QString::fromLatin1(kFilterNameKey), entry.filterName());
        for (const auto &[input, value] : entry.values())
            archiveValue(encoder, input, value);
        encoder.closeTag("filter");
    }
    encoder.closeTag("filters");
}

namespace {

// Far more than any filter has inputs; keeps a hostile archive from making the look-up by name slow.
constexpr qsizetype kMaxValues = 256;

// Reads what textFromNumber writes and nothing else: any other character counts as a digit of its code less that
// of "0". Doubles throughout, so that no text overflows.
double numberFromText(QStringView text)
{
    double integer = 0;
    double fraction = 0;
    double divisor = 1;
    bool inFraction = false;
    for (const QChar c : text) {
        if (c == u'.') {
            inFraction = true;
            divisor = 1;
        } else if (c != u'-') {
            double &part = inFraction ? fraction : integer;
            part = part * 10 + (c.unicode() - u'0');
            if (inFraction)
                divisor *= 10;
        }
    }
    const double number = integer + fraction / divisor;
    if (!std::isfinite(number))
        return 0;
    return text.startsWith(u'-') ? -number : number;
}

// The whole number at the front of a text; 0 when there is none.
int leadingInteger(QStringView text)
{
    text = text.trimmed();
    const bool negative = text.startsWith(u'-');
    if (negative || text.startsWith(u'+'))
        text = text.mid(1);
    int number = 0;
    for (const QChar c : text) {
        if (c < u'0' || c > u'9' || number > 1'000'000)
            break;
        number = number * 10 + (c.unicode() - u'0');
    }
    return negative ? -number : number;
}

// Each component is cut to a byte; the alpha is a percentage, and one outside 1 to 100 means the clear colour.
EffectColor colorFromText(QStringView text)
{
    if (text.size() < 9)
        return {};
    const auto parts = text.mid(1, text.size() - 2).split(QStringLiteral(", "));
    if (parts.size() < 3)
        return {};
    const auto byte = [&](qsizetype i) { return leadingInteger(parts.at(i)) & 0xff; };
    const int alpha = parts.size() > 3 ? byte(3) : 100;
    if (alpha == 0 || alpha > 100)
        return {};
    return {byte(0) / 255.0, byte(1) / 255.0, byte(2) / 255.0, alpha / 100.0};
}

std::optional<EffectValue> valueFromText(const QString &type, const QString &text)
{
    if (type == u"color")
        return colorFromText(text);
    if (type == u"number")
        return numberFromText(text);
    if (type == u"string")
        return text;
    if (type == u"vector")
        return pointFromText(text);
    return std::nullopt;
}

bool unarchiveValue(const QVXmlDecoder &decoder, EffectEntry &entry)
{
    const QString key = decoder.repeatedAttributeForTag(u"key");
    const auto value = valueFromText(decoder.repeatedAttributeForTag(u"type"), decoder.stringAttributeForTag(u"value"));
    if (decoder.key() != LibraryTag::Attr || key.isEmpty() || !value || entry.values().size() >= kMaxValues)
        return false;
    if (key == QLatin1String(kFilterNameKey)) {
        const bool isName = std::holds_alternative<QString>(*value);
        entry.setFilterName(isName ? decoder.repeatedAttributeForTag(u"value") : QString());
    } else {
        entry.setValue(key, *value);
    }
    return true;
}

// Stands on "filter"; goes on to the tag behind the element.
bool unarchiveEntry(QVXmlDecoder &decoder, int filtersLevel, EffectEntry &entry)
{
    if (decoder.key() != LibraryTag::Filter)
        return false;
    const bool hasChildren = !decoder.endTag();
    if (!decoder.getNextTag())
        return false;
    if (!hasChildren)
        return true;
    while (decoder.level() > filtersLevel) {
        if (!unarchiveValue(decoder, entry) || !decoder.getNextTag())
            return false;
    }
    return decoder.getNextTag();
}

}

std::optional<EffectChain> UnarchiveFilters(QVXmlDecoder &decoder)
{
    EffectChain chain;
    if (decoder.endTag())
        return chain;
    const int level = decoder.level();
    if (!decoder.getNextTag())
        return chain;
    while (decoder.level() >= level) {
        EffectEntry entry;
        if (!unarchiveEntry(decoder, level, entry)) {
            // Leave the element behind, so that what follows it can be read.
            while (decoder.level() >= level && decoder.getNextTag()) {
            }
            return std::nullopt;
        }
        chain.append(entry);
    }
    return chain;
}
