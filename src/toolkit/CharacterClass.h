#pragma once

#include <QChar>

/// What a UTF-16 code unit is, by the first test that holds in the order: lower, upper, space, digit, punctuation or
/// symbol, control, other.
enum class CharacterClass {
    Other = 0,
    UpperCase = 1,
    LowerCase = 2,
    Digit = 3,
    Space = 4,       ///< white space and line breaks
    Punctuation = 5, ///< and symbols
    Control = 6,
};

[[nodiscard]] CharacterClass TypeOfChar(char16_t unit);
/// One-unit case mapping; a unit whose mapping is longer, such as the sharp s, stays itself.
[[nodiscard]] char16_t UpperCaseChar(char16_t unit);
[[nodiscard]] char16_t LowerCaseChar(char16_t unit);
