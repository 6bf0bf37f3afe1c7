#include "platform/database/embedded/like.h"

#include "platform/database/tsql/utf8.h"

namespace rebate {
namespace {

// One character, folded, read from a text.
struct Cursor {
  const char* at;
  const char* end;

  bool AtEnd() const { return at == end; }
  char32_t Next() {
    const unsigned char byte = static_cast<unsigned char>(*at);
    if (byte >= 0x80) return tsql::FoldCase(tsql::NextCodePoint(at, end));
    ++at;
    return byte >= 'A' && byte <= 'Z' ? byte + 32u : byte;
  }
};

Cursor CursorOf(std::string_view text) {
  return {text.data(), text.data() + text.size()};
}

class Pattern {
 public:
  Pattern(std::string_view pattern, std::string_view escape) : pattern_(CursorOf(pattern)) {
    if (!escape.empty()) {
      Cursor cursor = CursorOf(escape);
      escape_ = cursor.Next();
      has_escape_ = true;
    }
  }

  // Matches from both cursors on; falls back to the last `%` where the rest doesn't fit.
  bool Matches(Cursor text) const {
    Cursor pattern = pattern_;
    Cursor retry_pattern{nullptr, nullptr};
    Cursor retry_text{nullptr, nullptr};
    while (true) {
      if (!pattern.AtEnd() && *pattern.at == '%' && !(has_escape_ && escape_ == '%')) {
        ++pattern.at;
        if (pattern.AtEnd()) return true;
        retry_pattern = pattern;
        retry_text = text;
        continue;
      }
      if (pattern.AtEnd() ? OnlyBlanks(text) : (!text.AtEnd() && MatchesOne(pattern, text.Next()))) {
        if (pattern.AtEnd() && OnlyBlanks(text)) return true;
        continue;
      }
      if (retry_pattern.at == nullptr || retry_text.AtEnd()) return false;
      retry_text.Next();
      pattern = retry_pattern;
      text = retry_text;
    }
  }

 private:
  static bool OnlyBlanks(Cursor text) {
    while (!text.AtEnd() && *text.at == ' ') ++text.at;
    return text.AtEnd();
  }

  bool MatchesOne(Cursor& pattern, char32_t character) const {
    const char mark = *pattern.at;
    const char32_t wanted = pattern.Next();
    if (has_escape_ && wanted == escape_) return !pattern.AtEnd() && pattern.Next() == character;
    if (mark == '_') return true;
    if (mark == '[') return MatchesSet(pattern, character);
    return wanted == character;
  }

  static bool MatchesSet(Cursor& pattern, char32_t character) {
    const bool negated = !pattern.AtEnd() && *pattern.at == '^';
    if (negated) ++pattern.at;
    bool found = false;
    for (bool first = true; !pattern.AtEnd() && (first || *pattern.at != ']'); first = false) {
      const char32_t low = pattern.Next();
      char32_t high = low;
      if (pattern.end - pattern.at >= 2 && *pattern.at == '-' && pattern.at[1] != ']') {
        ++pattern.at;
        high = pattern.Next();
      }
      found = found || (character >= low && character <= high);
    }
    if (pattern.AtEnd()) return false;
    ++pattern.at;
    return found != negated;
  }

  Cursor pattern_;
  char32_t escape_ = 0;
  bool has_escape_ = false;
};

}  // namespace

bool MatchesLike(std::string_view text, std::string_view pattern, std::string_view escape) {
  return Pattern(pattern, escape).Matches(CursorOf(text));
}

}  // namespace rebate
