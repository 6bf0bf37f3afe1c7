#pragma once

#include <string_view>

#include "platform/values/ascii.h"
#include "platform/values/folding.h"
#include "platform/values/text.h"

namespace rebate::tsql {

// Reads a text character by character, each in the form by which it compares.
struct FoldedCursor {
  explicit FoldedCursor(std::string_view text) : at(text.data()), end(text.data() + text.size()) {}

  bool AtEnd() const { return at == end; }
  // The character as it stands.
  char32_t NextPlain() {
    if (!IsAscii(*at)) return NextCodePoint(at, end);
    return static_cast<unsigned char>(*at++);
  }
  char32_t Next() { return Fold(NextPlain()); }
  static char32_t Fold(char32_t character) { return character < 0x80 ? AsciiLower(character) : FoldCase(character); }
  std::string_view Rest() const { return {at, static_cast<std::size_t>(end - at)}; }

  const char* at;
  const char* end;
};

}  // namespace rebate::tsql
