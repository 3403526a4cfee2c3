#include "QVXmlDecoder.h"

#include "CharacterClass.h"
#include "LogString.h"
#include "OpenFile.h"
#include "TagTable.h"

#include <QCoreApplication>
#include <QUtf8StringView>

#include <algorithm>
#include <array>
#include <limits>

namespace {

TagTable &tagTable()
{
    static TagTable table;
    return table;
}

}

void QVXmlDecoder::setKeyDecoder(const QList<std::pair<QString, int>> &table)
{
    tagTable() = {};
    for (const auto &[name, number] : table)
        addDecoderKey(number, name);
}

void QVXmlDecoder::addDecoderKey(int number, const QString &forTag)
{
    tagTable().insert(forTag.toUtf8(), number);
}

std::optional<QVXmlDecoder> QVXmlDecoder::fromFile(const QString &path, QString *error)
{
    constexpr qint64 maxBytes = 4LL << 30;
    QString reason;
    const std::optional<QByteArray> utf8 = readWholeFile(path, maxBytes, &reason);
    if (utf8 && !QUtf8StringView(*utf8).isValidUtf8())
        reason = QCoreApplication::translate("QVXmlDecoder", "The file is not UTF-8 text.");
    if (error)
        *error = reason;
    return utf8 && reason.isEmpty() ? fromValidUtf8(*utf8) : std::nullopt;
}

std::optional<QVXmlDecoder> QVXmlDecoder::fromString(const QString &text)
{
    return fromValidUtf8(text.toUtf8());
}

std::optional<QVXmlDecoder> QVXmlDecoder::fromData(const QByteArray &utf8)
{
    return QUtf8StringView(utf8).isValidUtf8() ? fromValidUtf8(utf8) : std::nullopt;
}

std::optional<QVXmlDecoder> QVXmlDecoder::fromValidUtf8(const QByteArray &utf8)
{
    constexpr QByteArrayView byteOrderMark("\xef\xbb\xbf");
    QByteArrayView text(utf8);
    if (text.startsWith(byteOrderMark))
        text = text.sliced(byteOrderMark.size());
    if (text.startsWith("<?xml"))
        return QVXmlDecoder(utf8, text);
    LogString("Unknown xml format");
    return std::nullopt;
}

namespace {

bool isContinuation(char byte)
{
    return (byte & 0xc0) == 0x80;
}

/// All but the last UTF-16 unit. Of a pair, half is still seen, as something that no tag can end with: so is the whole.
QByteArrayView withoutLastUnit(QByteArrayView text)
{
    qsizetype last = text.size() - 1;
    while (isContinuation(text[last]))
        --last;
    const bool isPair = text.size() - last == 4;
    return isPair ? text : text.first(last);
}

}

QVXmlDecoder::QVXmlDecoder(const QByteArray &utf8, QByteArrayView text)
    : m_xml(utf8)
    , m_text(withoutLastUnit(text))
{}

bool QVXmlDecoder::getNextTag()
{
    if (m_index == 0 && !startDocument())
        return fail();
    if (m_index >= m_text.size())
        return false;
    FoundTag tag;
    const Found found = identifyNextTag(m_index, tag);
    if (found != Found::Tag)
        return found == Found::End ? false : fail();

    m_tag = tag.name;
    m_key = tagTable().number(tag.name);
    m_endTag = tag.closing;
    m_value = {};
    m_attributes.clear();
    if (!tag.closing)
        return (readOpeningTag() && (m_endTag || readContent())) || fail();
    if (m_index < m_text.size()) { // else the ">" is the last character, which is not seen
        ++m_index;
        --m_level;
    }
    return true;
}

bool QVXmlDecoder::fail()
{
    const QByteArrayView read = m_text.first(std::min(m_index, m_text.size()));
    const auto units = std::count_if(read.begin(), read.end(), [](char byte) { return !isContinuation(byte); }) +
                       std::count_if(read.begin(), read.end(), [](char byte) { return (byte & 0xf8) == 0xf0; });
    m_error = QStringLiteral("this is not a valid XML file (offset 0x%1)").arg(static_cast<quint32>(units), 0, 16);
    m_index = m_text.size();
    return false;
}

bool QVXmlDecoder::startDocument()
{
    const QByteArrayView whole(m_text.data(), m_xml.constEnd());
    const qsizetype end = whole.indexOf("?>");
    if (end >= 0)
        m_index = end + 2;
    return end >= 0;
}

