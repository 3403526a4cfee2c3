#include "CharacterClass.h"

#include <QString>

#include <array>

namespace {

CharacterClass classify(QChar character)
{
    switch (character.category()) {
    case QChar::Letter_Lowercase:
        return CharacterClass::LowerCase;
    case QChar::Letter_Uppercase:
    case QChar::Letter_Titlecase:
        return CharacterClass::UpperCase;
    case QChar::Number_DecimalDigit:
        return CharacterClass::Digit;
    case QChar::Punctuation_Connector:
    case QChar::Punctuation_Dash:
    case QChar::Punctuation_Open:
    case QChar::Punctuation_Close:
    case QChar::Punctuation_InitialQuote:
    case QChar::Punctuation_FinalQuote:
    case QChar::Punctuation_Other:
    case QChar::Symbol_Math:
    case QChar::Symbol_Currency:
    case QChar::Symbol_Modifier:
    case QChar::Symbol_Other:
        return CharacterClass::Punctuation;
    case QChar::Other_Control:
    case QChar::Other_Format:
        return character.isSpace() ? CharacterClass::Space : CharacterClass::Control;
    default:
        return character.isSpace() ? CharacterClass::Space : CharacterClass::Other;
    }
}

std::array<CharacterClass, 256> makeTable()
{
    std::array<CharacterClass, 256> table = {};
    for (char16_t unit = 0; unit < 256; ++unit)
        table[unit] = classify(QChar(unit));
    return table;
}

/// Whether a unit below 256 is one of the accented letters that lie 32 apart, `first` being the first of its case.
bool isAccented(char16_t unit, char16_t first)
{
    return unit >= first && unit <= first + 30 && unit != first + 23; // 23: the multiplication or division sign
}

char16_t soleUnit(const QString &mapped, char16_t unit)
{
    return mapped.size() == 1 ? mapped.front().unicode() : unit;
}

}

CharacterClass TypeOfChar(char16_t unit)
{
    static const std::array<CharacterClass, 256> table = makeTable();
    return unit < table.size() ? table[unit] : classify(QChar(unit));
}

char16_t UpperCaseChar(char16_t unit)
{
    if ((unit >= u'a' && unit <= u'z') || isAccented(unit, 224))
        return static_cast<char16_t>(unit - 32);
    if (unit < 224 || TypeOfChar(unit) != CharacterClass::LowerCase)
        return unit;
    return soleUnit(QString(QChar(unit)).toUpper(), unit);
}

char16_t LowerCaseChar(char16_t unit)
{
    if ((unit >= u'A' && unit <= u'Z') || isAccented(unit, 192))
        return static_cast<char16_t>(unit + 32);
    if (unit < 192 || TypeOfChar(unit) != CharacterClass::UpperCase)
        return unit;
    return soleUnit(QString(QChar(unit)).toLower(), unit);
}
