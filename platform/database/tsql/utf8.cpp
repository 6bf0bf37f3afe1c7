#include "platform/database/tsql/utf8.h"

#include <algorithm>

namespace rebate::tsql {
namespace {

bool IsContinuation(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

// Alphabets whose capital and small letters stand in turns: the one on an even code point first, or on an odd one.
bool EvenCapitals(char32_t c) {
  return (c >= 0x100 && c <= 0x137) || (c >= 0x14A && c <= 0x177) || (c >= 0x1DE && c <= 0x1EF) ||
         (c >= 0x200 && c <= 0x21F) || (c >= 0x460 && c <= 0x481) || (c >= 0x48A && c <= 0x4BF) ||
         (c >= 0x4D0 && c <= 0x52F) || (c >= 0x1E00 && c <= 0x1E95) || (c >= 0x1EA0 && c <= 0x1EFF);
}
bool OddCapitals(char32_t c) {
  return (c >= 0x139 && c <= 0x148) || (c >= 0x179 && c <= 0x17E) || (c >= 0x1CD && c <= 0x1DC) ||
         (c >= 0x4C1 && c <= 0x4CE);
}

struct CaseRange {
  char32_t first, last;  // capitals
  char32_t distance;     // to their small letters
};
constexpr CaseRange kRanges[] = {{'A', 'Z', 32},       {0xC0, 0xD6, 32},     {0xD8, 0xDE, 32},    {0x391, 0x3A1, 32},
                                 {0x3A3, 0x3AB, 32},   {0x400, 0x40F, 80},   {0x410, 0x42F, 32},  {0x531, 0x556, 48},
                                 {0x2160, 0x216F, 16}, {0x24B6, 0x24CF, 26}, {0xFF21, 0xFF3A, 32}};

char FoldAscii(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
}

}  // namespace

char32_t NextCodePoint(const char*& at, const char* end) {
  const unsigned char lead = static_cast<unsigned char>(*at++);
  if (lead < 0xC0) return lead;
  const int more = lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
  char32_t code_point = lead & (0x3Fu >> more);
  for (int i = 0; i < more && at < end && IsContinuation(*at); ++i) {
    code_point = (code_point << 6) | (static_cast<unsigned char>(*at++) & 0x3F);
  }
  return code_point;
}

void AppendCodePoint(Text& text, char32_t c) {
  if (c < 0x80) {
    text += static_cast<char>(c);
  } else if (c < 0x800) {
    text += static_cast<char>(0xC0 | (c >> 6));
    text += static_cast<char>(0x80 | (c & 0x3F));
  } else if (c < 0x10000) {
    text += static_cast<char>(0xE0 | (c >> 12));
    text += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    text += static_cast<char>(0x80 | (c & 0x3F));
  } else {
    text += static_cast<char>(0xF0 | (c >> 18));
    text += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
    text += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    text += static_cast<char>(0x80 | (c & 0x3F));
  }
}

char32_t FoldCase(char32_t c) {
  if (c < 0x80) return c >= 'A' && c <= 'Z' ? c + 32 : c;
  if (c >= 0x2E80 && c < 0xFF00) return c;
  for (const CaseRange& range : kRanges) {
    if (c >= range.first && c <= range.last) return c + range.distance;
  }
  if (EvenCapitals(c)) return c | 1;
  if (OddCapitals(c)) return (c & 1) != 0 ? c + 1 : c;
  return c == 0x3C2 ? 0x3C3 : c;  // the final sigma
}

char32_t UpperCase(char32_t c) {
  if (c < 0x80) return c >= 'a' && c <= 'z' ? c - 32 : c;
  for (const CaseRange& range : kRanges) {
    if (c >= range.first + range.distance && c <= range.last + range.distance) return c - range.distance;
  }
  if (EvenCapitals(c)) return c & ~char32_t{1};
  if (OddCapitals(c)) return (c & 1) == 0 ? c - 1 : c;
  return c;
}

std::size_t CountUnits(std::string_view text, bool national) {
  std::size_t units = 0;
  for (const char byte : text) {
    if (!IsContinuation(byte)) ++units;
    if (national && static_cast<unsigned char>(byte) >= 0xF0) ++units;
  }
  return units;
}

std::string_view FirstUnits(std::string_view text, std::size_t units, bool national) {
  const char* at = text.data();
  const char* const end = at + text.size();
  while (at < end) {
    const char* next = at;
    const std::size_t width = NextCodePoint(next, end) >= 0x10000 && national ? 2 : 1;
    if (width > units) break;
    units -= width;
    at = next;
  }
  return text.substr(0, static_cast<std::size_t>(at - text.data()));
}

std::string_view WithoutTrailingBlanks(std::string_view text) {
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return text;
}

int CompareText(std::string_view left, std::string_view right) {
  left = WithoutTrailingBlanks(left);
  right = WithoutTrailingBlanks(right);
  const std::size_t shorter = std::min(left.size(), right.size());
  std::size_t at = 0;
  while (at < shorter) {
    if (left[at] == right[at]) {
      ++at;
      continue;
    }
    if (static_cast<signed char>(left[at]) >= 0 && static_cast<signed char>(right[at]) >= 0) {
      const char a = FoldAscii(left[at]);
      const char b = FoldAscii(right[at]);
      if (a != b) return a < b ? -1 : 1;
      ++at;
      continue;
    }
    // Up to here the two are equal byte by byte or fold to one ASCII letter, so both stand inside one character.
    while (at > 0 && (IsContinuation(left[at]) || IsContinuation(right[at]))) --at;
    const char* a = left.data() + at;
    const char* b = right.data() + at;
    const char32_t a_point = FoldCase(NextCodePoint(a, left.data() + left.size()));
    const char32_t b_point = FoldCase(NextCodePoint(b, right.data() + right.size()));
    if (a_point != b_point) return a_point < b_point ? -1 : 1;
    const Text left_rest = Folded({a, static_cast<std::size_t>(left.data() + left.size() - a)});
    const Text right_rest = Folded({b, static_cast<std::size_t>(right.data() + right.size() - b)});
    return left_rest.compare(right_rest);
  }
  if (left.size() == right.size()) return 0;
  return left.size() < right.size() ? -1 : 1;
}

Text Folded(std::string_view text) {
  Text folded;
  folded.reserve(text.size());
  const char* at = text.data();
  const char* const end = at + text.size();
  while (at < end) AppendCodePoint(folded, FoldCase(NextCodePoint(at, end)));
  return folded;
}

}  // namespace rebate::tsql