namespace {

/// In an order in which every set that is asked for is a range.
enum class Kind : quint8 { Other, Space, Underscore, Digit, Letter };

constexpr std::array<Kind, 128> asciiKinds = [] {
    std::array<Kind, 128> kinds{};
    std::fill(&kinds['\t'], &kinds['\r'] + 1, Kind::Space);
    kinds[' '] = Kind::Space;
    kinds['_'] = Kind::Underscore;
    std::fill(&kinds['0'], &kinds['9'] + 1, Kind::Digit);
    std::fill(&kinds['A'], &kinds['Z'] + 1, Kind::Letter);
    std::fill(&kinds['a'], &kinds['z'] + 1, Kind::Letter);
    return kinds;
}();

Kind kindOfUnit(char16_t unit)
{
    switch (TypeOfChar(unit)) {
    case CharacterClass::UpperCase:
    case CharacterClass::LowerCase:
        return Kind::Letter;
    case CharacterClass::Digit:
        return Kind::Digit;
    case CharacterClass::Space:
        return Kind::Space;
    default:
        return Kind::Other;
    }
}

struct Character
{
    Kind kind;
    qsizetype size;
};

Character characterBeyondAscii(const char *text)
{
    const auto bits = [text](int i, int mask) { return static_cast<unsigned>(text[i]) & static_cast<unsigned>(mask); };
    if (bits(0, 0xe0) == 0xc0)
        return {kindOfUnit(static_cast<char16_t>(bits(0, 0x1f) << 6 | bits(1, 0x3f))), 2};
    if (bits(0, 0xf0) == 0xe0)
        return {kindOfUnit(static_cast<char16_t>(bits(0, 0x0f) << 12 | bits(1, 0x3f) << 6 | bits(2, 0x3f))), 3};
    return {Kind::Other, 4}; // surrogates are neither letters nor white space
}

Character characterAt(const char *text)
{
    const auto byte = static_cast<uchar>(*text);
    return byte < 0x80 ? Character{asciiKinds[byte], 1} : characterBeyondAscii(text);
}

/// Behind the characters whose kinds lie between the two.
template<Kind from, Kind to>
qsizetype skip(QByteArrayView text, qsizetype index)
{
    while (index < text.size()) {
        const Character character = characterAt(text.data() + index);
        if (character.kind < from || character.kind > to)
            break;
        index += character.size;
    }
    return index;
}

qsizetype skipSpace(QByteArrayView text, qsizetype index)
{
    return skip<Kind::Space, Kind::Space>(text, index);
}

}

/// Moves `index` just behind the name of the tag that follows, or to what is no tag.
QVXmlDecoder::Found QVXmlDecoder::identifyNextTag(qsizetype &index, FoundTag &tag) const
{
    for (;;) {
        index = skipSpace(m_text, index);
        if (index >= m_text.size())
            return Found::End;
        if (!isAt(index, '<'))
            return Found::Fault;
        ++index;
        if (!isAt(index, '!'))
            break;
        const qsizetype end = m_text.indexOf('>', index);
        if (end < 0)
            return Found::Fault;
        index = end + 1;
    }
    tag.closing = isAt(index, '/');
    if (tag.closing)
        ++index;
    const qsizetype start = index;
    index = skip<Kind::Underscore, Kind::Letter>(m_text, index);
    tag.name = m_text.sliced(start, index - start);
    return tag.name.isEmpty() ? Found::Fault : Found::Tag;
}

/// From behind the name to behind the ">".
bool QVXmlDecoder::readOpeningTag()
{
    for (;;) {
        m_index = skipSpace(m_text, m_index);
        if (isAt(m_index, '>') || isAt(m_index, '/'))
            break;
        if (!readAttribute())
            return false;
    }
    m_endTag = isAt(m_index, '/');
    if (m_endTag)
        ++m_index;
    if (!isAt(m_index, '>'))
        return false;
    ++m_index;
    return true;
}

bool QVXmlDecoder::readAttribute()
{
    const qsizetype start = m_index;
    m_index = skip<Kind::Digit, Kind::Letter>(m_text, start);
    const QByteArrayView name = m_text.sliced(start, m_index - start);
    if (name.isEmpty() || characterAt(name.data()).kind != Kind::Letter) {
        m_index = start;
        return false;
    }
    constexpr qsizetype shortestRest = 4; // no attribute can end well where its "=" is so near the end
    if (m_index >= m_text.size() - shortestRest || !isAt(m_index, '='))
        return false;
    ++m_index;
    if (!isAt(m_index, '"'))
        return false;
    const qsizetype quote = m_text.indexOf('"', m_index + 1);
    if (quote < 0 || quote == m_text.size() - 1)
        return false;
    m_value = m_text.sliced(m_index + 1, quote - m_index - 1);
    m_attributes.append({name, m_value});
    m_index = quote + 1;
    return true;
}

