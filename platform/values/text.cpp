#include "platform/values/text.h"

namespace rebate {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool IsLead(char32_t unit) {
  return unit >= 0xD800 && unit < 0xDC00;
}
bool IsTrail(char32_t unit) {
  return unit >= 0xDC00 && unit < 0xE000;
}

std::string_view UpTo(std::string_view text, const char* at) {
  return text.substr(0, static_cast<std::size_t>(at - text.data()));
}

std::size_t UnitsOf(char32_t character, bool national) {
  if (character < 0x80 || character >= kInvalidByte) return 1;
  return !national || character >= 0x10000 ? 2 : 1;
}

}  // namespace

char32_t NextCodePoint(const char*& at, const char* end) {
  constexpr char32_t kLowest[] = {0, 0, 0x80, 0x800, 0x10000};
  const auto first = static_cast<unsigned char>(*at++);
  if (first < 0x80) return first;
  const int length = first >= 0xF8 ? 0 : first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : first >= 0xC0 ? 2 : 0;
  if (length == 0 || end - at < length - 1) return kInvalidByte + first;
  char32_t character = first & (0x7Fu >> length);
  for (int i = 0; i + 1 < length; ++i) {
    const auto next = static_cast<unsigned char>(at[i]);
    if ((next & 0xC0) != 0x80) return kInvalidByte + first;
    character = character << 6 | (next & 0x3F);
  }
  if (character < kLowest[length] || character > 0x10FFFF || IsLead(character) || IsTrail(character)) {
    return kInvalidByte + first;
  }
  at += length - 1;
  return character;
}

void AppendCodePoint(Text& text, char32_t character) {
  const auto tail = [&](int shift) { text.push_back(static_cast<char>(0x80 | (character >> shift & 0x3F))); };
  if (character < 0x80) {
    text.push_back(static_cast<char>(character));
  } else if (character < 0x800) {
    text.push_back(static_cast<char>(0xC0 | character >> 6));
    tail(0);
  } else if (character < 0x10000) {
    text.push_back(static_cast<char>(0xE0 | character >> 12));
    tail(6), tail(0);
  } else if (character < kInvalidByte) {
    text.push_back(static_cast<char>(0xF0 | character >> 18));
    tail(12), tail(6), tail(0);
  } else {
    text.push_back(static_cast<char>(character - kInvalidByte));
  }
}

std::u16string ToWide(std::string_view text) {
  std::u16string wide;
  wide.reserve(text.size());
  const char* at = text.data();
  for (const char* const end = at + text.size(); at < end;) {
    char32_t character = NextCodePoint(at, end);
    if (character >= kInvalidByte) character = kReplacement;
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
    AppendCodePoint(text, character);
  }
  return text;
}

std::size_t CountCharacters(std::string_view text) {
  std::size_t count = 0;
  const char* at = text.data();
  for (const char* const end = at + text.size(); at < end; ++count) NextCodePoint(at, end);
  return count;
}

std::string_view FirstCharacters(std::string_view text, std::size_t count) {
  const char* at = text.data();
  for (const char* const end = at + text.size(); at < end && count > 0; --count) NextCodePoint(at, end);
  return UpTo(text, at);
}

std::string_view FirstBytes(std::string_view text, std::size_t count) {
  if (text.size() <= count) return text;
  const char* at = text.data();
  for (const char* next = at; static_cast<std::size_t>(next - text.data()) <= count;) {
    at = next;
    NextCodePoint(next, text.data() + text.size());
  }
  return UpTo(text, at);
}

std::size_t CountUnits(std::string_view text, bool national) {
  std::size_t units = 0;
  const char* at = text.data();
  for (const char* const end = at + text.size(); at < end;) units += UnitsOf(NextCodePoint(at, end), national);
  return units;
}

std::string_view FirstUnits(std::string_view text, std::size_t units, bool national) {
  const char* at = text.data();
  for (const char* const end = at + text.size(); at < end;) {
    const char* next = at;
    const std::size_t width = UnitsOf(NextCodePoint(next, end), national);
    if (width > units) break;
    units -= width;
    at = next;
  }
  return UpTo(text, at);
}

}  // namespace rebate
