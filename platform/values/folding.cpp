#include "platform/values/folding.h"

#include <algorithm>
#include <array>

#include "platform/values/ascii.h"
#include "platform/values/text.h"

namespace rebate {
namespace {

constexpr std::string_view kIdeographicBlank = "\xE3\x80\x80";

// Alphabets whose capital and small letters stand in turns: the one on an even code point first, or on an odd one.
bool EvenCapitals(char32_t c) {
  return (c >= 0x100 && c <= 0x12F) || (c >= 0x132 && c <= 0x137) || (c >= 0x14A && c <= 0x177) ||
         (c >= 0x1DE && c <= 0x1EF) || (c >= 0x1F8 && c <= 0x21F) || (c >= 0x222 && c <= 0x233) ||
         (c >= 0x460 && c <= 0x481) || (c >= 0x48A && c <= 0x4BF) || (c >= 0x4D0 && c <= 0x52F) ||
         (c >= 0x1E00 && c <= 0x1E95) || (c >= 0x1EA0 && c <= 0x1EFF);
}
bool OddCapitals(char32_t c) {
  return (c >= 0x139 && c <= 0x148) || (c >= 0x179 && c <= 0x17E) || (c >= 0x1CD && c <= 0x1DC) ||
         (c >= 0x4C1 && c <= 0x4CE);
}

struct CaseRange {
  char32_t first, last;   // capitals
  std::int32_t distance;  // to their small letters
};
constexpr CaseRange kRanges[] = {{'A', 'Z', 32},      {0xC0, 0xD6, 32},   {0xD8, 0xDE, 32},     {0x178, 0x178, -121},
                                 {0x386, 0x386, 38},  {0x388, 0x38A, 37}, {0x38C, 0x38C, 64},   {0x38E, 0x38F, 63},
                                 {0x391, 0x3A1, 32},  {0x3A3, 0x3AB, 32}, {0x400, 0x40F, 80},   {0x410, 0x42F, 32},
                                 {0x4C0, 0x4C0, 15},  {0x531, 0x556, 48}, {0x2160, 0x216F, 16}, {0x24B6, 0x24CF, 26},
                                 {0xFF21, 0xFF3A, 32}};

char32_t Moved(char32_t c, std::int32_t distance) {
  return static_cast<char32_t>(static_cast<std::int32_t>(c) + distance);
}

// U+FF61 to U+FF9D: half-width Japanese signs and kana.
constexpr std::array<char16_t, 61> kKana{
    0x3002, 0x300C, 0x300D, 0x3001, 0x30FB, 0x30F2, 0x30A1, 0x30A3, 0x30A5, 0x30A7, 0x30A9, 0x30E3, 0x30E5,
    0x30E7, 0x30C3, 0x30FC, 0x30A2, 0x30A4, 0x30A6, 0x30A8, 0x30AA, 0x30AB, 0x30AD, 0x30AF, 0x30B1, 0x30B3,
    0x30B5, 0x30B7, 0x30B9, 0x30BB, 0x30BD, 0x30BF, 0x30C1, 0x30C4, 0x30C6, 0x30C8, 0x30CA, 0x30CB, 0x30CC,
    0x30CD, 0x30CE, 0x30CF, 0x30D2, 0x30D5, 0x30D8, 0x30DB, 0x30DE, 0x30DF, 0x30E0, 0x30E1, 0x30E2, 0x30E4,
    0x30E6, 0x30E8, 0x30E9, 0x30EA, 0x30EB, 0x30EC, 0x30ED, 0x30EF, 0x30F3};
constexpr std::array<char16_t, 7> kSigns{0xA2, 0xA3, 0xAC, 0xAF, 0xA6, 0xA5, 0x20A9};  // U+FFE0 to U+FFE6

char32_t FoldWidth(char32_t c) {
  if (c >= 0xFF01 && c <= 0xFF5E) return c - 0xFEE0;
  if (c >= 0xFF61 && c <= 0xFF9D) return kKana[c - 0xFF61];
  if (c >= 0xFFE0 && c <= 0xFFE6) return kSigns[c - 0xFFE0];
  return c;
}

bool IsContinuation(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

// Character by character.
int CompareFolded(std::string_view left, std::string_view right) {
  const char* a = left.data();
  const char* b = right.data();
  const char* const a_end = a + left.size();
  const char* const b_end = b + right.size();
  while (a < a_end && b < b_end) {
    const char32_t x = FoldCase(NextCodePoint(a, a_end));
    const char32_t y = FoldCase(NextCodePoint(b, b_end));
    if (x != y) return x < y ? -1 : 1;
  }
  return a < a_end ? 1 : b < b_end ? -1 : 0;
}

template <char32_t (*kForm)(char32_t)>
Text InForm(std::string_view text) {
  Text result;
  result.reserve(text.size());
  const char* at = text.data();
  for (const char* const end = at + text.size(); at < end;) AppendCodePoint(result, kForm(NextCodePoint(at, end)));
  return result;
}

}  // namespace

char32_t LowerCase(char32_t c) {
  if (c < 0x80) return AsciiLower(c);
  if (c >= 0x2E80 && c < 0xFF00) return c;
  for (const CaseRange& range : kRanges) {
    if (c >= range.first && c <= range.last) return Moved(c, range.distance);
  }
  if (EvenCapitals(c)) return c | 1;
  if (OddCapitals(c)) return (c & 1) != 0 ? c + 1 : c;
  return c;
}

char32_t UpperCase(char32_t c) {
  if (c < 0x80) return AsciiUpper(c);
  if (c >= 0x2E80 && c < 0xFF00) return c;
  for (const CaseRange& range : kRanges) {
    if (c >= Moved(range.first, range.distance) && c <= Moved(range.last, range.distance)) {
      return Moved(c, -range.distance);
    }
  }
  if (EvenCapitals(c)) return c & ~char32_t{1};
  if (OddCapitals(c)) return (c & 1) == 0 ? c - 1 : c;
  return c == 0x3C2 ? 0x3A3 : c;  // the final sigma
}

Text LowerCase(std::string_view text) {
  return InForm<LowerCase>(text);
}
Text UpperCase(std::string_view text) {
  return InForm<UpperCase>(text);
}
Text Folded(std::string_view text) {
  return InForm<FoldCase>(text);
}

char32_t FoldCase(char32_t c) {
  if (c < 0x80) return AsciiLower(c);
  if (c == 0x3000) return ' ';
  if (c >= 0xFF00) c = FoldWidth(c);
  return c == 0x3C2 ? 0x3C3 : LowerCase(c);
}

std::string_view ComparedPart(std::string_view text) {
  for (;;) {
    text = WithoutTrailingBlanks(text);
    if (!text.ends_with(kIdeographicBlank)) return text;
    text.remove_suffix(kIdeographicBlank.size());
  }
}

int CompareText(std::string_view left, std::string_view right) {
  left = ComparedPart(left);
  right = ComparedPart(right);
  const std::size_t shorter = std::min(left.size(), right.size());
  std::size_t at = 0;
  while (at < shorter) {
    if (left[at] != right[at]) {
      if (!IsAscii(left[at]) || !IsAscii(right[at])) break;
      const char a = AsciiLower(left[at]);
      const char b = AsciiLower(right[at]);
      if (a != b) return a < b ? -1 : 1;
    }
    ++at;
  }
  const bool inside =
      (at < left.size() && IsContinuation(left[at])) || (at < right.size() && IsContinuation(right[at]));
  if (at == shorter && !inside) {
    return left.size() == right.size() ? 0 : left.size() < right.size() ? -1 : 1;
  }
  // Up to here the two are equal byte by byte, or fold to one ASCII letter: step back to where the character begins.
  while (at > 0 &&
         ((at < left.size() && IsContinuation(left[at])) || (at < right.size() && IsContinuation(right[at])))) {
    --at;
  }
  return CompareFolded(left.substr(at), right.substr(at));
}

}  // namespace rebate