/// Behind an opening tag: completes the element when its closing tag, or text and its closing tag, follow.
bool QVXmlDecoder::readContent()
{
    qsizetype next = skipSpace(m_text, m_index);
    if (!isAt(next, '<')) {
        next = m_text.indexOf('<', next);
        if (next < 0)
            return false;
        m_value = m_text.sliced(m_index, next - m_index);
        m_index = next;
    }
    if (!readClosingTagOfElement(next))
        ++m_level;
    return true;
}

/// Reads the tag at `index` only if it closes the element that was just opened.
bool QVXmlDecoder::readClosingTagOfElement(qsizetype index)
{
    FoundTag tag;
    if (identifyNextTag(index, tag) != Found::Tag || !tag.closing)
        return false;
    if (!TagTable::isSame(tag.name, m_tag) && tagTable().number(tag.name) != m_key)
        return false;
    m_index = index + 1;
    m_endTag = true;
    return true;
}

namespace {

QString decoded(QByteArrayView raw)
{
    const QString text = QString::fromUtf8(raw);
    return raw.contains('&') ? QVXmlDecoder::decodeEscapes(text) : text;
}

}

QString QVXmlDecoder::value() const
{
    return decoded(m_value);
}

namespace {

/// White space, a sign and digits at the front; what is too large becomes the largest number.
qint64 leadingInteger(QByteArrayView text)
{
    text = text.sliced(skipSpace(text, 0));
    const bool negative = text.startsWith('-');
    if (negative || text.startsWith('+'))
        text = text.sliced(1);
    constexpr qint64 largest = std::numeric_limits<qint64>::max();
    qint64 number = 0; // negative: there is one more of these
    for (const char digit : text) {
        if (digit < '0' || digit > '9')
            break;
        if (__builtin_mul_overflow(number, 10, &number) || __builtin_sub_overflow(number, digit - '0', &number))
            return negative ? -largest - 1 : largest;
    }
    return negative ? number : -std::max(number, -largest);
}

qint64 decodedInteger(QByteArrayView raw)
{
    return raw.contains('&') ? leadingInteger(decoded(raw).toUtf8()) : leadingInteger(raw);
}

}

qint64 QVXmlDecoder::integerValue() const
{
    return decodedInteger(m_value);
}

namespace {

/// Without making a text of it as long as both are ASCII.
bool isSame(QByteArrayView utf8, QStringView name)
{
    const auto same = [](char byte, QChar unit) {
        return unit.unicode() < 0x80 && static_cast<uchar>(byte) == unit.unicode();
    };
    const auto [byte, unit] = std::mismatch(utf8.begin(), utf8.end(), name.begin(), name.end(), same);
    if (byte == utf8.end() || static_cast<uchar>(*byte) < 0x80)
        return byte == utf8.end() && unit == name.end();
    return QString::fromUtf8(utf8) == name;
}

}

/// The last of that name counts.
QByteArrayView QVXmlDecoder::rawAttribute(QStringView name) const
{
    const auto found = std::find_if(m_attributes.rbegin(), m_attributes.rend(),
                                    [name](const Attribute &attribute) { return isSame(attribute.name, name); });
    return found == m_attributes.rend() ? QByteArrayView() : found->raw;
}

QString QVXmlDecoder::stringAttributeForTag(QStringView name) const
{
    return decoded(rawAttribute(name));
}

QString QVXmlDecoder::repeatedAttributeForTag(QStringView name) const
{
    const QByteArrayView raw = rawAttribute(name);
    if (raw.isEmpty())
        return decoded(raw);
    const auto place = static_cast<size_t>(raw.size()) * 5 + static_cast<uchar>(raw.back());
    Repeated &known = m_repeated[place % m_repeated.size()];
    if (known.raw != raw)
        known = {raw, decoded(raw)};
    return known.text;
}

qint64 QVXmlDecoder::integerAttributeForTag(QStringView name) const
{
    return decodedInteger(rawAttribute(name));
}

int QVXmlDecoder::decodeValue() const
{
    return tagTable().number(value().toUtf8());
}

int QVXmlDecoder::decodeValue(const QString &text, const QStringList &values)
{
    return text.isNull() ? 0 : static_cast<int>(std::max<qsizetype>(0, values.indexOf(text)));
}

int QVXmlDecoder::decodeValueFromValues(const QStringList &values) const
{
    return decodeValue(value(), values);
}

