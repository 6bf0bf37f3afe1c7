#pragma once

#include <string_view>
#include <vector>

#include "platform/values/types.h"

// Texts as plain characters: names, keywords and digits, of which only the letters A to Z have two forms.
namespace rebate {

constexpr bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}
constexpr bool IsLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
constexpr bool IsAscii(char c) {
  return static_cast<unsigned char>(c) < 0x80;
}
constexpr char AsciiLower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
constexpr char AsciiUpper(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

constexpr char32_t AsciiLower(char32_t c) {
  return c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c;
}
constexpr char32_t AsciiUpper(char32_t c) {
  return c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c;
}

// `text` with its letters A to Z small, or capital.
Text AsciiLower(std::string_view text);
Text AsciiUpper(std::string_view text);

// Equality without regard to the case of the letters A to Z.
bool EqualsIgnoreCase(std::string_view left, std::string_view right);
// Whether `part` stands anywhere in `text`, without regard to the case of the letters A to Z.
bool ContainsIgnoreCase(std::string_view text, std::string_view part);

// `text` without the `blanks` at its ends: the blank alone, or what else is named.
std::string_view Trim(std::string_view text, std::string_view blanks = " ");
std::string_view WithoutTrailingBlanks(std::string_view text);

// Blanks, tabs and the ends of lines.
inline constexpr std::string_view kWhiteSpace = " \t\r\n";
inline std::string_view TrimWhite(std::string_view text) {
  return Trim(text, kWhiteSpace);
}

// The parts of `text` between `separator`s, the empty ones too; an empty text has no part.
std::vector<Text> Split(std::string_view text, char separator);

// Every `from` in `text` replaced by `to`.
Text Replace(std::string_view text, std::string_view from, std::string_view to);

}  // namespace rebate
