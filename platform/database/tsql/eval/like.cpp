#include "platform/database/tsql/eval/like.h"

#include <algorithm>

#include "platform/database/tsql/eval/folded_cursor.h"
#include "platform/values/text_order.h"

namespace rebate::tsql {
namespace {

bool OnlyBlanks(FoldedCursor text) {
  while (!text.AtEnd()) {
    if (text.Next() != ' ') return false;
  }
  return true;
}

// Digits, small letters and Chinese follow one another in every order of the account as they do by code point, but for
// the Chinese among themselves.
bool IsPlain(char32_t character) {
  return (character >= '0' && character <= '9') || (character >= 'a' && character <= 'z');
}
bool IsChinese(char32_t character) {
  return character >= 0x4E00 && character <= 0x9FFF;
}

// Where two folded characters stand to each other in the account's order.
int CompareCharacters(char32_t left, char32_t right) {
  if (left == right) return 0;
  const bool known = IsPlain(left) ? IsPlain(right) || IsChinese(right) : IsChinese(left) && IsPlain(right);
  if (known) return left < right ? -1 : 1;
  Text left_text;
  Text right_text;
  AppendCodePoint(left_text, left);
  AppendCodePoint(right_text, right);
  return CompareInOrder(left_text, right_text);
}

class Pattern {
 public:
  Pattern(std::string_view pattern, std::optional<char32_t> escape) : pattern_(pattern), escape_(escape) {}

  // Matches the whole of `text`; falls back to the last `%` where the rest doesn't fit.
  bool Matches(FoldedCursor text) const {
    FoldedCursor pattern = pattern_;
    std::optional<FoldedCursor> retry_pattern;
    FoldedCursor retry_text = text;
    while (true) {
      if (!pattern.AtEnd() && *pattern.at == '%' && escape_ != U'%') {
        ++pattern.at;
        if (pattern.AtEnd()) return true;
        retry_pattern = pattern;
        retry_text = text;
        continue;
      }
      if (pattern.AtEnd() && OnlyBlanks(text)) return true;
      if (!pattern.AtEnd() && !text.AtEnd() && MatchesOne(pattern, text.Next())) continue;
      if (!retry_pattern || retry_text.AtEnd()) return false;
      retry_text.Next();
      pattern = *retry_pattern;
      text = retry_text;
    }
  }

 private:
  bool MatchesOne(FoldedCursor& pattern, char32_t character) const {
    const char32_t wanted = pattern.NextPlain();
    if (wanted == escape_) return !pattern.AtEnd() && pattern.Next() == character;
    if (wanted == U'_') return true;
    if (wanted == U'[') return MatchesSet(pattern, character);
    return FoldedCursor::Fold(wanted) == character;
  }

  // A character of a set; an escape in front of it falls away. The caller has seen that there is one.
  char32_t Member(FoldedCursor& pattern) const {
    const char32_t plain = pattern.NextPlain();
    return plain == escape_ && !pattern.AtEnd() ? pattern.Next() : FoldedCursor::Fold(plain);
  }

  bool MatchesSet(FoldedCursor& pattern, char32_t character) const {
    const bool negated = !pattern.AtEnd() && *pattern.at == '^' && escape_ != U'^';
    if (negated) ++pattern.at;
    bool found = false;
    for (bool first = true; !pattern.AtEnd() && (first || *pattern.at != ']'); first = false) {
      const char32_t low = Member(pattern);
      if (pattern.end - pattern.at < 2 || *pattern.at != '-' || pattern.at[1] == ']') {
        found = found || character == low;
        continue;
      }
      ++pattern.at;
      const char32_t high = Member(pattern);
      found = found || (CompareCharacters(low, character) <= 0 && CompareCharacters(character, high) <= 0);
    }
    if (pattern.AtEnd()) return false;
    ++pattern.at;
    return found != negated;
  }

  FoldedCursor pattern_;
  std::optional<char32_t> escape_;
};

}  // namespace

bool MatchesLike(std::string_view text, std::string_view pattern, std::optional<char32_t> escape) {
  return Pattern(pattern, escape).Matches(FoldedCursor(text));
}

std::optional<std::size_t> FindLike(std::string_view text, std::string_view pattern) {
  const std::size_t open = std::min(pattern.find_first_not_of('%'), pattern.size());
  const Pattern rest(pattern.substr(open), std::nullopt);
  if (open > 0 && open == pattern.size()) return 0;
  for (FoldedCursor from(text);; from.NextPlain()) {
    if (rest.Matches(from)) return static_cast<std::size_t>(from.at - text.data());
    if (from.AtEnd() || open == 0) return std::nullopt;
  }
}

}  // namespace rebate::tsql
