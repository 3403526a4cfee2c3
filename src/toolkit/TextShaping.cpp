#include "CharacterClass.h"
#include "StringUtilities.h"

#include <QStringList>

#include <algorithm>
#include <string_view>

namespace QVString {

namespace {

CharacterClass typeAt(const QString &text, qsizetype index)
{
    return TypeOfChar(text.at(index).unicode());
}

bool isLineBreak(char16_t unit)
{
    return (unit >= u'\n' && unit <= u'\r') || unit == 0x85 || unit == 0x2028 || unit == 0x2029;
}

bool isWordCharacter(char16_t unit)
{
    const CharacterClass type = TypeOfChar(unit);
    return type == CharacterClass::UpperCase || type == CharacterClass::LowerCase || type == CharacterClass::Digit;
}

bool isContractionEnding(const QString &word)
{
    static const QStringList endings = {
        QStringLiteral("d"),  QStringLiteral("m"),  QStringLiteral("s"),  QStringLiteral("t"),
        QStringLiteral("ll"), QStringLiteral("re"), QStringLiteral("ve"),
    };
    return endings.contains(word);
}

bool isCapitalised(const QString &lowerWord, char16_t before, bool isFirst)
{
    if ((before == u'\'' || before == u'’') && isContractionEnding(lowerWord))
        return false;
    return isFirst || !isOnStopList(lowerWord);
}

}

QString titleCaseString(const QString &text)
{
    QString result = text;
    bool isFirst = true;
    for (qsizetype start = 0; start < text.size();) {
        qsizetype end = start;
        while (end < text.size() && isWordCharacter(text.at(end).unicode()))
            ++end;
        if (end == start) {
            ++start;
            continue;
        }
        QString word = text.mid(start, end - start);
        for (QChar &character : word)
            character = QChar(LowerCaseChar(character.unicode()));
        if (isCapitalised(word, start > 0 ? text.at(start - 1).unicode() : u'\0', isFirst))
            word[0] = QChar(UpperCaseChar(text.at(start).unicode()));
        result.replace(start, word.size(), word);
        isFirst = false;
        start = end;
    }
    return result == text ? text : result;
}

namespace {

/// What is left of one word, which begins with no punctuation; null when it is dropped.
QString sortWord(const QString &word)
{
    QString letters;
    for (const QChar character : word) {
        if (TypeOfChar(character.unicode()) != CharacterClass::Punctuation)
            letters += character;
    }
    const qsizetype marks = word.size() - letters.size();
    const bool lastOnly = marks == 1 && typeAt(word, word.size() - 1) == CharacterClass::Punctuation;
    if ((marks == 0 || lastOnly) && isOnStopList(letters))
        return {};
    return letters;
}

}

QString sortTitleString(const QString &text)
{
    const QString lower = text.toLower();
    QString result;
    for (qsizetype start = 0; start < lower.size();) {
        const CharacterClass type = typeAt(lower, start);
        if (type == CharacterClass::Space || type == CharacterClass::Punctuation) {
            ++start;
            continue;
        }
        qsizetype end = start;
        while (end < lower.size() && typeAt(lower, end) != CharacterClass::Space)
            ++end;
        const QString word = sortWord(lower.mid(start, end - start));
        if (!word.isEmpty() && !result.isEmpty())
            result += QLatin1Char(' ');
        result += word;
        start = end;
    }
    return result.isEmpty() ? text : result;
}

namespace {

/// The stretch of `text` between white space, line breaks and control characters at its ends.
QStringView withoutBlankEnds(const QString &text)
{
    const auto isBlank = [&](qsizetype index) {
        const CharacterClass type = typeAt(text, index);
        return type == CharacterClass::Space || type == CharacterClass::Control;
    };
    qsizetype start = 0;
    qsizetype end = text.size();
    while (start < end && isBlank(start))
        ++start;
    while (end > start && isBlank(end - 1))
        --end;
    return QStringView(text).mid(start, end - start);
}

/// What cleaning makes of `unit` behind the kept character `previous`; 0 when it is removed.
char16_t cleanedUnit(char16_t unit, char16_t previous, Newlines newlines, Punctuation punctuation)
{
    const CharacterClass type = TypeOfChar(unit);
    if (isLineBreak(unit)) {
        if (newlines == Newlines::ToSpaces)
            return u' ';
        return previous == u'\n' ? u'\0' : u'\n';
    }
    if (type == CharacterClass::Space)
        return previous == u' ' ? u'\0' : u' ';
    if (type == CharacterClass::Control || (type == CharacterClass::Punctuation && punctuation == Punctuation::Strip))
        return u'\0';
    return unit;
}

}

QString cleanUp(const QString &text, Newlines newlines, Punctuation punctuation)
{
    QString result;
    char16_t previous = u'a';
    for (const QChar character : withoutBlankEnds(text)) {
        const char16_t kept = cleanedUnit(character.unicode(), previous, newlines, punctuation);
        if (kept == u'\0')
            continue;
        result += QChar(kept);
        previous = kept;
    }
    return result.isEmpty() ? QString() : result;
}

namespace {

constexpr qsizetype kDefaultExtract = 100;

/// One word before `position`, but never beyond the line.
qsizetype extractStart(const QString &text, qsizetype position)
{
    bool inPreviousWord = false;
    bool sawSpace = false;
    for (qsizetype i = position - 1; i >= 0; --i) {
        if (isLineBreak(text.at(i).unicode()))
            return i + 1;
        const bool space = typeAt(text, i) == CharacterClass::Space;
        if (space && inPreviousWord)
            return i + 1;
        sawSpace = sawSpace || space;
        inPreviousWord = sawSpace && !space;
    }
    return 0;
}

qsizetype lineEnd(const QString &text, qsizetype position)
{
    while (position < text.size() && !isLineBreak(text.at(position).unicode()))
        ++position;
    return position;
}

/// Shortens the excerpt to `length`, between words where that does not lose part of the key.
qsizetype cutEnd(const QString &text, qsizetype start, qsizetype keyEnd, qsizetype length)
{
    qsizetype cut = start + length - 1;
    while (cut > start && typeAt(text, cut) != CharacterClass::Space)
        --cut;
    return cut > start && cut > keyEnd ? cut : start + length;
}

}

QString extract(const QString &text, quint32 position, quint32 keyLength, quint32 maxLength, Punctuation punctuation)
{
    const qsizetype length = maxLength == 0 ? kDefaultExtract : qsizetype(maxLength);
    const qsizetype key = std::min<qsizetype>(position, text.size());
    const qsizetype keyEnd = std::min<qsizetype>(key + keyLength, text.size());
    const qsizetype start = extractStart(text, key);
    qsizetype end = lineEnd(text, keyEnd);
    if (end - start > length)
        end = cutEnd(text, start, keyEnd, length);
    const QString cleaned = cleanUp(text.mid(start, end - start), Newlines::ToSpaces, punctuation);
    return cleaned.isNull() ? QStringLiteral("") : cleaned;
}

namespace {

bool opensQuote(char16_t current, char16_t previous, char16_t next)
{
    if (previous == u' ')
        return current != u'\'' || TypeOfChar(next) != CharacterClass::Digit;
    constexpr std::u16string_view openers = u"\"'(<=[{«‘“";
    return openers.find(previous) != std::u16string_view::npos || TypeOfChar(previous) == CharacterClass::Space;
}

}

char16_t quoteForCurrentChar(char16_t current, char16_t previous, char16_t next)
{
    if (current != u'\'' && current != u'"')
        return current;
    if (opensQuote(current, previous, next))
        return current == u'"' ? u'“' : u'‘';
    return current == u'"' ? u'”' : u'’';
}

QString stringBySubstitutingQuotes(const QString &text, char16_t previous)
{
    QString result = text;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t current = text.at(i).unicode();
        const char16_t before = i > 0 ? text.at(i - 1).unicode() : previous;
        const char16_t next = i + 1 < text.size() ? text.at(i + 1).unicode() : u'\0';
        const char16_t quote = quoteForCurrentChar(current, before, next);
        if (quote != current)
            result[i] = QChar(quote);
    }
    return result;
}

}
