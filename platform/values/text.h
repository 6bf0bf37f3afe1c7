#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/values/types.h"

// The characters of a text: UTF-8, UTF-16 and lengths. A byte that belongs to no well-formed character is a character
// of its own, kInvalidByte + the byte, which writes back as that byte: no walk over a text loses or joins any.
namespace rebate {

inline constexpr char32_t kInvalidByte = 0x110000;

// The character at `at`, which isn't `end`; `at` moves behind it.
char32_t NextCodePoint(const char*& at, const char* end);
void AppendCodePoint(Text& text, char32_t code_point);

// Between UTF-8 and UTF-16. What isn't well formed becomes U+FFFD.
std::u16string ToWide(std::string_view text);
Text FromWide(std::u16string_view wide);

std::size_t CountCharacters(std::string_view text);
// The longest beginning of `text` of at most `count` characters.
std::string_view FirstCharacters(std::string_view text, std::size_t count);
// The longest beginning of `text` of at most `count` bytes that tears no character.
std::string_view FirstBytes(std::string_view text, std::size_t count);

// How many units `text` counts against a column's length. `national`: UTF-16 units; else bytes, of which a character
// outside ASCII takes two.
std::size_t CountUnits(std::string_view text, bool national);
// The longest beginning of `text` of at most `units`.
std::string_view FirstUnits(std::string_view text, std::size_t units, bool national);

}  // namespace rebate
