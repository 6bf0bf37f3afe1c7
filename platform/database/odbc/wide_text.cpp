#include "platform/database/odbc/wide_text.h"

namespace rebate {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool IsLead(char32_t unit) {
  return unit >= 0xD800 && unit < 0xDC00;
}
bool IsTrail(char32_t unit) {
  return unit >= 0xDC00 && unit < 0xE000;
}

// The character that starts at `at`, which moves behind it; behind one byte only where no character starts there.
char32_t TakeUtf8(std::string_view text, std::size_t& at) {
  constexpr char32_t kLowest[] = {0, 0, 0x80, 0x800, 0x10000};
  const auto first = static_cast<unsigned char>(text[at++]);
  if (first < 0x80) return first;
  const std::size_t length = first >= 0xF8 ? 0 : first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : first >= 0xC0 ? 2 : 0;
  if (length == 0 || at + length - 1 > text.size()) return kReplacement;
  char32_t character = first & (0x7Fu >> length);
  for (std::size_t i = 0; i + 1 < length; ++i) {
    const auto next = static_cast<unsigned char>(text[at + i]);
    if ((next & 0xC0) != 0x80) return kReplacement;
    character = character << 6 | (next & 0x3F);
  }
  if (character < kLowest[length] || character > 0x10FFFF || IsLead(character) || IsTrail(character)) {
    return kReplacement;
  }
  at += length - 1;
  return character;
}

void AppendUtf8(Text& text, char32_t character) {
  const auto tail = [&](int shift) { text.push_back(static_cast<char>(0x80 | (character >> shift & 0x3F))); };
  if (character < 0x80) {
    text.push_back(static_cast<char>(character));
  } else if (character < 0x800) {
    text.push_back(static_cast<char>(0xC0 | character >> 6));
    tail(0);
  } else if (character < 0x10000) {
    text.push_back(static_cast<char>(0xE0 | character >> 12));
    tail(6), tail(0);
  } else {
    text.push_back(static_cast<char>(0xF0 | character >> 18));
    tail(12), tail(6), tail(0);
  }
}

}  // namespace

std::u16string ToWide(std::string_view text) {
  std::u16string wide;
  wide.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    const char32_t character = TakeUtf8(text, at);
    if (character < 0x10000) {
      wide.push_back(static_cast<char16_t>(character));
    } else {
      wide.push_back(static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10)));
      wide.push_back(static_cast<char16_t>(0xDC00 + ((character - 0x10000) & 0x3FF)));
    }
  }
  return wide;
}

Text FromWide(std::u16string_view wide) {
  Text text;
  text.reserve(wide.size());
  for (std::size_t at = 0; at < wide.size(); ++at) {
    char32_t character = wide[at];
    if (IsLead(character) && at + 1 < wide.size() && IsTrail(wide[at + 1])) {
      character = 0x10000 + ((character - 0xD800) << 10) + (wide[++at] - 0xDC00u);
    } else if (IsLead(character) || IsTrail(character)) {
      character = kReplacement;
    }
    AppendUtf8(text, character);
  }
  return text;
}

}  // namespace rebate
