#pragma once

#include <string_view>

#include "platform/values/types.h"

// Texts without regard to case and width: 'a', 'A', full-width 'Ａ' and 'ａ' are one.
namespace rebate {

// The small or the capital form of a Latin, Greek, Cyrillic or Armenian letter; other characters as they are.
char32_t LowerCase(char32_t code_point);
char32_t UpperCase(char32_t code_point);
Text LowerCase(std::string_view text);
Text UpperCase(std::string_view text);

// The character by which one compares: small, full-width signs and letters as their plain ones, the ideographic blank
// as a blank, half-width kana as full-width ones.
char32_t FoldCase(char32_t code_point);
// `text` with every character in the form by which it compares; blanks at its end stay.
Text Folded(std::string_view text);

// `text` without the blanks at its end, plain and ideographic, which don't count where texts compare.
std::string_view ComparedPart(std::string_view text);

// The order of keys and indexes, which no library's version changes: without regard to case, width and trailing blanks,
// otherwise by code point. Less than, equal to or greater than 0.
int CompareText(std::string_view left, std::string_view right);

}  // namespace rebate
