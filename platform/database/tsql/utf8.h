#pragma once

#include <cstdint>
#include <string_view>

#include "platform/automation/types.h"

namespace rebate::tsql {

// The code point at `at`, which moves behind it. A byte that is no UTF-8 counts as a character of its own.
char32_t NextCodePoint(const char*& at, const char* end);
void AppendCodePoint(Text& text, char32_t code_point);

// The code point by which a letter compares: its small form, for Latin, Greek, Cyrillic and full-width letters.
char32_t FoldCase(char32_t code_point);
char32_t UpperCase(char32_t code_point);

// How many units `text` counts against a column's length: UTF-16 units where `national`, else characters.
std::size_t CountUnits(std::string_view text, bool national);
// The longest beginning of `text` of at most `units`.
std::string_view FirstUnits(std::string_view text, std::size_t units, bool national);

std::string_view WithoutTrailingBlanks(std::string_view text);

// The order of the account's texts: without regard to case and trailing blanks, otherwise by code point. Less than,
// equal to or greater than 0.
int CompareText(std::string_view left, std::string_view right);

// `text` with every letter in the form by which it compares.
Text Folded(std::string_view text);

}  // namespace rebate::tsql