int QVXmlDecoder::decodeAttribute(QStringView name, const QStringList &values) const
{
    return decodeValue(stringAttributeForTag(name), values);
}

QVXmlDecoder::Bookmark QVXmlDecoder::skipTag()
{
    const Bookmark bookmark{m_index, m_level};
    const QByteArray closingTag = "</" + m_tag.toByteArray() + '>';
    const qsizetype from = std::min(m_index, m_text.size());
    const qsizetype found = m_text.sliced(from).lastIndexOf(closingTag);
    m_index = found < 0 ? m_text.size() : from + found;
    if (found >= 0) [[maybe_unused]]
        const bool read = getNextTag(); // it is there
    return bookmark;
}

void QVXmlDecoder::unskipTag(const Bookmark &bookmark)
{
    m_index = bookmark.index;
    m_level = bookmark.level;
}

bool QVXmlDecoder::skipToTag(const QString &name)
{
    const QByteArray openingTag = '<' + name.toUtf8() + '>';
    const qsizetype found = m_text.indexOf(openingTag, std::min(m_index + 1, m_text.size()));
    if (found < 0)
        return false;
    m_tag = m_text.sliced(found + 1, openingTag.size() - 2);
    m_key = tagTable().number(m_tag);
    m_index = found + openingTag.size();
    m_value = {};
    m_attributes.clear();
    m_endTag = false;
    m_level = 2;
    return true;
}

namespace {

/// What stands behind the "&" of an entity, and what the entity means. "&amp;" is not among them: it comes first.
struct Entity
{
    QLatin1String rest;
    char16_t meaning;
};
constexpr std::array<Entity, 5> entities{{{QLatin1String("apos;"), u'\''},
                                          {QLatin1String("gt;"), u'>'},
                                          {QLatin1String("lt;"), u'<'},
                                          {QLatin1String("quot;"), u'"'},
                                          {QLatin1String("nbsp;"), u' '}}};

/// The same as replacing "&amp;" throughout and then each of the others throughout, because no replacement but that of
/// "&amp;" can complete another entity. So an encoded ampersand followed by the rest of an entity is decoded twice.
QString decodeEntities(QStringView text, qsizetype i)
{
    QString decoded;
    decoded.reserve(text.size());
    qsizetype copied = 0;
    for (; i >= 0; i = text.indexOf(u'&', copied)) {
        decoded += text.sliced(copied, i - copied);
        QStringView rest = text.sliced(i + 1);
        if (rest.startsWith(QLatin1String("amp;")))
            rest = rest.sliced(4);
        const auto entity = std::find_if(entities.begin(), entities.end(),
                                         [rest](const Entity &candidate) { return rest.startsWith(candidate.rest); });
        decoded += QChar(entity == entities.end() ? u'&' : entity->meaning);
        copied = text.size() - rest.size() + (entity == entities.end() ? 0 : entity->rest.size());
    }
    return decoded += text.sliced(copied);
}

char16_t valueOfHexDigit(QChar digit)
{
    const char16_t unit = digit.unicode();
    const int base = unit >= u'0' && unit <= u'9' ? u'0' : unit >= u'a' && unit <= u'f' ? u'a' - 10 : u'A' - 10;
    return static_cast<char16_t>(unit - base);
}

/// Replaces each "&#x…;", from `reference` on, by one unit, in place. Without its ";" one runs to the end.
void decodeCharacterReferences(QString &text, qsizetype reference)
{
    QChar *out = text.data() + reference;
    while (reference >= 0) {
        const qsizetype semicolon = text.indexOf(u';', reference);
        const qsizetype end = semicolon < 0 ? text.size() : semicolon;
        char16_t unit = 0;
        for (qsizetype i = reference + 3; i < end; ++i)
            unit = static_cast<char16_t>(unit * 16 + valueOfHexDigit(text.at(i)));
        *out++ = unit;

        const qsizetype start = std::min(end + 1, text.size());
        reference = text.indexOf(QLatin1String("&#x"), start);
        out = std::copy(text.cbegin() + start, reference < 0 ? text.cend() : text.cbegin() + reference, out);
    }
    text.truncate(out - text.constData());
}

}

QString QVXmlDecoder::decodeEscapes(QStringView text)
{
    const qsizetype ampersand = text.indexOf(u'&');
    if (ampersand < 0)
        return text.toString();
    QString decoded = decodeEntities(text, ampersand);
    const qsizetype reference = decoded.indexOf(QLatin1String("&#x"));
    if (reference >= 0)
        decodeCharacterReferences(decoded, reference);
    return decoded;
}
